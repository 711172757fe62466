# Installs the tool, the library and its public headers, what find_package(thermika) and pkg-config
# need, and the directory of the cameras' files.
include(CMakePackageConfigHelpers)

# A tool that is linked with the shared library finds it below the prefix, wherever that is. Who
# installs where the loader looks anyway switches that off with CMAKE_SKIP_INSTALL_RPATH.
if(BUILD_SHARED_LIBS AND NOT THERMIKA_STATIC)
    file(RELATIVE_PATH from_tool ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(thermika-genconfig PROPERTIES INSTALL_RPATH $ORIGIN/${from_tool})
endif()
install(TARGETS thermika-genconfig)

target_include_directories(thermika INTERFACE
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/thermika>)
install(TARGETS thermika EXPORT thermikaTargets)
if(BUILD_SHARED_LIBS)
    # The static form comes along, as thermika::static.
    set_target_properties(thermika-internal PROPERTIES OUTPUT_NAME thermika EXPORT_NAME static)
    target_include_directories(thermika-internal INTERFACE
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/thermika>)
    install(TARGETS thermika-internal EXPORT thermikaTargets)
endif()
foreach(header IRCalibrationManager IRLogger Logger SimpleXML StringHelpers Timer)
    install(FILES src/sdk/${header}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/thermika/sdk)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/generated/public/sdk/Version.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/thermika/sdk)
install(FILES src/imgproc/Cali.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/thermika/imgproc)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/thermika)
install(EXPORT thermikaTargets NAMESPACE thermika:: DESTINATION ${package_dir})
configure_file(cmake/thermikaConfig.cmake.in thermikaConfig.cmake @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/thermikaConfig.cmake DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/thermikaConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/thermikaConfigVersion.cmake DESTINATION ${package_dir})

# They name the directories that were chosen; the companion's is there with the companion.
set(pages thermika-genconfig.1 libthermika.3 thermika-files.5)
if(THERMIKA_CLI)
    list(APPEND pages thermika.1)
endif()
foreach(page ${pages})
    string(REGEX REPLACE ".*\\." "man" section ${page})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS docs/man/${page})
    file(READ docs/man/${page} text)
    string(REPLACE /usr/share/thermika ${CMAKE_INSTALL_FULL_DATADIR}/thermika text "${text}")
    string(REPLACE /usr/share/libthermika "${THERMIKA_DATA_DIR}" text "${text}")
    file(CONFIGURE OUTPUT man/${page} CONTENT "${text}" @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/man/${page}
        DESTINATION ${CMAKE_INSTALL_MANDIR}/${section})
endforeach()

# The companion writes its completion scripts itself. Cross-built it does not run here: without
# CMAKE_CROSSCOMPILING_EMULATOR no scripts are installed, though packaging/ lists them. They are the
# same as any other machine's.
if(THERMIKA_CLI AND (NOT CMAKE_CROSSCOMPILING OR CMAKE_CROSSCOMPILING_EMULATOR))
    include(cmake/Completions.cmake)
endif()

# Paths in the .pc file start at its own folder, so that the installed tree may be moved; absolute
# directories stay as they are.
set(pc_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH pc_prefix ${pc_dir} ${CMAKE_INSTALL_PREFIX})
    string(PREPEND pc_prefix "\${pcfiledir}/")
    string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
endif()
cmake_path(APPEND pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR} thermika)
configure_file(cmake/thermika.pc.in thermika.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/thermika.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The fetch library is static, and found as the package's component "fetch".
if(THERMIKA_FETCH)
    target_include_directories(thermika-fetch INTERFACE
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/thermika>)
    install(TARGETS thermika-fetch EXPORT thermikaFetchTargets)
    install(EXPORT thermikaFetchTargets NAMESPACE thermika:: DESTINATION ${package_dir})
    install(FILES src/fetch/Fetch.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/thermika/fetch)
    configure_file(cmake/thermika-fetch.pc.in thermika-fetch.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/thermika-fetch.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()

# It lies outside the prefix, where not everybody may write: then whoever installs is told.
install(CODE "
    set(dir \"\$ENV{DESTDIR}${THERMIKA_DATA_DIR}/cali\")
    execute_process(COMMAND \${CMAKE_COMMAND} -E make_directory \"\${dir}\"
        RESULT_VARIABLE status ERROR_QUIET)
    if(NOT status EQUAL 0)
        message(WARNING \"cannot create \${dir}: it is for the cameras' calibration files \"
            \"(create it as root, or set THERMIKA_DATA_DIR)\")
    endif()")
