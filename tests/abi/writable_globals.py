#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the objects in writable memory of static libraries with the list writable_globals.txt.

A line of the list is a demangled name, in which * stands for any text, " = " and how the row of
docs/threads.md begins that says which threads may use it. An object that no line names and a row that is
not there are errors. What is constant once the dynamic linker is done counts as constant; guards of the
compiler belong to the objects they guard, and names that begin with two underscores to the compiler.

usage: writable_globals.py [--nm NM] [--list FILE] [--threads FILE] LIBRARY...
"""
import argparse
import fnmatch
import pathlib
import re
import subprocess
import sys

# Sections that a program may write to while it runs; in an archive not yet joined to one of each kind.
WRITABLE = re.compile(r"\.(l?data|l?bss|tdata|tbss)(?!\.rel\.ro)(\.|$)|\*COM\*$")
# References (DW.ref.) are those of exception tables, filled in by the dynamic linker.
NOT_OURS = ("__", "guard variable for ", "DW.ref.")


def writable_of(listing):
    """The names of writable objects, from the output of nm -C -f sysv."""
    names = set()
    for line in listing.splitlines():
        columns = [column.strip() for column in line.rsplit("|", 6)]
        if len(columns) == 7 and WRITABLE.match(columns[6]) and columns[3] not in ("SECTION", "FILE"):
            names.add(columns[0])
    return {name for name in names if not name.startswith(NOT_OURS)}


def parsed(text):
    """The list as a dictionary: pattern of names to row."""
    lines = [line for line in text.splitlines() if line and not line.startswith("#")]
    return dict(line.split(" = ") for line in lines)


def errors_of(writable, listed, page):
    rows = [line.removeprefix("| ") for line in page.splitlines() if line.startswith("| ")]
    return ([f"{name} is writable, but not in the list" for name in sorted(writable)
             if not any(fnmatch.fnmatchcase(name, pattern) for pattern in listed)]
            + [f"{pattern}: no row begins with '{row}'" for pattern, row in sorted(listed.items())
               if not any(r.startswith(row) for r in rows)])


def main():
    folder = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--list", type=pathlib.Path, default=folder / "writable_globals.txt")
    parser.add_argument("--threads", type=pathlib.Path, default=folder.parents[1] / "docs/threads.md")
    parser.add_argument("libraries", nargs="+")
    options = parser.parse_args()
    writable = set()
    for library in options.libraries:
        writable |= writable_of(subprocess.run([options.nm, "-C", "-f", "sysv", library], check=True,
                                               capture_output=True, text=True).stdout)
    errors = errors_of(writable, parsed(options.list.read_text(encoding="utf-8")),
                       options.threads.read_text(encoding="utf-8"))
    if not writable:
        errors.append("nothing writable was found: the kernels of the processor are chosen at run time")
    for error in errors:
        print(error)
    print(f"{len(options.libraries)} libraries: {len(writable)} writable objects, {len(errors)} errors")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
