# thermika_library(NAME SOURCE...): the sources are compiled once, into
#   NAME           what others link: static, or shared with BUILD_SHARED_LIBS
#   NAME-internal  the same, always static: for our own programs and tests, which use what the
#                  shared library does not export
function(thermika_library name)
    add_library(${name}-objects OBJECT ${ARGN})
    target_include_directories(${name}-objects PRIVATE ${PROJECT_BINARY_DIR}/generated)
    thermika_settings(${name}-objects)
    # Nobody puts another function in place of one of ours: calls within a source may be inlined.
    target_compile_options(${name}-objects PRIVATE -fno-semantic-interposition)

    add_library(${name} $<TARGET_OBJECTS:${name}-objects>)
    if(BUILD_SHARED_LIBS)
        add_library(${name}-internal STATIC $<TARGET_OBJECTS:${name}-objects>)
        set_target_properties(${name}-internal PROPERTIES EXCLUDE_FROM_ALL ${THERMIKA_ON_REQUEST})
        thermika_export_only_interface(${name})
        set(targets ${name} ${name}-objects ${name}-internal)
    else()
        add_library(${name}-internal ALIAS ${name})
        set(targets ${name} ${name}-objects)
    endif()
    add_library(thermika::${name} ALIAS ${name})

    foreach(target ${targets})
        target_include_directories(${target} PUBLIC
            $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>
            $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/generated/public>)
        target_compile_features(${target} PUBLIC cxx_std_17)
        set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
        if(THERMIKA_SANITIZERS)
            target_link_options(${target} PUBLIC -fsanitize=${THERMIKA_SANITIZERS})
        endif()
    endforeach()
endfunction()

# The shared library exports what cmake/exported-symbols lists, and nothing else.
function(thermika_export_only_interface target)
    set(list ${PROJECT_SOURCE_DIR}/cmake/exported-symbols)
    set(map ${PROJECT_BINARY_DIR}/libthermika.map)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
    file(READ ${list} symbols)
    string(REGEX REPLACE "([^\n]+)\n" "    \"\\1\";\n" symbols "${symbols}")
    file(CONFIGURE OUTPUT ${map} @ONLY CONTENT
"{
  global:
    extern \"C++\" {
@symbols@    };
  local: *;
};
")
    target_link_options(${target} PRIVATE -Wl,--version-script=${map} -Wl,--no-undefined
        $<$<BOOL:${THERMIKA_HARDENING}>:-Wl,-z,relro,-z,now,-z,noexecstack>)
    set_target_properties(${target} PROPERTIES
        LINK_DEPENDS ${map}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${THERMIKA_ABI})
endfunction()
