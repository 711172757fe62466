# Tests of what others get to see: the installed package, the public headers, the shared library's
# symbols, and the project as part of another one.
set(consumer ${CMAKE_CURRENT_SOURCE_DIR}/consumer)

# thermika_consumer_test(NAME SCRIPT ARGUMENT...)
function(thermika_consumer_test name script)
    add_test(NAME Consumer.${name} COMMAND ${consumer}/${script} ${ARGN})
    set_tests_properties(Consumer.${name} PROPERTIES TIMEOUT 300 ENVIRONMENT
        "THERMIKA_SOURCE=${PROJECT_SOURCE_DIR};THERMIKA_BUILD=${PROJECT_BINARY_DIR};\
THERMIKA_VERSION=${PROJECT_VERSION};THERMIKA_DATA_DIR=${THERMIKA_DATA_DIR};\
THERMIKA_FETCH=${THERMIKA_FETCH};CXX=${CMAKE_CXX_COMPILER};CXXFLAGS=${CMAKE_CXX_FLAGS};CMAKE_GENERATOR=${CMAKE_GENERATOR}")
endfunction()

# With g++ in the dev preset, with clang++ in the asan preset.
thermika_consumer_test(compilesEachHeaderAlone headers_test.sh)
# Instrumented builds would show nothing new about the rest.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    return()
endif()

thermika_consumer_test(buildsWithCMakeAgainstTheInstalledPackage cmake_test.sh)
thermika_consumer_test(keepsWhatAPackagerDecides packager_test.sh)
thermika_consumer_test(getsOnlyTheLibraryFromASubproject subproject_test.sh)

thermika_consumer_test(buildsWithPkgConfigAgainstTheInstalledPackage pkg-config_test.sh)

if(NOT BUILD_SHARED_LIBS)
    add_library(thermika-shared SHARED $<TARGET_OBJECTS:thermika-objects>)
    set_target_properties(thermika-shared PROPERTIES
        OUTPUT_NAME thermika LIBRARY_OUTPUT_DIRECTORY shared LINKER_LANGUAGE CXX)
    thermika_export_only_interface(thermika-shared)
    set(shared thermika-shared)
else()
    set(shared thermika)
endif()
add_test(NAME Consumer.findsExactlyTheListedSymbolsInTheSharedLibrary
    COMMAND ${consumer}/exports_test.sh $<TARGET_FILE:${shared}>
        ${PROJECT_SOURCE_DIR} ${THERMIKA_ABI})
add_test(NAME Consumer.findsEveryDeclaredFunctionInTheSharedLibrary
    COMMAND python3 ${consumer}/interface_test.py ${PROJECT_SOURCE_DIR}
        $<TARGET_FILE:thermika-internal>)
