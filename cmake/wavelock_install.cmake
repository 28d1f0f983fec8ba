# Installs the library with its headers and the control module, so that CMake finds it as wavelock::wavelock and
# pkg-config as wavelock.
include(CMakePackageConfigHelpers)

install(TARGETS wavelock EXPORT wavelock-targets)
install(TARGETS wavelock_control LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/wavelock)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/wavelock/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/wavelock
        FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/wavelock)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/wavelock-config.cmake.in
                              ${PROJECT_BINARY_DIR}/wavelock-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/wavelock-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(EXPORT wavelock-targets NAMESPACE wavelock:: DESTINATION ${package_dir})
install(FILES ${PROJECT_BINARY_DIR}/wavelock-config.cmake ${PROJECT_BINARY_DIR}/wavelock-config-version.cmake
        DESTINATION ${package_dir})

# The file names its prefix by where it lies itself, so that an installation can be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_dir} /prefix)
list(TRANSFORM CMAKE_DL_LIBS PREPEND -l OUTPUT_VARIABLE dl_flags)
configure_file(${PROJECT_SOURCE_DIR}/cmake/wavelock.pc.in ${PROJECT_BINARY_DIR}/wavelock.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/wavelock.pc DESTINATION ${pkgconfig_dir})
