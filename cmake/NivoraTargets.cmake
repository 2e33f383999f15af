# What every target of the project has in common: warnings, sanitizers, Qt's strictness.

function(nivora_target target)
    target_compile_features(${target} PRIVATE cxx_std_17)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
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
    if(NIVORA_BUILD_FUZZERS)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                                                 QT_NO_KEYWORDS)
endfunction()

# For what gets installed: texts of the build machine's directories (__FILE__, debug records) would make two builds of
# one tree differ. The debugger and the sanitizers of a developer's build want the real ones.
function(nivora_reproducible target)
    if(CMAKE_BUILD_TYPE MATCHES "^(Release|MinSizeRel|None)$")
        target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_BINARY_DIR}=build
                                                 -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
    endif()
endfunction()
