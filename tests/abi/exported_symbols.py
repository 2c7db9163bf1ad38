#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares what shared libraries export with the lists beside this file, one a library.

A list names every strong symbol, demangled, and the virtual tables of the library's own classes.
Objects have their size in bytes, which for a virtual table grows with each virtual function. Other
weak symbols come from inline functions and templates in headers: every program has its own. Type
information goes with the virtual table; it is strong with one compiler and weak with another.
Return types and layouts of classes are not part of a symbol.

usage: exported_symbols.py [--write] [--nm NM] [--lists FOLDER] LIBRARY...
"""
import argparse
import pathlib
import re
import subprocess
import sys

MARKS_OF_THE_LINKER = {"__bss_start", "_edata", "_end"}
TYPE_INFORMATION = ("typeinfo for ", "typeinfo name for ")
# "name type value size", the last two hexadecimal; a demangled name contains blanks.
LINE = re.compile(r"^(?P<name>.+) (?P<type>[A-Za-z]) [0-9a-f]+(?: (?P<size>[0-9a-f]+))?$")
FUNCTIONS = "T"
OBJECTS = "BDR"
WEAK = "VWu"
TABLE = "vtable for "


def symbols_of(listing):
    """The lines of a list, from the output of nm -D -C -P --defined-only."""
    symbols = set()
    tables = {}
    for line in listing.splitlines():
        match = LINE.match(line.rstrip())
        if match is None:
            raise ValueError(f"nm printed '{line}'")
        name, kind = match["name"], match["type"]
        with_size = f"{name}, {int(match['size'] or '0', 16)} bytes"
        if name in MARKS_OF_THE_LINKER or name.startswith(TYPE_INFORMATION):
            continue
        if kind in FUNCTIONS:
            symbols.add(name)
        elif kind in OBJECTS:
            symbols.add(with_size)
        elif kind not in WEAK:
            raise ValueError(f"a symbol of the unexpected type {kind}: {line}")
        elif name.startswith(TABLE):
            tables[name.removeprefix(TABLE)] = with_size
    own = {s.split("(")[0].rpartition("::")[0] for s in symbols}
    return sorted(symbols | {t for scope, t in tables.items() if scope in own})


def differences(listed, exported):
    """What the library lacks (-) and what the list lacks (+)."""
    return ([f"- {s}" for s in listed if s not in exported]
            + [f"+ {s}" for s in exported if s not in listed])


def name_of(library):
    match = re.fullmatch(r"libtiltpole_([a-z]+)\.so", pathlib.Path(library).name)
    if match is None:
        sys.exit(f"{library} is no shared library of this project")
    return match[1]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--write", action="store_true", help="write the lists anew")
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--lists", type=pathlib.Path, default=pathlib.Path(__file__).parent)
    parser.add_argument("libraries", nargs="+")
    options = parser.parse_args()

    differ = False
    for library in options.libraries:
        path = options.lists / f"{name_of(library)}.txt"
        exported = symbols_of(subprocess.run(
            [options.nm, "-D", "-C", "-P", "--defined-only", library], check=True,
            capture_output=True, text=True).stdout)
        if options.write:
            path.write_text("".join(f"{s}\n" for s in exported), encoding="utf-8")
        listed = path.read_text(encoding="utf-8").splitlines() if path.exists() else []
        changes = differences(listed, exported)
        for change in changes:
            print(change)
        print(f"{library}: {len(exported)} symbols, {len(changes)} differ from {path.name}")
        differ = differ or bool(changes) or not exported
    if differ:
        print("A host built with the listed symbols may not run with these libraries. Where that is"
              " meant:\n./dev abi --renew")
    return 1 if differ else 0


if __name__ == "__main__":
    sys.exit(main())
