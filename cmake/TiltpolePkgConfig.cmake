# SPDX-License-Identifier: MIT
# A pkg-config file for each library: tiltpole-core, tiltpole-quality, ... The prefix is found from
# where the file stands, so that an installed tree may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The option that links the library of an imported target.
function(tiltpole_link_flag target result)
    foreach(property IMPORTED_LOCATION IMPORTED_LOCATION_NONE IMPORTED_LOCATION_RELEASE
            IMPORTED_LOCATION_RELWITHDEBINFO)
        get_target_property(location ${target} ${property})
        if(location)
            get_filename_component(name ${location} NAME_WE)
            string(REGEX REPLACE "^lib" "-l" name ${name})
            set(${result} ${name} PARENT_SCOPE)
            return()
        endif()
    endforeach()
    message(FATAL_ERROR "${target} does not say where its library is")
endfunction()

# tiltpole_pkg_config(<library> DESCRIPTION <text> [REQUIRES <libraries>] [MADE_WITH <targets>])
function(tiltpole_pkg_config name)
    if(NOT TARGET tiltpole_${name})
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION" "REQUIRES;MADE_WITH")
    set(requires ${arg_REQUIRES})
    list(TRANSFORM requires PREPEND tiltpole-)
    list(JOIN requires ", " requires)
    set(private)
    foreach(target ${arg_MADE_WITH})
        tiltpole_link_flag(${target} flag)
        list(APPEND private ${flag})
    endforeach()
    list(JOIN private " " private)
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
        NORMALIZE OUTPUT_VARIABLE libdir)
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
        NORMALIZE OUTPUT_VARIABLE includedir)
    file(RELATIVE_PATH prefix ${libdir}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    file(RELATIVE_PATH libdir ${CMAKE_INSTALL_PREFIX} ${libdir})
    file(RELATIVE_PATH includedir ${CMAKE_INSTALL_PREFIX} ${includedir})
    string(REGEX REPLACE "/$" "" prefix "${prefix}")
    set(define)
    if(NOT BUILD_SHARED_LIBS)
        set(define " -DTILTPOLE_STATIC")
    endif()
    set(file ${PROJECT_BINARY_DIR}/pkgconfig/tiltpole-${name}.pc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/tiltpole.pc.in ${file} @ONLY)
    install(FILES ${file} DESTINATION ${pkgconfig_dir} COMPONENT development)
endfunction()

tiltpole_pkg_config(core DESCRIPTION "Tip coordinates of a tilted survey pole and its calibration")
tiltpole_pkg_config(quality DESCRIPTION "Reports, fits and estimates beside the results of tiltpole"
    REQUIRES core)
tiltpole_pkg_config(field DESCRIPTION "Occupations, calibration on the spot and the live pole"
    REQUIRES core MADE_WITH GeographicLib::GeographicLib)
tiltpole_pkg_config(job DESCRIPTION "Stored points of a survey pole in one GeoPackage"
    REQUIRES field MADE_WITH SQLite::SQLite3)
tiltpole_pkg_config(grid DESCRIPTION "Convergence of map grids" REQUIRES core MADE_WITH PROJ::proj)
tiltpole_pkg_config(controls DESCRIPTION "Display controls of tiltpole and their window framework"
    REQUIRES core MADE_WITH Qt6::Widgets Qt6::Gui Qt6::Core)
