#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the libraries and the programs of this folder for other processors and in other ways, runs them
# (under qemu-user where needed) and compares what they print with what they print here.
#
# usage: tests/portable/run.sh JOBS core|all NAME...
#
#   core     what the core computes (core_results)
#   all      and what quality and field compute (library_results)
#   NAME     aarch64 armhf i686 s390x clang unsigned-char debug
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
readonly jobs=$1 part=$2 out=out/portable
shift 2
mkdir -p "$out" build/portable
# The fewest lines of a program that ran to its end.
declare -rA least=([core_results]=30000 [library_results]=15000)
programs=(core_results)

# build NAME OPTION...: the options go to cmake.
build() {
    local name=$1 tree=build/portable/$1 log=$out/$1.log
    shift
    {
        cmake -S tests/portable -B "$tree" -G Ninja -Wno-dev -D CMAKE_CXX_COMPILER_LAUNCHER=ccache \
            -D "TILTPOLE_TOGETHER=${TILTPOLE_TOGETHER:-0}" "$@" \
            && cmake --build "$tree" -j "$jobs" --target "${programs[@]}"
    } >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        printf '%s: could not be built; all of its output: %s\n' "$name" "$log" >&2
        return 1
    }
}

# results NAME COMMAND...: what the programs print; COMMAND runs them.
results() {
    local name=$1 program
    shift
    for program in "${programs[@]}"; do
        (cd "build/portable/$name" && "$@" "./$program") >"$out/$name-$program.txt" || return 1
    done
}

# cross NAME TRIPLE QEMU: by Debian's cross compiler. Called by check.
# shellcheck disable=SC2317
cross() {
    build "$1" -D CMAKE_SYSTEM_NAME=Linux -D "CMAKE_SYSTEM_PROCESSOR=${2%%-*}" \
        -D "CMAKE_CXX_COMPILER=$2-g++" -D "CMAKE_CXX_FLAGS=-Werror" \
        && results "$1" "qemu-$3" -L "/usr/$2"
}

native() {
    build "$@" && results "$1" env
}

failed=0
# check NAME COMMAND...: what COMMAND makes is as here.
check() {
    local name=$1 start=$SECONDS program said
    shift
    if ! "$@"; then
        printf '%-14s FAILED\n' "$name"
        failed=1
        return
    fi
    for program in "${programs[@]}"; do
        if said=$(tests/portable/compare.py "$out/here-$program.txt" "$out/$name-$program.txt" \
            --least "${least[$program]}"); then
            printf '%-14s %-16s%s (%d s)\n' "$name" "$program" "$said" $((SECONDS - start))
        else
            printf '%-14s %-16sFAILED %s\n' "$name" "$program" "$said"
            failed=1
        fi
    done
}

# Compiling quality and field takes two minutes of a processor each time.
if [[ $part == all ]]; then programs=(core_results library_results); fi
native here -D CMAKE_CXX_COMPILER=g++ -D CMAKE_CXX_FLAGS=-Werror
for name in "$@"; do
    case $name in
        aarch64) check "$name" cross "$name" aarch64-linux-gnu aarch64 ;;
        armhf) check "$name" cross "$name" arm-linux-gnueabihf arm ;;
        i686) check "$name" cross "$name" i686-linux-gnu i386 ;;
        s390x) check "$name" cross "$name" s390x-linux-gnu s390x ;;
        clang) check "$name" native "$name" -D CMAKE_CXX_COMPILER=clang++ -D CMAKE_CXX_FLAGS=-Werror ;;
        unsigned-char)
            check "$name" native "$name" -D CMAKE_CXX_COMPILER=g++ \
                -D "CMAKE_CXX_FLAGS=-Werror -funsigned-char"
            ;;
        debug)
            # g++ 12 warns of the standard library's own strings in this build: no -Werror.
            check "$name" native "$name" -D CMAKE_CXX_COMPILER=g++ -D CMAKE_BUILD_TYPE=Debug \
                -D "CMAKE_CXX_FLAGS=-O1 -D_GLIBCXX_DEBUG -D_GLIBCXX_DEBUG_PEDANTIC"
            ;;
    esac
done
exit "$failed"
