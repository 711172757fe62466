# Installs the tool, the library and its public headers, and what find_package(thermika) needs.
include(CMakePackageConfigHelpers)

install(TARGETS thermika-genconfig)
install(TARGETS thermika EXPORT thermikaTargets)
# The Tag headers belong to the reader's inside, which its header holds by value.
foreach(header IRCalibrationManager IRLogger Logger SimpleXML StringHelpers Timer xml/TagIndex
        xml/TagPrint xml/TagSearch)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES src/sdk/${header}.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/thermika/sdk/${folder})
endforeach()
install(FILES src/imgproc/Cali.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/thermika/imgproc)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/thermika)
install(EXPORT thermikaTargets NAMESPACE thermika:: FILE thermikaConfig.cmake
    DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/thermikaConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/thermikaConfigVersion.cmake DESTINATION ${package_dir})
