# SPDX-License-Identifier: MIT
# Consumers of the package of other kinds than examples/host, part of CheckPackage.cmake: by
# pkg-config, with the sources as part of their build, and those that cannot get what they ask for.

set(consumer ${source_dir}/tests/package/consumer)
set(consumer_dir ${work_dir}/consumer)
set(said_by_core "tiltpole 0.1.0: 503.0 804.0\n")
set(said_by_all "${said_by_core}parameters not read, dip 83.21\n")

# A program of the consumer says what it should.
function(expect_said program expected)
    run(${program})
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "${program} printed\n${output}instead of\n${expected}")
    endif()
endfunction()

# By pkg-config with g++ and, where it is installed, with clang++; the tree has been moved.
function(check_pkg_config)
    find_program(pkg_config NAMES pkg-config pkgconf REQUIRED)
    find_program(clang NAMES clang++)
    set(moved ${work_dir}/moved)
    file(REMOVE_RECURSE ${moved} ${consumer_dir})
    file(MAKE_DIRECTORY ${consumer_dir})
    file(RENAME ${prefix} ${moved})
    set(ENV{PKG_CONFIG_PATH} ${moved}/lib/pkgconfig)
    set(static)
    if(kind STREQUAL "static")
        set(static --static)
    endif()
    run(${pkg_config} --validate tiltpole-core tiltpole-quality tiltpole-field)
    run(${pkg_config} --modversion tiltpole-core)
    if(NOT output STREQUAL "0.1.0\n")
        message(FATAL_ERROR "tiltpole-core is of version ${output}")
    endif()
    run(${pkg_config} ${static} --cflags --libs tiltpole-quality tiltpole-field)
    separate_arguments(flags UNIX_COMMAND "${output}")
    foreach(cxx ${compiler} ${clang})
        run(${cxx} -std=c++20 -Wall -Wextra -Werror -DFULL ${consumer}/main.cpp
            -o ${consumer_dir}/consumer ${flags} -Wl,-rpath,${moved}/lib)
        expect_said(${consumer_dir}/consumer "${said_by_all}")
    endforeach()
    file(RENAME ${moved} ${prefix})
endfunction()

# With the sources in its own build, without Eigen and GeographicLib, and nothing of ours installed.
# Nothing is optimized: what matters is that it builds.
function(check_sources way)
    set(dir ${work_dir}/${way}) # as deep as the build of the package: the compiler cache hits
    file(REMOVE_RECURSE ${dir} ${dir}-prefix)
    run(${CMAKE_COMMAND} -S ${consumer} -B ${dir} -G ${generator} ${unoptimized}
        -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_CXX_COMPILER_LAUNCHER=${launcher}
        -D WAY=${way} -D TILTPOLE_SOURCES=${source_dir} -D BUILD_SHARED_LIBS=${shared}
        -D CMAKE_DISABLE_FIND_PACKAGE_Eigen3=ON -D CMAKE_DISABLE_FIND_PACKAGE_GeographicLib=ON)
    run(${CMAKE_COMMAND} --build ${dir} --parallel 2)
    expect_said(${dir}/consumer "${said_by_core}")
    run(${CMAKE_COMMAND} --install ${dir} --prefix ${dir}-prefix)
    file(GLOB_RECURSE installed RELATIVE ${dir}-prefix ${dir}-prefix/*)
    if(NOT installed STREQUAL "bin/consumer")
        message(FATAL_ERROR "a host that only builds with the library installed: ${installed}")
    endif()
endfunction()

# Who asks for a component that there is not reads which one and why.
function(expect_missing components reason)
    set(dir ${work_dir}/missing)
    file(REMOVE_RECURSE ${dir})
    file(WRITE ${dir}/CMakeLists.txt "cmake_minimum_required(VERSION 3.25)
project(missing LANGUAGES NONE)
find_package(tiltpole CONFIG REQUIRED COMPONENTS ${components})
")
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${dir} -B ${dir}/build -G ${generator}
        -D CMAKE_PREFIX_PATH=${prefix} ${ARGN}
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE text)
    string(REGEX REPLACE "[ \n]+" " " text "${text}")
    string(FIND "${text}" "${reason}" at)
    if(result EQUAL 0 OR at EQUAL -1)
        message(FATAL_ERROR "of ${components} was said (${result}): ${text}\ninstead of: ${reason}")
    endif()
endfunction()

function(check_unknown_components)
    expect_missing("compass"
        "component compass: there is no such component, only core, quality, field, grid, job, controls")
    expect_missing("core field"
        "component field: its static library needs GeographicLib, which was not found"
        -D CMAKE_DISABLE_FIND_PACKAGE_GeographicLib=ON)
endfunction()

# A compiler for an older language is told so, whatever library's header it meets first.
function(check_language)
    foreach(header framework/core/core.h positioning/InclineSensor_Position.h matrix/SZMatrix.h
            calibration/InclineSensor_Filter_XY.h geometry/MagneticConvert.h
            quality/TipEstimate.h field/Epoch.h field/job/JobRecords.h field/JobStore.h)
        if(NOT EXISTS ${include_dir}/${header})
            continue()
        endif()
        file(WRITE ${work_dir}/language.cpp "#include \"${header}\"\n")
        execute_process(COMMAND ${compiler} -std=c++17 -E -I ${include_dir} ${work_dir}/language.cpp
            RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE text)
        if(result EQUAL 0 OR NOT text MATCHES "tiltpole needs C\\+\\+20")
            message(FATAL_ERROR "${header} does not refuse C++17: ${text}")
        endif()
    endforeach()
endfunction()

# The component `runtime` is the libraries as the loader asks for them and the license, and nothing
# below /usr says where the libraries are.
function(check_runtime)
    find_program(readelf NAMES readelf REQUIRED)
    set(stage ${work_dir}/stage)
    file(REMOVE_RECURSE ${stage})
    run(${CMAKE_COMMAND} -S ${source_dir} -B ${work_dir}/usr -G ${generator} ${unoptimized}
        -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_CXX_COMPILER_LAUNCHER=${launcher}
        -D CMAKE_INSTALL_PREFIX=/usr -D CMAKE_INSTALL_LIBDIR=lib -D BUILD_SHARED_LIBS=ON
        -D TILTPOLE_QUALITY=OFF -D TILTPOLE_FIELD=OFF -D TILTPOLE_CONTROLS=OFF)
    run(${CMAKE_COMMAND} --build ${work_dir}/usr --parallel 2)
    set(ENV{DESTDIR} ${stage})
    run(${CMAKE_COMMAND} --install ${work_dir}/usr --component runtime)
    file(GLOB_RECURSE installed RELATIVE ${stage} ${stage}/*)
    list(SORT installed)
    set(expected usr/lib/libtiltpole_core.so.0.1 usr/lib/libtiltpole_core.so.0.1.0
        usr/share/doc/tiltpole/LICENSE)
    if(NOT installed STREQUAL expected)
        message(FATAL_ERROR "the component runtime is ${installed}")
    endif()
    run(${readelf} -d ${stage}/usr/lib/libtiltpole_core.so.0.1)
    if(output MATCHES "RPATH|RUNPATH" OR NOT output MATCHES "soname: \\[libtiltpole_core.so.0.1\\]")
        message(FATAL_ERROR "the library below /usr has a path of its own or another name: ${output}")
    endif()
    run(${readelf} -d ${prefix}/lib/libtiltpole_quality.so)
    if(NOT output MATCHES "\\[\\$ORIGIN\\]") # elsewhere it does
        message(FATAL_ERROR "the library outside /usr does not find the others: ${output}")
    endif()
    run(${CMAKE_COMMAND} --install ${work_dir}/usr)
    unset(ENV{DESTDIR})
    set(prefix ${stage}/usr)
    expect_missing("core controls"
        "component controls: this package was built without it (TILTPOLE_CONTROLS=OFF)")
endfunction()
