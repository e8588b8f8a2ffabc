# Our own targets compile warning-free with -Wall -Wextra; CI adds -Werror through VELM_WERROR.
function(velm_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
    if(VELM_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    # String literals must be spelled as QString on purpose; signals/slots use the Q_ macros.
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS
                                                 QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
endfunction()
