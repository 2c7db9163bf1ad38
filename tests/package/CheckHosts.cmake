# SPDX-License-Identifier: MIT
# Installs this build and builds the examples against it, as projects of their own. The hosts draw
# one picture of the recorded motion without a screen, in which every control is looked for; the
# programs of examples/classes print what is kept beside them. Run with -D for each variable that CMakeLists.txt sets.
cmake_minimum_required(VERSION 3.25)

set(prefix ${work_dir}/prefix)
include(${CMAKE_CURRENT_LIST_DIR}/CheckClasses.cmake)
set(ENV{QT_QPA_PLATFORM} offscreen)
set(ENV{XDG_RUNTIME_DIR} ${work_dir})

# Runs a command; its failure is the failure of the test.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed (${result}): ${command}\n${text}")
    endif()
endfunction()

function(check_host name)
    set(dir ${work_dir}/${name})
    file(REMOVE_RECURSE ${dir})
    run(${CMAKE_COMMAND} -S ${source_dir}/examples/${name} -B ${dir} -G ${generator}
        -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_CXX_COMPILER_LAUNCHER=${launcher}
        "-DCMAKE_CXX_FLAGS=${flags} -Wall -Wextra" -D CMAKE_PREFIX_PATH=${prefix})
    run(${CMAKE_COMMAND} --build ${dir})
    run(${dir}/${name} ${prefix}/share/tiltpole/pole-replay.csv --screenshot ${dir}/picture.png)
    run(${python} ${source_dir}/tests/package/check_picture.py ${name} ${dir}/picture.png)
endfunction()

file(REMOVE_RECURSE ${prefix})
run(${CMAKE_COMMAND} --install ${build_dir} --prefix ${prefix})
run(${prefix}/bin/tiltpole-gallery --render ${work_dir}/pictures) # of the log installed with it
check_host(qt-host)
check_host(frame-host)
check_classes()
