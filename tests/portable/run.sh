#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the core and the program of Results.cpp for other processors and in other ways, runs it (under
# qemu-user where needed) and compares what it prints with what it prints here.
#
# usage: tests/portable/run.sh JOBS NAME...     names: aarch64 armhf i686 s390x clang unsigned-char debug
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
readonly jobs=$1 out=out/portable
shift
mkdir -p "$out" build/portable

# build NAME OPTION...: the options go to cmake.
build() {
    local name=$1 tree=build/portable/$1 log=$out/$1.log
    shift
    {
        cmake -S tests/portable -B "$tree" -G Ninja -Wno-dev -D CMAKE_CXX_COMPILER_LAUNCHER=ccache \
            -D "TILTPOLE_TOGETHER=${TILTPOLE_TOGETHER:-0}" "$@" \
            && cmake --build "$tree" -j "$jobs" --target results
    } >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        printf '%s: could not be built; all of its output: %s\n' "$name" "$log" >&2
        return 1
    }
}

# cross NAME TRIPLE QEMU: by Debian's cross compiler. Called by check.
# shellcheck disable=SC2317
cross() {
    build "$1" -D CMAKE_SYSTEM_NAME=Linux -D "CMAKE_SYSTEM_PROCESSOR=${2%%-*}" \
        -D "CMAKE_CXX_COMPILER=$2-g++" -D "CMAKE_CXX_FLAGS=-Werror"
    results "$1" "qemu-$3" -L "/usr/$2"
}

# results NAME COMMAND...: what the program prints; COMMAND runs it.
results() {
    local name=$1
    shift
    (cd "build/portable/$name" && "$@" ./results) >"$out/$name.txt"
}

failed=0
# check NAME COMMAND...: what COMMAND makes is as here.
check() {
    local name=$1 start=$SECONDS said
    shift
    if "$@" && said=$(tests/portable/compare.py "$out/here.txt" "$out/$name.txt"); then
        printf '%-14s %s (%d s)\n' "$name" "$said" $((SECONDS - start))
    else
        printf '%-14s FAILED %s\n' "$name" "${said:-}"
        failed=1
    fi
}

native() {
    build "$@"
    results "$1" env
}

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
            check "$name" native "$name" -D CMAKE_CXX_COMPILER=g++ -D CMAKE_BUILD_TYPE=Debug \
                -D "CMAKE_CXX_FLAGS=-Werror -O1 -D_GLIBCXX_DEBUG -D_GLIBCXX_DEBUG_PEDANTIC"
            ;;
    esac
done
exit "$failed"
