# Proves that every source, test and benchmark is listed by hand somewhere: a forgotten file is not
# built, and nobody notices. Also that no test is switched off, since a skipped test shows nothing.
# usage: cmake -DROOT=<project> -P SourceLists.cmake
file(GLOB_RECURSE lists ${ROOT}/CMakeLists.txt ${ROOT}/*/CMakeLists.txt)
list(FILTER lists EXCLUDE REGEX "^${ROOT}/build/")
set(listed "")
foreach(list ${lists})
    file(READ ${list} text)
    string(APPEND listed "${text}")
endforeach()

file(GLOB_RECURSE sources RELATIVE ${ROOT}
    ${ROOT}/src/*.cpp ${ROOT}/tests/*.cpp ${ROOT}/bench/*.cpp ${ROOT}/fuzz/*.cpp
    ${ROOT}/examples/*.cpp)
list(LENGTH sources count)
if(count LESS 20)
    message(FATAL_ERROR "only ${count} sources found below ${ROOT}: is that the project?")
endif()

set(failures "")
foreach(source ${sources})
    # Lists name a file from their own folder on.
    string(REGEX REPLACE "^(tests/consumer|tests|bench|fuzz|examples|src/cli|src/fetch)/" "" name ${source})
    # A fuzz target is listed by its stem, from which two programs are made.
    string(REGEX REPLACE "_fuzz.cpp$" "" name ${name})
    string(FIND "${listed}" "${name}" at)
    if(at EQUAL -1)
        list(APPEND failures "${source} is in no CMakeLists.txt")
    endif()
    # The sandbox's own test shows that a skip in a sandbox is a failure.
    if(NOT source STREQUAL tests/support/Sandbox_test.cpp)
        file(STRINGS ${ROOT}/${source} skips REGEX "GTEST_SKIP|TEST[A-Z_]*\\(.*DISABLED_")
        if(skips)
            list(APPEND failures "${source} switches a test off")
        endif()
    endif()
endforeach()
if(failures)
    list(JOIN failures "\n" text)
    message(FATAL_ERROR "${text}")
endif()
