# What every target built here shares: warnings, hardening, and sanitizers where they were asked for.
option(THERMIKA_HARDENING "Harden what is built (optimised builds without sanitizers)" ON)

function(thermika_settings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow
        -ffunction-sections -fdata-sections
        $<$<BOOL:${THERMIKA_WARNINGS_AS_ERRORS}>:-Werror>)
    if(THERMIKA_ANALYZER)
        # g++ 12 takes a value that a function returns in place for uninitialised, and the memory of
        # a std::vector for null; memcheck and clang's analyzer look for these instead.
        target_compile_options(${target} PRIVATE -fanalyzer
            -Wno-analyzer-use-of-uninitialized-value -Wno-analyzer-null-dereference)
    endif()
    if(THERMIKA_SANITIZERS)
        target_compile_options(${target} PRIVATE
            -fsanitize=${THERMIKA_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer
            $<$<CXX_COMPILER_ID:Clang>:-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizer-ignored>)
        target_link_options(${target} PUBLIC -fsanitize=${THERMIKA_SANITIZERS})
    elseif(THERMIKA_HARDENING)
        # FORTIFY works in optimised code only; distributions may have set a level of their own.
        target_compile_options(${target} PRIVATE
            $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
            $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>
            -fstack-protector-strong -fcf-protection=full)
        target_link_options(${target} PRIVATE
            -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    endif()
endfunction()
