# SPDX-License-Identifier: MIT
# What every target of the project shares: language level, warnings, rounding, visibility.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Versions 0.x with different minor numbers are incompatible, and so are their shared libraries.
set(TILTPOLE_SOVERSION ${PROJECT_VERSION_MAJOR})
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(TILTPOLE_SOVERSION 0.${PROJECT_VERSION_MINOR})
endif()

# The registers of the x87 keep more digits than a double has: results would differ from those of other
# processors, and with the optimization.
include(CheckCXXSourceCompiles)
check_cxx_source_compiles("
    #include <cfloat>
    #if !defined(__i386__) || FLT_EVAL_METHOD == 0
    #error no x87
    #endif
    int main() {}" TILTPOLE_X87)

# Language level, warnings and rounding of one target. A product and a sum stay two roundings:
# contraction into fused operations would make results differ between processors. Processors of 32 bits
# read files above 2 GiB, too.
function(tiltpole_target_defaults target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wconversion -Wshadow -ffp-contract=off)
    if(TILTPOLE_X87)
        target_compile_options(${target} PRIVATE -msse2 -mfpmath=sse)
    endif()
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64)
    endif()
endfunction()

# tiltpole_precompile(<target> [<headers>]): parses the headers that most sources include once a target.
# Every source includes what it uses nevertheless: lint and the test Package.shared compile without.
function(tiltpole_precompile target)
    target_precompile_headers(${target} PRIVATE
        <algorithm> <array> <cmath> <functional> <limits> <memory> <optional> <string> <string_view>
        <utility> <vector> ${ARGN})
endfunction()

# tiltpole_add_library(<name>) makes tiltpole_<name>, alias tiltpole::<name>; its folders add
# their sources and headers with tiltpole_sources().
function(tiltpole_add_library name)
    set(target tiltpole_${name})
    add_library(${target})
    add_library(tiltpole::${name} ALIAS ${target})
    tiltpole_target_defaults(${target})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${TILTPOLE_SOVERSION}
        VERIFY_INTERFACE_HEADER_SETS ON
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    tiltpole_harden_link(${target})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
    if(NOT BUILD_SHARED_LIBS)
        target_compile_definitions(${target} PUBLIC TILTPOLE_STATIC)
    elseif(CMAKE_EXECUTABLE_FORMAT STREQUAL "ELF")
        set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
        target_link_options(${target} PRIVATE LINKER:--version-script=${exports})
        set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
    endif()
endfunction()

# tiltpole_sources(<library> PRIVATE <files> PUBLIC <installed headers>), called in each folder.
function(tiltpole_sources name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "PRIVATE;PUBLIC")
    target_sources(tiltpole_${name} PRIVATE ${arg_PRIVATE})
    target_sources(tiltpole_${name}
        PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_PUBLIC})
endfunction()

# tiltpole_test(<name> [SERIAL] [PROGRAM <target>] SOURCES <files> LIBRARIES <targets>): one GoogleTest
# program per folder. Its tests may run PROGRAM, whose path is TILTPOLE_PROGRAM. With SERIAL nothing
# runs beside one of them: for tests of programs that answer in real time.
function(tiltpole_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "SERIAL" "PROGRAM" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    tiltpole_target_defaults(${name})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock_main rapidcheck)
    target_compile_definitions(${name} PRIVATE
        TILTPOLE_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    if(arg_PROGRAM)
        target_compile_definitions(${name} PRIVATE
            TILTPOLE_PROGRAM="$<TARGET_FILE:${arg_PROGRAM}>")
        add_dependencies(${name} ${arg_PROGRAM})
    endif()
    # Qt's libraries ask for other options of the compiler: with them, headers of their own.
    if(arg_LIBRARIES MATCHES "Qt6::")
        target_precompile_headers(${name} PRIVATE <gtest/gtest.h> <gmock/gmock.h>)
    else()
        tiltpole_test_headers()
        target_precompile_headers(${name} REUSE_FROM tiltpole_test_headers)
    endif()
    # Random properties begin from a fixed seed: a run that failed can be repeated.
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
        PROPERTIES TIMEOUT 600 ENVIRONMENT "RC_PARAMS=seed=20261121" RUN_SERIAL ${arg_SERIAL})
    tiltpole_second_seed(${name} ${arg_SOURCES})
endfunction()

# GoogleTest's headers, compiled once for the test programs.
function(tiltpole_test_headers)
    if(TARGET tiltpole_test_headers)
        return()
    endif()
    set(source ${PROJECT_BINARY_DIR}/tests/headers.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "")
    add_library(tiltpole_test_headers OBJECT ${source})
    tiltpole_target_defaults(tiltpole_test_headers)
    target_link_libraries(tiltpole_test_headers PRIVATE tiltpole::core GTest::gmock_main)
    target_precompile_headers(tiltpole_test_headers PRIVATE <gtest/gtest.h> <gmock/gmock.h>)
endfunction()

# The random properties among the tests of a program run once more, each time with another seed.
function(tiltpole_second_seed name)
    set(filter)
    foreach(source ${ARGN})
        cmake_path(ABSOLUTE_PATH source NORMALIZE)
        file(READ ${source} text)
        set(macro RC_GTEST_PROP)
        if(text MATCHES "rc::check\\(|SeedOfRun\\(")
            set(macro "(RC_GTEST_PROP|TEST)")
        endif()
        string(REGEX MATCHALL "${macro}\\([A-Za-z0-9_]+,[ \n]*[A-Za-z0-9_]+" tests "${text}")
        if(tests)
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
        endif()
        foreach(test ${tests})
            string(REGEX REPLACE "^[A-Z_]+\\(([A-Za-z0-9_]+),[ \n]*" "\\1." test "${test}")
            list(APPEND filter ${test})
        endforeach()
    endforeach()
    if(filter)
        list(JOIN filter ":" filter)
        add_test(NAME SecondSeed.${name}
            COMMAND ${CMAKE_COMMAND} -D program=$<TARGET_FILE:${name}> -D filter=${filter}
                -P ${PROJECT_SOURCE_DIR}/cmake/RunWithSecondSeed.cmake)
        set_tests_properties(SecondSeed.${name} PROPERTIES TIMEOUT 600)
    endif()
endfunction()

# tiltpole_benchmark(<name> SOURCES <files> LIBRARIES <targets>): one Google Benchmark program.
function(tiltpole_benchmark name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    tiltpole_target_defaults(${name})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} benchmark::benchmark_main)
    set_property(GLOBAL APPEND PROPERTY TILTPOLE_BENCHMARK_TARGETS ${name})
endfunction()
