# Only nivora:: and mgrs:: may be visible outside the shared library, and its main entry points must be.
execute_process(COMMAND ${NM} -D --defined-only -C ${LIBRARY}
    OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")

set(foreign "")
set(own 0)
foreach(line IN LISTS lines)
    # address, kind, name; A is the name of a symbol version
    if(NOT line MATCHES "^[0-9a-f]+ ([A-Za-z]) (.*)$" OR CMAKE_MATCH_1 STREQUAL "A")
        continue()
    endif()
    set(name "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "^(vtable|VTT|typeinfo|typeinfo name|guard variable) for |^(non-)?virtual thunk to " ""
           bare "${name}")
    # A template's name begins with its return type in this listing; none of the interface is one.
    if(bare MATCHES "^(nivora|mgrs)::")
        math(EXPR own "${own} + 1")
    else()
        string(APPEND foreign "  ${name}\n")
    endif()
endforeach()
if(foreign)
    message(FATAL_ERROR "${LIBRARY} also exports\n${foreign}")
endif()

foreach(wanted IN ITEMS
        "nivora::cs::CoordSysFactory::initCoordSystemEnvironment()"
        "nivora::cs::CoordTransform::forward(QPointF const&, QPointF&) const"
        "nivora::cs::Mgrs::"
        "typeinfo for nivora::cs::ProjException"
        "typeinfo for nivora::cs::UnknownUnitException")
    string(FIND "${listing}" " ${wanted}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "${LIBRARY} does not export ${wanted}")
    endif()
endforeach()
message(STATUS "${own} symbols, all in nivora:: or mgrs::")
