# SPDX-License-Identifier: MIT
# Builds examples/classes against the package in `prefix` and compares what each program prints with
# the text beside it. Part of CheckHosts.cmake; alone, after a program has changed:
#
#   cmake -D prefix=... -D source_dir=... -D work_dir=... -D update=ON -P CheckClasses.cmake
cmake_minimum_required(VERSION 3.25)

function(check_classes)
    set(sources ${source_dir}/examples/classes)
    set(dir ${work_dir}/classes)
    file(REMOVE_RECURSE ${dir})
    set(options)
    foreach(pair CMAKE_CXX_COMPILER=compiler CMAKE_CXX_COMPILER_LAUNCHER=launcher)
        string(REGEX MATCH "(.*)=(.*)" ignored ${pair})
        if(${CMAKE_MATCH_2})
            list(APPEND options -D ${CMAKE_MATCH_1}=${${CMAKE_MATCH_2}})
        endif()
    endforeach()
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${sources} -B ${dir} -G Ninja ${options}
        "-DCMAKE_CXX_FLAGS=${flags} -O0 -g0 -Wall -Wextra" -D CMAKE_PREFIX_PATH=${prefix}
        COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${dir} --parallel 2
        RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "the examples of classes do not build\n${text}")
    endif()

    set(ENV{QT_QPA_PLATFORM} offscreen)
    set(ENV{XDG_DATA_HOME} ${dir}/data)
    file(GLOB programs RELATIVE ${sources} ${sources}/*.cpp)
    list(LENGTH programs count)
    if(count LESS 14)
        message(FATAL_ERROR "only ${count} examples of classes were found")
    endif()
    foreach(program ${programs})
        string(REPLACE ".cpp" "" name ${program})
        if(update AND NOT EXISTS ${dir}/${name}) # a library that this package is without
            continue()
        endif()
        execute_process(COMMAND ${dir}/${name} ${source_dir}/examples WORKING_DIRECTORY ${dir}
            RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE error TIMEOUT 60)
        if(update)
            file(WRITE ${sources}/${name}.txt "${text}")
        endif()
        set(expected "")
        if(EXISTS ${sources}/${name}.txt)
            file(READ ${sources}/${name}.txt expected)
        endif()
        if(NOT result EQUAL 0 OR NOT text STREQUAL expected OR text STREQUAL "")
            message(SEND_ERROR
                "examples/classes/${name} (${result}) printed\n${text}${error}instead of\n${expected}")
        endif()
    endforeach()
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    check_classes()
endif()
