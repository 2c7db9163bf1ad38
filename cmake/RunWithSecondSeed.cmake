# SPDX-License-Identifier: MIT
# Runs the tests `filter` of `program` with the seed TILTPOLE_SEED, or with one that is new each time.
cmake_minimum_required(VERSION 3.25)

set(seed "$ENV{TILTPOLE_SEED}")
if(NOT seed)
    string(RANDOM LENGTH 9 ALPHABET 123456789 seed)
endif()
message(STATUS "seed ${seed}")
execute_process(
    COMMAND ${CMAKE_COMMAND} -E env RC_PARAMS=seed=${seed} ${program} --gtest_filter=${filter}
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${output}\nTo repeat: "
        "RC_PARAMS=seed=${seed} ${program} --gtest_filter=${filter}")
endif()
string(REPLACE ":" ";" wanted "${filter}")
list(LENGTH wanted count)
if(NOT output MATCHES "Running ${count} tests? from")
    message(FATAL_ERROR "not all of ${filter} ran:\n${output}")
endif()
