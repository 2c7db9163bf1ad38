# SPDX-License-Identifier: MIT
# TILTPOLE_TOGETHER=N compiles up to N sources of a target as one: the headers that they share, which
# cost more than the sources themselves, are read once. For builds from nothing, such as those of CI.

set(TILTPOLE_TOGETHER 0 CACHE STRING "Sources of a target that are compiled as one, at most")
set(TILTPOLE_TOGETHER_BELOW . CACHE STRING "The folder to whose targets TILTPOLE_TOGETHER applies")

# Every target below a folder.
function(tiltpole_targets_below folder result)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    get_property(below DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(inner ${below})
        tiltpole_targets_below(${inner} more)
        list(APPEND targets ${more})
    endforeach()
    set(${result} ${targets} PARENT_SCOPE)
endfunction()

# Called when all targets have their sources.
function(tiltpole_compile_together)
    if(NOT TILTPOLE_TOGETHER GREATER 1)
        return()
    endif()
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    cmake_path(ABSOLUTE_PATH TILTPOLE_TOGETHER_BELOW BASE_DIRECTORY ${PROJECT_SOURCE_DIR} NORMALIZE
        OUTPUT_VARIABLE below)
    string(REGEX REPLACE "/$" "" below ${below})
    tiltpole_targets_below(${below} targets)
    set(lines)
    foreach(target ${targets})
        get_target_property(type ${target} TYPE)
        if(NOT type MATCHES "LIBRARY|EXECUTABLE" OR type STREQUAL "INTERFACE_LIBRARY")
            continue()
        endif()
        get_target_property(sources ${target} SOURCES)
        get_target_property(folder ${target} SOURCE_DIR)
        foreach(source ${sources})
            cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${folder} NORMALIZE)
            cmake_path(IS_PREFIX PROJECT_SOURCE_DIR "${source}" ours)
            cmake_path(IS_PREFIX PROJECT_BINARY_DIR "${source}" made)
            get_source_file_property(own ${source} TARGET_DIRECTORY ${target} SKIP_PRECOMPILE_HEADERS)
            if(source MATCHES "\\.cpp$" AND ours AND NOT made AND NOT own)
                list(APPEND lines "${target}\\;${source}")
            endif()
        endforeach()
    endforeach()
    list(JOIN lines "\n" lines)
    file(WRITE ${PROJECT_BINARY_DIR}/together.txt "${lines}")
    execute_process(COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/cmake/together.py
            ${TILTPOLE_TOGETHER}
        INPUT_FILE ${PROJECT_BINARY_DIR}/together.txt OUTPUT_VARIABLE companies
        COMMAND_ERROR_IS_FATAL ANY)
    set(grouped)
    string(REPLACE ";" "|" companies "${companies}")
    string(REPLACE "\n" ";" companies "${companies}")
    foreach(line ${companies})
        string(REPLACE "|" ";" line "${line}")
        list(GET line 0 target)
        list(GET line 1 source)
        list(GET line 2 company)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
        list(APPEND grouped ${target})
        set_source_files_properties(${source} TARGET_DIRECTORY ${target}
            PROPERTIES UNITY_GROUP together_${company})
    endforeach()
    # Of names in another source, and of what is in none, a compiler that reads them together warns.
    list(REMOVE_DUPLICATES grouped)
    foreach(target ${grouped})
        target_compile_options(${target} PRIVATE
            -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endforeach()
endfunction()
