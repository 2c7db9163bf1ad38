# SPDX-License-Identifier: MIT
# Builds examples/classes against the package in `prefix` and compares what each program prints with
# the text beside it. Part of CheckHosts.cmake; alone, after a program has changed:
#
#   cmake -D prefix=... -D source_dir=... -D work_dir=... -D update=ON -P CheckClasses.cmake
#
# Examples of libraries that the package is without are skipped, unless `libraries` lists them.
cmake_minimum_required(VERSION 3.25)

# Where a library cannot be used, its examples are left out and the others are not. Static libraries
# need those that they were made with.
macro(check_left_out)
    file(GLOB static ${prefix}/*/libtiltpole_field.a)
    if(static)
        execute_process(COMMAND ${configure} -D CMAKE_DISABLE_FIND_PACKAGE_GeographicLib=ON
            COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
        file(STRINGS ${dir}/left_out.txt left_out)
        if(NOT "field occupation" IN_LIST left_out OR "quality joint_fit" IN_LIST left_out)
            message(SEND_ERROR "left out without GeographicLib: ${left_out}")
        endif()
        file(REMOVE_RECURSE ${dir})
    endif()
endmacro()

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
    set(configure ${CMAKE_COMMAND} -S ${sources} -B ${dir} -G Ninja ${options}
        "-DCMAKE_CXX_FLAGS=${flags} -O0 -g0 -Wall -Wextra" -D CMAKE_PREFIX_PATH=${prefix})
    check_left_out()
    execute_process(COMMAND ${configure} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${dir} --parallel 2
        RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "the examples of classes do not build\n${text}")
    endif()

    set(ENV{QT_QPA_PLATFORM} offscreen)
    set(ENV{XDG_DATA_HOME} ${dir}/data)
    file(GLOB programs RELATIVE ${sources} ${sources}/*.cpp)
    list(LENGTH programs count)
    if(count LESS 43)
        message(FATAL_ERROR "only ${count} examples of classes were found")
    endif()
    file(STRINGS ${dir}/left_out.txt left_out)
    foreach(line ${left_out})
        string(REGEX MATCH "(.*) (.*)" ignored ${line})
        if(${CMAKE_MATCH_1} IN_LIST libraries)
            message(SEND_ERROR "examples/classes/${CMAKE_MATCH_2} was left out")
        endif()
        list(REMOVE_ITEM programs ${CMAKE_MATCH_2}.cpp)
    endforeach()
    foreach(program ${programs})
        string(REPLACE ".cpp" "" name ${program})
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
