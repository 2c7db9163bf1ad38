#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads from ELF files which protections they were built with.

usage: hardening.py [--optimized] PROGRAM... [--libraries LIBRARY...]

Programs need all of them, and the checked copies where they were optimized; of a shared library only
what the linker does, of a static one the stack protector. Prints what is missing and ends with 1.
"""
import argparse
import re
import subprocess
import sys

STACK_CHECK = "__stack_chk_fail"
LINKED = ["read-only relocations", "immediate binding"]
CODE = ["stack protector", "assertions of the standard library"]


def readelf(*arguments):
    return subprocess.run(["readelf", "-W", *arguments], capture_output=True, text=True, check=True,
                          env={"LC_ALL": "C"}).stdout


def undefined(symbols):
    """Names that the dynamic or static symbol tables ask of others."""
    return {name.split("@")[0] for name in re.findall(r" UND\s+(\S+)", symbols)}


def protections(file):
    """The protections of one program or shared library, by name."""
    dynamic = readelf("-d", file)
    asked = undefined(readelf("--dyn-syms", file))
    found = set()
    if re.search(r"^\s*GNU_RELRO\s", readelf("-l", file), re.MULTILINE):
        found.add("read-only relocations")
    if re.search(r"\(BIND_NOW\)|\(FLAGS\).*\bBIND_NOW\b|\(FLAGS_1\).*\bNOW\b", dynamic):
        found.add("immediate binding")
    if re.search(r"Type:\s+DYN\b", readelf("-h", file)) and re.search(r"\(FLAGS_1\).*\bPIE\b", dynamic):
        found.add("position-independent program")
    if STACK_CHECK in asked:
        found.add("stack protector")
    if any(re.fullmatch(r"__\w+_chk", name) for name in asked):
        found.add("checked copies")
    if any("__glibcxx_assert_fail" in name for name in asked):
        found.add("assertions of the standard library")
    return found


def missing(file, optimized):
    needed = [*LINKED, "position-independent program", *CODE]
    if optimized:
        needed.append("checked copies")
    found = protections(file)
    return [name for name in needed if name not in found]


def missing_of_library(file):
    if file.endswith(".a"):
        return [] if STACK_CHECK in undefined(readelf("-s", file)) else ["stack protector"]
    found = protections(file)
    return [name for name in LINKED if name not in found]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs", nargs="+")
    parser.add_argument("--optimized", action="store_true", help="the compiler optimized the programs")
    parser.add_argument("--libraries", nargs="*", default=[])
    arguments = parser.parse_args()
    lines = [f"{file}: no {name}" for file in arguments.programs for name in missing(file, arguments.optimized)]
    lines += [f"{file}: no {name}" for file in arguments.libraries for name in missing_of_library(file)]
    for line in lines:
        print(line, file=sys.stderr)
    print(f"{len(arguments.programs)} programs and {len(arguments.libraries)} libraries read, {len(lines)} lacks")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
