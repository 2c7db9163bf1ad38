# SPDX-License-Identifier: MIT
# The package: libraries, headers below include/tiltpole, and tiltpoleConfig.cmake.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tiltpole)
set(libraries tiltpole_core tiltpole_quality)
if(TILTPOLE_CONTROLS)
    list(APPEND libraries tiltpole_controls)
endif()

# Installed libraries find each other wherever the prefix stands.
set_target_properties(${libraries} PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS ${libraries}
    EXPORT tiltpoleTargets
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tiltpole)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(EXPORT tiltpoleTargets NAMESPACE tiltpole:: DESTINATION ${package_dir})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tiltpoleConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tiltpoleConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tiltpoleConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tiltpoleConfig.cmake
              ${PROJECT_BINARY_DIR}/tiltpoleConfigVersion.cmake
    DESTINATION ${package_dir})
