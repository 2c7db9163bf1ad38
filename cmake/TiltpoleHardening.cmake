# SPDX-License-Identifier: MIT
# Programs end at a mistake in memory instead of going on with what somebody's file made of it.
# docs/packaging.md lists how; the test Package.ProgramsAreHardened reads it from the built programs.

option(TILTPOLE_HARDENED "Build programs with checks of memory, and with tables that stay read-only" ON)

# Sanitizers check the same, and more, where the C library would come first.
set(TILTPOLE_IS_HARDENED OFF)
if(TILTPOLE_HARDENED AND CMAKE_EXECUTABLE_FORMAT STREQUAL "ELF"
        AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set(TILTPOLE_IS_HARDENED ON)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
endif()

# tiltpole_harden_code(<target>): the C library checks copies where the compiler optimizes. This level
# replaces one that the compiler or the builder of a package sets.
function(tiltpole_harden_code target)
    if(TILTPOLE_IS_HARDENED)
        target_compile_options(${target} PRIVATE -fstack-protector-strong
            "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
        target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
        set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    endif()
endfunction()

# tiltpole_harden_link(<program or shared library>): the loader finds all functions at the start, and
# what it wrote is read-only from then on.
function(tiltpole_harden_link target)
    if(TILTPOLE_IS_HARDENED)
        target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now)
    endif()
endfunction()

# tiltpole_program_defaults(<target>): a program, or a library of programs that is not installed.
function(tiltpole_program_defaults target)
    tiltpole_target_defaults(${target})
    tiltpole_harden_code(${target})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        tiltpole_harden_link(${target})
    endif()
endfunction()
