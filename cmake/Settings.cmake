# What every target built here shares: warnings, hardening, and sanitizers where they were asked for.
# Flags that only some machines know are tried first.
option(THERMIKA_HARDENING "Harden what is built (optimised builds without sanitizers)" ON)

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CMakePushCheckState)

# Indirect branches land on marked places only: x86 and 64-bit ARM, each in its own words.
cmake_push_check_state(RESET)
set(CMAKE_REQUIRED_FLAGS -Werror)  # clang only warns of a flag that does nothing there
check_cxx_compiler_flag(-fcf-protection=full THERMIKA_HAS_CF_PROTECTION)
check_cxx_compiler_flag(-mbranch-protection=standard THERMIKA_HAS_BRANCH_PROTECTION)
cmake_pop_check_state()
set(THERMIKA_BRANCH_FLAGS
    $<$<BOOL:${THERMIKA_HAS_CF_PROTECTION}>:-fcf-protection=full>
    $<$<BOOL:${THERMIKA_HAS_BRANCH_PROTECTION}>:-mbranch-protection=standard>)

# Where the flags of a configuration optimise, FORTIFY works. A level of somebody else's stays, whether
# the compiler, a distribution's flags or the project around this one set it.
get_directory_property(options COMPILE_OPTIONS)
get_directory_property(definitions COMPILE_DEFINITIONS)
set(THERMIKA_FORTIFY "")
foreach(config IN LISTS CMAKE_CONFIGURATION_TYPES ITEMS "${CMAKE_BUILD_TYPE}")
    string(TOUPPER "${config}" upper)
    cmake_push_check_state(RESET)
    set(CMAKE_REQUIRED_FLAGS "${CMAKE_CXX_FLAGS_${upper}}")
    check_cxx_source_compiles("
#if !defined(__OPTIMIZE__) || defined(_FORTIFY_SOURCE)
#error not ours to set
#endif
int main() {}" THERMIKA_FORTIFIES_${upper})
    cmake_pop_check_state()
    if(THERMIKA_FORTIFIES_${upper} AND NOT "${options};${definitions}" MATCHES "_FORTIFY_SOURCE")
        list(APPEND THERMIKA_FORTIFY $<$<CONFIG:${config}>:_FORTIFY_SOURCE=2>)
    endif()
endforeach()

# Position-independent where the machine has the start-up code for it: the kernel loads the tool at
# another address every time.
if(THERMIKA_STATIC)
    set(program "#include <iostream>\nint main() { std::cout << 1; }")
    cmake_push_check_state(RESET)
    set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
    check_cxx_source_compiles("${program}" THERMIKA_LINKS_STATIC_PIE)
    set(CMAKE_REQUIRED_LINK_OPTIONS -static)
    check_cxx_source_compiles("${program}" THERMIKA_LINKS_STATIC)
    cmake_pop_check_state()
    if(THERMIKA_LINKS_STATIC_PIE)
        set(THERMIKA_STATIC_LINKING -static-pie)
    elseif(THERMIKA_LINKS_STATIC)
        set(THERMIKA_STATIC_LINKING -static)
    else()
        message(STATUS "No static C++ library here: the tool is linked dynamically")
        set(THERMIKA_STATIC OFF)
    endif()
endif()

function(thermika_settings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow
        -ffunction-sections -fdata-sections
        $<$<BOOL:${THERMIKA_WARNINGS_AS_ERRORS}>:-Werror>)
    # Files and times beyond 2 GiB and the year 2038 on 32-bit machines too.
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
    endif()
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
        target_compile_options(${target} PRIVATE -fstack-protector-strong ${THERMIKA_BRANCH_FLAGS})
        target_compile_definitions(${target} PRIVATE ${THERMIKA_FORTIFY})
        target_link_options(${target} PRIVATE
            -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    endif()
endfunction()
