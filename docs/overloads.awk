# Input filter of doxygen: an overload that stands without words right behind a documented one of its name shares
# its documentation, as readers of the headers take it, and what overrides a function is documented there.
function declared(line) {
    return match(line, /[A-Za-z_][A-Za-z_0-9]*\(/) ? substr(line, RSTART, RLENGTH - 1) : ""
}
/^ *\/\// { commented = 1; print; next }
/^ *$|^ *[{}]/ { commented = 0; previous = ""; print; next }
/^    [A-Za-z]/ || /^NIVORA/ {
    name = declared($0)
    if (name != "" && name == previous && !commented && $0 !~ /\/\/\/</)
        print "/// \\overload"
    else if (!commented && $0 ~ / override( \{.*\}|;)/)
        print "/// See the base class."
    previous = name
}
{ commented = 0; print }
