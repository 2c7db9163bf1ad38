# SPDX-License-Identifier: MIT
# Builds and installs the libraries (static or shared), builds and runs examples/host against the
# result, and looks at what was installed. Run with -D for each variable that CMakeLists.txt sets.
# Where `built` names a tree, that is installed instead; so is the one of TILTPOLE_SHARED_TREE, an
# environment variable, for the shared libraries.
cmake_minimum_required(VERSION 3.25)

set(build_dir ${work_dir}/build)
set(prefix ${work_dir}/prefix)
set(host_dir ${work_dir}/host)
set(names_dir ${work_dir}/names)
set(include_dir ${prefix}/include/tiltpole)

# Runs a command; its failure is the failure of the test. The output is in `output` afterwards.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed (${result}): ${command}\n${text}")
    endif()
    set(output "${text}" PARENT_SCOPE)
endfunction()

# The shared library without optimization, which would inline a name that is not exported and so
# hide that it is missed.
set(unoptimized -D CMAKE_BUILD_TYPE=None "-DCMAKE_CXX_FLAGS=-O0 -Werror"
    -D CMAKE_DISABLE_PRECOMPILE_HEADERS=ON)
set(optimized -D CMAKE_BUILD_TYPE=Release)
set(shared OFF)
if(kind STREQUAL "shared")
    set(optimized ${unoptimized})
    set(shared ON)
endif()

include(${CMAKE_CURRENT_LIST_DIR}/CheckConsumers.cmake)

if(kind STREQUAL "shared")
    set(built "$ENV{TILTPOLE_SHARED_TREE}")
endif()

function(install_package)
    file(REMOVE_RECURSE ${prefix})
    if(NOT "${built}" STREQUAL "")
        run(${CMAKE_COMMAND} --install ${built} --prefix ${prefix})
        return()
    endif()
    run(${CMAKE_COMMAND} -S ${source_dir} -B ${build_dir} -G ${generator}
        ${optimized} -D CMAKE_CXX_COMPILER=${compiler}
        -D CMAKE_CXX_COMPILER_LAUNCHER=${launcher} -D CMAKE_INSTALL_PREFIX=${prefix}
        -D BUILD_SHARED_LIBS=${shared} -D TILTPOLE_CONTROLS=OFF -D TILTPOLE_APPS=OFF
        -D TILTPOLE_TESTS=OFF -D TILTPOLE_BENCHMARKS=OFF -D CMAKE_INSTALL_LIBDIR=lib)
    run(${CMAKE_COMMAND} --build ${build_dir} --parallel 2)
    run(${CMAKE_COMMAND} --install ${build_dir})
endfunction()

# The parameter file that leaves readings as they are, but for the values of MagneticA.b and .e.
function(write_parameters file b e)
    set(text)
    foreach(magnetometer A B)
        foreach(key a b c d e x0 y0 z0)
            set(value 0.0)
            if(key MATCHES "^[be]$")
                set(value 1.0)
                if(magnetometer STREQUAL "A")
                    set(value ${${key}})
                endif()
            endif()
            string(APPEND text "[Magnetic${magnetometer}.${key}]${value}\r\n")
        endforeach()
    endforeach()
    foreach(key CoorTrans.dX CoorTrans.dY CoorTrans.dZ MagneticBiasAngle_A MagneticBiasAngle_B)
        string(APPEND text "[${key}]0.0\r\n")
    endforeach()
    file(WRITE ${file} "${text}")
endfunction()

# The host in a folder whose pole.cfg holds these values.
function(expect_of_host b e expected_result expected)
    write_parameters(${host_dir}/pole.cfg "${b}" "${e}")
    execute_process(COMMAND ${host_dir}/host WORKING_DIRECTORY ${host_dir}
        RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
    if(NOT result EQUAL expected_result OR NOT text STREQUAL expected)
        message(FATAL_ERROR "the host printed (${result})\n${text}instead of\n${expected}")
    endif()
endfunction()

# A host finds the package without knowing of Eigen, and gets the tip that geometry says: 2 m·sin 10°
# towards heading - 90°, 2 m·cos 10° down, with the heading atan2(400·cos 10°, 300). It refuses to
# measure with a damaged parameter file.
function(check_host)
    file(REMOVE_RECURSE ${host_dir})
    run(${CMAKE_COMMAND} -S ${source_dir}/examples/host -B ${host_dir} -G ${generator}
        -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_PREFIX_PATH=${prefix}
        -D CMAKE_DISABLE_FIND_PACKAGE_Eigen3=ON)
    run(${CMAKE_COMMAND} --build ${host_dir})
    expect_of_host(1.0 1.0 0 "tip      N 4500000.2763  E 499999.7896  h 98.0304 m
heading  52.708 degrees, interference 0
")
    expect_of_host(nan garbage 1 "pole.cfg: line 2: MagneticA.b is 'nan', not a number
pole.cfg: line 5: MagneticA.e is 'garbage', not a number
")
endfunction()

# A host with names of its own that the library's internals might have had gets its own, and right
# products from the library.
function(check_names_host)
    file(REMOVE_RECURSE ${names_dir})
    run(${CMAKE_COMMAND} -S ${source_dir}/tests/package/host -B ${names_dir} -G ${generator}
        -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_PREFIX_PATH=${prefix}
        -D CMAKE_CXX_COMPILER_LAUNCHER=${launcher})
    run(${CMAKE_COMMAND} --build ${names_dir})
    run(${names_dir}/names_host)
endfunction()

# The license comes with the package.
function(check_license)
    file(SHA256 ${source_dir}/LICENSE ours)
    file(SHA256 ${prefix}/share/doc/tiltpole/LICENSE installed)
    if(NOT ours STREQUAL installed)
        message(FATAL_ERROR "the installed LICENSE is not that of the project")
    endif()
endfunction()

# What is installed names no library a consumer would have to have.
function(check_needs_nothing)
    file(GLOB_RECURSE texts ${prefix}/include/*.h ${prefix}/lib/cmake/*.cmake)
    list(LENGTH texts count)
    if(count LESS 20)
        message(FATAL_ERROR "only ${count} headers and package files were installed")
    endif()
    foreach(text ${texts})
        file(STRINGS ${text} hits REGEX "[Ee]igen3?[/:]|find_dependency\\(Eigen")
        if(hits)
            message(FATAL_ERROR "${text} needs Eigen: ${hits}")
        endif()
    endforeach()
endfunction()

# The installed headers need nothing that is not installed; ./dev lint compiles each alone.
function(check_headers)
    file(GLOB_RECURSE headers RELATIVE ${include_dir} ${include_dir}/*.h)
    list(FILTER headers EXCLUDE REGEX "^(controls|framework/gui)/") # these need Qt, or windows.h
    set(text)
    foreach(header ${headers})
        string(APPEND text "#include \"${header}\"\n")
    endforeach()
    set(unit ${work_dir}/headers.cpp)
    file(WRITE ${unit} "${text}")
    run(${compiler} -std=c++20 -fsyntax-only -Wall -Wextra -Wconversion -Wshadow -Werror
        -DTILTPOLE_STATIC -I ${include_dir} ${unit})
endfunction()

# The names that carry TILTPOLE_API in the installed headers, as a regular expression.
function(exported_names)
    file(GLOB_RECURSE headers ${include_dir}/*.h)
    set(names)
    foreach(header ${headers})
        file(READ ${header} text)
        string(REGEX MATCHALL "(class|struct) TILTPOLE_API [A-Za-z_0-9]+" types "${text}")
        string(REGEX MATCHALL "TILTPOLE_API [^;{]*\\(" functions "${text}")
        foreach(declaration ${types} ${functions})
            string(REGEX MATCH "([A-Za-z_0-9]+)[ (]*$" ignored "${declaration}")
            list(APPEND names ${CMAKE_MATCH_1})
        endforeach()
    endforeach()
    list(REMOVE_DUPLICATES names)
    list(JOIN names "|" pattern)
    set(pattern "${pattern}" PARENT_SCOPE)
endfunction()

# A shared library shows the exported classes and functions and nothing else, and those that are
# listed in tests/abi/.
function(check_symbols)
    exported_names()
    file(GLOB libraries ${prefix}/lib/libtiltpole_*.so)
    list(LENGTH libraries count)
    if(count LESS 3) # core, quality, field, and those that need more
        message(FATAL_ERROR "expected at least three shared libraries, found: ${libraries}")
    endif()
    foreach(library ${libraries})
        run(${nm} -DC --defined-only --format=posix ${library})
        string(REPLACE ";" "," output "${output}")
        string(REPLACE "\n" ";" symbols "${output}")
        set(shown 0)
        foreach(symbol ${symbols})
            if(symbol MATCHES "^(__bss_start|_edata|_end) ") # marks of the linker
                continue()
            endif()
            # Instances of member templates are shown with what they return in front.
            if(NOT symbol MATCHES "^((vtable|typeinfo|typeinfo name) for |[a-z]+ )?([a-z_]+::)*(${pattern})(::| |\\(|\\[)")
                message(SEND_ERROR "${library} shows ${symbol}")
            endif()
            math(EXPR shown "${shown} + 1")
        endforeach()
        message(STATUS "${library}: ${shown} symbols, all of exported names")
    endforeach()
    run(${python} ${source_dir}/tests/abi/exported_symbols.py --nm ${nm} ${libraries})
endfunction()

install_package()
check_host()
check_names_host()
check_license()
check_needs_nothing()
check_pkg_config()
if(kind STREQUAL "shared")
    check_symbols()
    check_runtime()
    check_sources(FetchContent)
else()
    check_unknown_components()
    check_sources(add_subdirectory)
    check_language()
    check_headers() # the same in both
endif()
