# SPDX-License-Identifier: MIT
# Reads the version of the project from framework/core/Version.h into `version`: the header that
# hosts see is the one place where it stands.
set(header ${CMAKE_CURRENT_LIST_DIR}/../framework/core/Version.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
file(READ ${header} text)
set(version)
foreach(part MAJOR MINOR PATCH)
    if(NOT text MATCHES "#define TILTPOLE_VERSION_${part} ([0-9]+)\n")
        message(FATAL_ERROR "${header} defines no TILTPOLE_VERSION_${part}")
    endif()
    list(APPEND version ${CMAKE_MATCH_1})
endforeach()
list(JOIN version "." version)
if(NOT text MATCHES "#define TILTPOLE_VERSION_STRING \"${version}\"\n")
    message(FATAL_ERROR "${header}: TILTPOLE_VERSION_STRING is not \"${version}\"")
endif()
