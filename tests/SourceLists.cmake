# Proves that every source, test and benchmark is listed by hand somewhere: a forgotten file is not
# built, and nobody notices. Also that no test is switched off, since a skipped test shows nothing;
# that each one is in its program, RegisteredTests.cmake proves.
# usage: cmake -DROOT=<project> -P SourceLists.cmake
cmake_minimum_required(VERSION 3.25)
file(GLOB_RECURSE lists ${ROOT}/CMakeLists.txt ${ROOT}/*/CMakeLists.txt)
list(FILTER lists EXCLUDE REGEX "^${ROOT}/build/")
set(listed ";")
foreach(list ${lists})
    # Whole words outside of comments.
    file(READ ${list} text)
    string(REGEX REPLACE "#[^\n]*" "" text "${text}")
    string(REGEX REPLACE "[ \t\n()\"]+" ";" text "${text}")
    cmake_path(GET list PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${ROOT})
    foreach(word ${text})
        string(REPLACE "\${PROJECT_SOURCE_DIR}/" "" fromRoot "${word}")
        if(NOT fromRoot STREQUAL word)
            string(APPEND listed "${fromRoot};")
        elseif(word MATCHES "^[A-Za-z0-9_./-]+$")
            string(APPEND listed "${folder}/${word};")
        endif()
    endforeach()
endforeach()
string(REPLACE ";./" ";" listed "${listed}")

file(GLOB_RECURSE sources RELATIVE ${ROOT}
    ${ROOT}/src/*.cpp ${ROOT}/tests/*.cpp ${ROOT}/bench/*.cpp ${ROOT}/fuzz/*.cpp
    ${ROOT}/examples/*.cpp)
list(LENGTH sources count)
if(count LESS 20)
    message(FATAL_ERROR "only ${count} sources found below ${ROOT}: is that the project?")
endif()

set(failures "")
foreach(source ${sources})
    # A fuzz target is listed by its stem, from which two programs are made.
    string(REGEX REPLACE "^(fuzz/.*)_fuzz.cpp$" "\\1" name ${source})
    string(FIND "${listed}" ";${name};" at)
    if(at EQUAL -1)
        list(APPEND failures "${source} is in no CMakeLists.txt")
    endif()
    # The sandbox's own test shows that a skip in a sandbox is a failure.
    if(NOT source STREQUAL tests/support/Sandbox_test.cpp)
        file(STRINGS ${ROOT}/${source} skips
            REGEX "GTEST_SKIP|TEST[A-Z_]*\\(.*DISABLED_|^ *(//|/\\*).*TEST(_[FP])?\\(")
        if(skips)
            list(APPEND failures "${source} switches a test off")
        endif()
    endif()
endforeach()
if(failures)
    list(JOIN failures "\n" text)
    message(FATAL_ERROR "${text}")
endif()
