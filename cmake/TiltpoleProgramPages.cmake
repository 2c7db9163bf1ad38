# SPDX-License-Identifier: MIT
# tiltpole_program_pages(<target> <component>): the manual pages of a program and its completion for
# bash, made from what its --help prints once it is built.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(tiltpole_program_pages target component)
    set(folder ${PROJECT_BINARY_DIR}/manual/${target})
    add_custom_command(OUTPUT ${folder}/${target}.bash
        COMMAND ${CMAKE_COMMAND} -E rm -rf ${folder}
        COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 # the tests look for leaks
            ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/packaging/manual.py
            $<TARGET_FILE:${target}> ${PROJECT_VERSION} ${folder}
        DEPENDS ${target} ${PROJECT_SOURCE_DIR}/packaging/manual.py
        VERBATIM)
    add_custom_target(${target}_pages ALL DEPENDS ${folder}/${target}.bash)
    install(DIRECTORY ${folder}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component}
        FILES_MATCHING PATTERN "*.1")
    install(FILES ${folder}/${target}.bash RENAME ${target} COMPONENT ${component}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endfunction()
