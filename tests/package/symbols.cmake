# Only nivora:: and mgrs:: may be visible outside a shared library, nothing of what its classes hide, and, where the
# build has a LIST, exactly the symbols of that list. A change of the interface changes the list:
#   cmake -D NM=nm -D LIBRARY=build/release/lib/libnivora-cs.so -D LIST=tests/package/symbols.txt -D UPDATE=ON \
#         -P tests/package/symbols.cmake
# and the same with libnivora-cs-widgets.so and symbols-widgets.txt.
execute_process(COMMAND ${NM} -D --defined-only -C ${LIBRARY}
    OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "[" "<" listing "${listing}") # brackets would join list elements
string(REPLACE "]" ">" listing "${listing}")
string(REPLACE ";" "," listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")

set(refused "")
set(own "")
foreach(line IN LISTS lines)
    # address, kind, name; A is the name of a symbol version
    if(NOT line MATCHES "^[0-9a-f]+ ([A-Za-z]) (.*)$" OR CMAKE_MATCH_1 STREQUAL "A")
        continue()
    endif()
    set(name "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "^(vtable|VTT|typeinfo|typeinfo name|guard variable) for |^(non-)?virtual thunk to " ""
           bare "${name}")
    # A template's name begins with its return type in this listing; none of the interface is one.
    if(NOT bare MATCHES "^(nivora|mgrs)::" OR bare MATCHES "^[^(]*::(Impl|Data|Private|Query|FactoryGuard|System)::")
        string(APPEND refused "  ${name}\n")
    endif()
    list(APPEND own "${name}")
endforeach()
if(refused)
    message(FATAL_ERROR "${LIBRARY} must not export\n${refused}")
endif()
list(REMOVE_DUPLICATES own) # constructors have two entries
list(SORT own)
list(LENGTH own count)
message(STATUS "${count} symbols")

list(JOIN own "\n" text)
if(LIST AND UPDATE)
    file(WRITE ${LIST} "${text}\n")
elseif(LIST)
    file(WRITE ${LIBRARY}.symbols "${text}\n")
    execute_process(COMMAND diff -u ${LIST} ${LIBRARY}.symbols
        RESULT_VARIABLE differs OUTPUT_VARIABLE difference)
    if(differs)
        message(FATAL_ERROR "the exported symbols changed:\n${difference}")
    endif()
endif()
