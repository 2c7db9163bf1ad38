# SPDX-License-Identifier: MIT
# The package: libraries, headers below include/tiltpole, tiltpoleConfig.cmake, pkg-config files.
#
#   runtime         shared libraries and the license
#   development     headers, static libraries, links to the shared ones, package files
#   programs        tiltpole, its manual pages and completion
#   gallery         tiltpole-gallery, the same of it, the log that it shows, its entry in menus
#   python          the package for Python, where it is built
#   documentation   the documents of docs/
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tiltpole)
set(libraries)
foreach(name core quality field job grid controls)
    if(TARGET tiltpole_${name})
        list(APPEND libraries tiltpole_${name})
        set(tiltpole_has_${name} ON)
    endif()
endforeach()

# Libraries and programs find the libraries wherever the prefix is; below /usr the loader finds them.
function(tiltpole_find_libraries_from folder)
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        set_target_properties(${ARGN} PROPERTIES INSTALL_RPATH "${folder}")
    endif()
endfunction()

# tiltpole_install_program(<target> <component>)
function(tiltpole_install_program target component)
    tiltpole_find_libraries_from("$ORIGIN/../${CMAKE_INSTALL_LIBDIR}" ${target})
    if(TILTPOLE_INSTALL)
        install(TARGETS ${target} RUNTIME COMPONENT ${component})
        tiltpole_program_pages(${target} ${component})
    endif()
endfunction()

if(NOT TILTPOLE_INSTALL)
    return()
endif()
if(TILTPOLE_APPS)
    include(TiltpoleProgramPages)
endif()

tiltpole_find_libraries_from("$ORIGIN" ${libraries})
install(TARGETS ${libraries}
    EXPORT tiltpoleTargets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tiltpole COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
install(EXPORT tiltpoleTargets NAMESPACE tiltpole:: DESTINATION ${package_dir}
    COMPONENT development)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tiltpoleConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tiltpoleConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tiltpoleConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tiltpoleConfig.cmake
              ${PROJECT_BINARY_DIR}/tiltpoleConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/FindGeographicLib.cmake
    DESTINATION ${package_dir} COMPONENT development)

install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT documentation PATTERN Doxyfile EXCLUDE PATTERN "*.py" EXCLUDE)

include(TiltpolePkgConfig)
