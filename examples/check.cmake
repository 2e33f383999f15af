# Runs COMMAND and compares what it prints with the file EXPECTED.
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ ${EXPECTED} expected)
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected)
    message(FATAL_ERROR "status ${status}; printed\n${printed}instead of\n${expected}")
endif()
