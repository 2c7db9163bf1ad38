# SPDX-License-Identifier: MIT
# In the place of GeographicLib, which is installed for one processor only.
add_library(GeographicLib::GeographicLib INTERFACE IMPORTED GLOBAL)
target_include_directories(GeographicLib::GeographicLib INTERFACE ${CMAKE_CURRENT_LIST_DIR})
set(GeographicLib_FOUND TRUE)
