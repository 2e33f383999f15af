# Installs into a temporary prefix, moves it (nothing in it may remember where it was made), and builds and runs
# the consumer against it twice: with find_package and with pkg-config. With DEBIAN the same from Debian packages.
set(CMAKE_EXECUTE_PROCESS_COMMAND_ECHO STDOUT)

set(sanitizer "")
if(SANITIZE)
    # A program without the sanitizers' run-time cannot load a library that has them.
    set(sanitizer -fsanitize=${SANITIZE})
endif()

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The consumer says "ok" and nothing else when all of its checks hold.
function(run_consumer)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=PROJ_LIB --unset=NIVORA_DATA ${ARGN}
        OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
    if(NOT printed STREQUAL "ok\n")
        message(FATAL_ERROR "the consumer said: ${printed}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
if(DEBIAN)
    include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
else()
    set(prefix "${WORK_DIR}/moved here")
    run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/staged)
    file(RENAME ${WORK_DIR}/staged ${prefix})
endif()

run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${prefix}
    -D CMAKE_CXX_FLAGS=${sanitizer} -D WIDGETS=${WIDGETS} -D CHOOSE=${CHOOSE} -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run_consumer(${WORK_DIR}/cmake/consumer)

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs nivora-cs
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND ${PKG_CONFIG} --variable=resourcedir nivora-cs
    OUTPUT_VARIABLE resources OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
run(${COMPILER} -std=c++17 ${sanitizer} "-DRESOURCES=\"${resources}\"" ${CONSUMER_DIR}/main.cpp
    -o ${WORK_DIR}/consumer-pc ${flags} "-Wl,-rpath,${prefix}/${LIBDIR}")
run_consumer(${WORK_DIR}/consumer-pc)

if(WIDGETS)
    execute_process(COMMAND ${PKG_CONFIG} --cflags --libs nivora-cs-widgets
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run(${COMPILER} -std=c++17 ${sanitizer} ${CHOOSE} -o ${WORK_DIR}/choose-pc ${flags} "-Wl,-rpath,${prefix}/${LIBDIR}")
endif()

if(APPS)
    # The installed program finds its library and its catalogues beside itself, from any working directory and
    # without an environment.
    execute_process(COMMAND env -i ${prefix}/bin/nivora-cs info EPSG:32637
        WORKING_DIRECTORY / OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
    if(NOT printed MATCHES "32637")
        message(FATAL_ERROR "the installed program said: ${printed}")
    endif()
endif()
