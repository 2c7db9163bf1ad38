# SPDX-License-Identifier: MIT
# Fails when the host program that README shows is not the one that the tests build and run.
file(READ "${source_dir}/README.md" readme)
file(READ "${source_dir}/examples/host/main.cpp" host)
string(REGEX REPLACE "^// SPDX[^\n]*\n//\n" "" host "${host}") # the page shows no license line
string(FIND "${readme}" "${host}" at)
if(at EQUAL -1)
    message(FATAL_ERROR "README.md does not show examples/host/main.cpp as it stands")
endif()
