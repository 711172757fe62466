# Proves that every source, test and benchmark is listed by hand somewhere: a forgotten file is not
# built, and nobody notices. Also that no test is switched off, since a skipped test shows nothing.
# usage: cmake -DROOT=<project> -P SourceLists.cmake
cmake_minimum_required(VERSION 3.25)
# Sets `result` to whether a list names `source`, as seen from that list's folder.
function(find_in_lists source result)
    # A fuzz target is listed by its stem, from which two programs are made.
    string(REGEX REPLACE "_fuzz.cpp$" "" file ${source})
    get_filename_component(folder ${source} DIRECTORY)
    set(${result} FALSE PARENT_SCOPE)
    while(TRUE)
        set(list ${ROOT}/${folder}/CMakeLists.txt)
        if(EXISTS ${list})
            file(RELATIVE_PATH name ${ROOT}/${folder} ${ROOT}/${file})
            file(READ ${list} text)
            string(FIND "${text}" "${name}" at)
            if(NOT at EQUAL -1)
                set(${result} TRUE PARENT_SCOPE)
                return()
            endif()
        endif()
        if(folder STREQUAL "")
            return()
        endif()
        get_filename_component(folder ${folder} DIRECTORY)
    endwhile()
endfunction()

file(GLOB_RECURSE sources RELATIVE ${ROOT}
    ${ROOT}/src/*.cpp ${ROOT}/tests/*.cpp ${ROOT}/bench/*.cpp ${ROOT}/fuzz/*.cpp
    ${ROOT}/examples/*.cpp)
list(LENGTH sources count)
if(count LESS 20)
    message(FATAL_ERROR "only ${count} sources found below ${ROOT}: is that the project?")
endif()

set(failures "")
foreach(source ${sources})
    find_in_lists(${source} isListed)
    if(NOT isListed)
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
