# Whether a compiler with INCLUDES finds each header of SEEN and none of HIDDEN.
list(TRANSFORM INCLUDES PREPEND -I)
file(MAKE_DIRECTORY ${WORK_DIR})

function(expect header wanted)
    file(WRITE ${WORK_DIR}/probe.cpp "#if __has_include(\"${header}\") != ${wanted}\n#error\n#endif\n")
    execute_process(COMMAND ${COMPILER} -fsyntax-only ${INCLUDES} ${WORK_DIR}/probe.cpp
        RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
    if(failed)
        message(SEND_ERROR "${header}: found should be ${wanted}")
    endif()
endfunction()

foreach(header IN LISTS SEEN)
    expect(${header} 1)
endforeach()
foreach(header IN LISTS HIDDEN)
    expect(${header} 0)
endforeach()
