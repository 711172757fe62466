# thermika_discover_tests(TARGET): each case becomes a test of its own. Those of sources that use the
# sandbox carry the label "namespaces": `ctest -LE namespaces` runs the others, for build machines
# that forbid namespaces. Sandboxes fail wherever the label is missing, on any machine.
include(GoogleTest)

set(sandboxes "support/(CameraSet|DownloadSandbox|FileServer|LateFiles|LocalCopy|Recorder")
string(APPEND sandboxes "|Sandbox|SerialSearch|Tool|UsbTree)\\.h")

set(seconds 120)
if(CMAKE_CROSSCOMPILING)  # an emulator may run them
    set(seconds 600)
endif()

function(thermika_discover_tests target)
    get_target_property(sources ${target} SOURCES)
    set(suites "")
    foreach(source ${sources})
        get_filename_component(path ${source} ABSOLUTE)
        if(path MATCHES "_test\\.cpp$")
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
            file(STRINGS ${path} uses REGEX "${sandboxes}|inSandbox")
            if(uses)
                file(STRINGS ${path} cases REGEX "^TEST(_F|_P)?\\(")
                foreach(case ${cases})
                    string(REGEX REPLACE "^[A-Z_]+\\(([A-Za-z0-9_]+).*" "\\1" suite "${case}")
                    list(APPEND suites "${suite}.*" "*/${suite}.*")
                endforeach()
            endif()
        endif()
    endforeach()
    if(suites)
        list(REMOVE_DUPLICATES suites)
        list(JOIN suites ":" suites)
        gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 TEST_FILTER "${suites}"
            PROPERTIES TIMEOUT ${seconds} LABELS namespaces)
        gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 TEST_FILTER "-${suites}"
            PROPERTIES TIMEOUT ${seconds} ENVIRONMENT THERMIKA_NO_NAMESPACES=1)
    else()
        gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60
            PROPERTIES TIMEOUT ${seconds} ENVIRONMENT THERMIKA_NO_NAMESPACES=1)
    endif()
endfunction()
