# What every target of the project has in common: warnings, sanitizers, Qt's strictness.

function(nivora_target target)
    target_compile_features(${target} PRIVATE cxx_std_17)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow)
    if(NIVORA_QT EQUAL 5) # sizes are of two types in one source: int there, qsizetype in Qt 6
        target_compile_options(${target} PRIVATE -Wconversion)
    endif()
    if(NIVORA_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(NIVORA_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${NIVORA_SANITIZE} -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${NIVORA_SANITIZE})
        if(NIVORA_SANITIZE MATCHES "undefined")
            target_compile_options(${target} PRIVATE -fno-sanitize-recover=undefined)
        endif()
    endif()
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                                                 QT_NO_KEYWORDS)
endfunction()

# For what the fuzz targets look into: the counters of a fuzzer cost a fifth of the compilation.
function(nivora_fuzzed)
    if(NIVORA_BUILD_FUZZERS)
        foreach(target IN LISTS ARGN)
            target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
        endforeach()
    endif()
endfunction()

# For what only tests: neither its speed nor the meta-objects of what it includes matter. Without the optimiser and with
# moc reading one file it is built in half the time.
function(nivora_test_target target)
    nivora_target(${target})
    target_compile_options(${target} PRIVATE -O0)
    get_target_property(sources ${target} SOURCES)
    set(moc_dir ${CMAKE_CURRENT_BINARY_DIR}/moc)
    foreach(source IN LISTS sources)
        if(source MATCHES "^(tst_.*)[.]cpp$")
            set(moc ${moc_dir}/${CMAKE_MATCH_1}.moc)
            add_custom_command(OUTPUT ${moc}
                COMMAND ${CMAKE_COMMAND} -E make_directory ${moc_dir}
                COMMAND Qt${NIVORA_QT}::moc -o ${moc} ${CMAKE_CURRENT_SOURCE_DIR}/${source}
                DEPENDS ${source} VERBATIM)
            target_sources(${target} PRIVATE ${moc})
        endif()
    endforeach()
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests ${moc_dir})
endfunction()

# For what gets installed: texts of the build machine's directories (__FILE__, debug records) would make two builds of
# one tree differ. The debugger and the sanitizers of a developer's build want the real ones.
function(nivora_reproducible target)
    if(CMAKE_BUILD_TYPE MATCHES "^(Release|MinSizeRel|None)$")
        target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_BINARY_DIR}=build
                                                 -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
    endif()
endfunction()
