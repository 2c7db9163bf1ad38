# SPDX-License-Identifier: MIT
# GeographicLib by its own package where that is installed, else by its files; installed with the
# package of this project, whose static libraries need it.
#
#   GeographicLib::GeographicLib   the library
#   GeographicLib_FOUND
find_package(GeographicLib CONFIG QUIET)
if(NOT TARGET GeographicLib::GeographicLib)
    find_library(GeographicLib_LIBRARY NAMES GeographicLib Geographic)
    find_path(GeographicLib_INCLUDE_DIR GeographicLib/SphericalHarmonic1.hpp)
    mark_as_advanced(GeographicLib_LIBRARY GeographicLib_INCLUDE_DIR)
endif()

include(FindPackageHandleStandardArgs)
if(TARGET GeographicLib::GeographicLib)
    set(GeographicLib_FOUND TRUE)
else()
    find_package_handle_standard_args(GeographicLib
        REQUIRED_VARS GeographicLib_LIBRARY GeographicLib_INCLUDE_DIR)
    if(GeographicLib_FOUND)
        add_library(GeographicLib::GeographicLib UNKNOWN IMPORTED)
        set_target_properties(GeographicLib::GeographicLib PROPERTIES
            IMPORTED_LOCATION "${GeographicLib_LIBRARY}"
            INTERFACE_INCLUDE_DIRECTORIES "${GeographicLib_INCLUDE_DIR}")
    endif()
endif()
