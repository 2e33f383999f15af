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
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                                                 QT_NO_KEYWORDS)
endfunction()
