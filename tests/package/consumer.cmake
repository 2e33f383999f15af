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

# says(WANTED COMMAND…): in an environment with nothing but this, it prints what is wanted and nothing else.
function(says wanted)
    execute_process(COMMAND env -i QT_QPA_PLATFORM=offscreen HOME=${WORK_DIR} LSAN_OPTIONS=$ENV{LSAN_OPTIONS} ${ARGN}
        WORKING_DIRECTORY / OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
    if(NOT printed STREQUAL wanted)
        message(FATAL_ERROR "${ARGN} said: ${printed}")
    endif()
endfunction()

# pkg_config(VARIABLE ARGUMENT…)
function(pkg_config variable)
    execute_process(COMMAND ${PKG_CONFIG} ${ARGN}
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    set(${variable} ${flags} PARENT_SCOPE)
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
    -D CMAKE_CXX_FLAGS=${sanitizer} -D WIDGETS=${WIDGETS} -D EXAMPLES=${EXAMPLES} -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
says("ok\n" ${WORK_DIR}/cmake/consumer)

# A program of the other version of Qt is told why it cannot have the library.
set(other 6)
if(QT EQUAL 6)
    set(other 5)
endif()
file(WRITE ${WORK_DIR}/other/CMakeLists.txt "cmake_minimum_required(VERSION 3.22)
project(other LANGUAGES CXX)
find_package(Qt${other} QUIET COMPONENTS Core)
set(QT_VERSION_MAJOR ${other}) # also where that version is not installed
find_package(NivoraCs REQUIRED)
")
execute_process(COMMAND ${CMAKE_COMMAND} -S ${WORK_DIR}/other -B ${WORK_DIR}/other/build -G ${GENERATOR}
        -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    RESULT_VARIABLE status ERROR_VARIABLE said)
string(REGEX REPLACE "[ \n]+" " " said "${said}")
if(status EQUAL 0 OR NOT said MATCHES "built with Qt ${QT} and cannot be used in a program with Qt ${other}")
    message(FATAL_ERROR "a program with Qt ${other} was told (${status}): ${said}")
endif()

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
pkg_config(flags --cflags --libs nivora-cs)
pkg_config(resources --variable=resourcedir nivora-cs)
set(linked "-Wl,-rpath,${prefix}/${LIBDIR}")
run(${COMPILER} -std=c++17 -fPIC ${sanitizer} "-DRESOURCES=\"${resources}\"" ${CONSUMER_DIR}/main.cpp
    -o ${WORK_DIR}/consumer-pc ${flags} ${linked})
says("ok\n" ${WORK_DIR}/consumer-pc)

if(WIDGETS)
    set(zone37 "WGS 84 / UTM zone 37N\n")
    says(${zone37} ${WORK_DIR}/cmake/picker-window ${resources} 32637)
    pkg_config(flags --cflags --libs nivora-cs-widgets)
    run(${COMPILER} -std=c++17 -fPIC ${sanitizer} ${EXAMPLES}/picker-window.cpp -o ${WORK_DIR}/picker-window-pc ${flags} ${linked})
    says(${zone37} ${WORK_DIR}/picker-window-pc ${resources} 32637)
endif()

if(APPS)
    # The installed programs find their libraries and catalogues beside themselves, from any working directory and
    # without an environment.
    execute_process(COMMAND env -i ${prefix}/bin/nivora-cs info EPSG:32637
        WORKING_DIRECTORY / OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
    if(NOT printed MATCHES "32637")
        message(FATAL_ERROR "the installed program said: ${printed}")
    endif()
endif()
if(APPS AND WIDGETS)
    # One that starts shows its window until it is stopped; one that does not has a status of its own before.
    execute_process(COMMAND env -i QT_QPA_PLATFORM=offscreen HOME=${WORK_DIR}
            timeout 3 ${prefix}/bin/nivora-cs-picker --current EPSG:32637
        WORKING_DIRECTORY / RESULT_VARIABLE status)
    if(NOT status EQUAL 124) # timeout's own
        message(FATAL_ERROR "the installed picker ended with ${status}")
    endif()
endif()
