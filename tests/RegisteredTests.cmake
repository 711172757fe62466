# Proves that every test of the sources stands in the program: one under "#if 0" or in a comment is
# not built, and nobody notices.
# usage: cmake -DPROGRAM=<path> "-DSOURCES=a_test.cpp;b.cpp" -DFOLDER=<of the sources>
#              -P RegisteredTests.cmake
set(written "")
foreach(source ${SOURCES})
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${FOLDER})
    file(READ ${source} text)
    # Line feeds too: clang-format breaks long names onto a line of their own.
    string(REGEX MATCHALL "TEST(_[FP])?\\([ \n]*[A-Za-z0-9_]+,[ \n]*[A-Za-z0-9_]+\\)" macros "${text}")
    foreach(macro ${macros})
        string(REGEX REPLACE "TEST(_[FP])?\\([ \n]*([A-Za-z0-9_]+),[ \n]*([A-Za-z0-9_]+)\\)" "\\2.\\3"
            name ${macro})
        list(APPEND written ${name})
    endforeach()
endforeach()
if(NOT written)
    message(FATAL_ERROR "no test found in ${SOURCES}: are these the tests?")
endif()

execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE text
    COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" lines "${text}")
set(registered "")
foreach(line ${lines})
    if(line MATCHES "^([A-Za-z0-9_]+/)?([A-Za-z0-9_]+)\\.")
        set(suite ${CMAKE_MATCH_2})
    elseif(line MATCHES "^  ([A-Za-z0-9_]+)")
        list(APPEND registered ${suite}.${CMAKE_MATCH_1})
    endif()
endforeach()

list(REMOVE_ITEM written ${registered})
if(written)
    list(JOIN written "\n" text)
    message(FATAL_ERROR "written, but not in the program:\n${text}")
endif()
