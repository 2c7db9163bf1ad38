#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails when a static library defines an external name that a host could define as well.

A host owns every name but those that the installed headers declare and those in the namespaces of
the project. Names below std, and what the compiler adds on its own, do not count; a library that is
compiled with another one's templates may hold instances of them (--allow).

usage: check_symbols.py --nm NM [--allow REGEX] --headers PATH... --libraries ARCHIVE...
"""
import argparse
import pathlib
import re
import subprocess
import sys

NAMESPACES = {"tiltpole", "framework", "quality", "field"}
# std and its abbreviations, the C++ runtime, type information of plain function types, operators new
# and delete.
STANDARD = re.compile(r"^_Z(T[VISTC]|GVZ?|GRZ?|Z)*(N[rVKRO]*)?(S[tabsiod]|9__gnu_cxx|10__cxxabiv1)"
                      r"|^_ZT[IS]P?F|^_Z(nw|na|dl|da)[mP]|^DW\.ref\.|^__")
# Special names and nesting in front of the first identifier of a mangled name.
SCOPE = re.compile(r"^_Z(?:T[VISTC]|T[hv]n?\d+_(?:n?\d+_)?|GVZ?|GRZ?|Z)*(?:N[rVKRO]*)?(\d+)")
OPERATOR = re.compile(r"^_Z[a-z]{2}(?!\d)")
DECLARED = re.compile(r"\b(?:class|struct|union|enum(?:\s+class)?)\s+(?:TILTPOLE_API\s+)?([A-Za-z_]\w*)")
FUNCTION = re.compile(r"TILTPOLE_API[^;{]*?([A-Za-z_]\w*)\s*\(")


def identifier(text, match_group, start):
    """The identifier whose length is `match_group` and whose letters begin at `start`."""
    return text[start:start + int(match_group)]


def declared_names(paths):
    names = set()
    for path in paths:
        headers = sorted(path.rglob("*.h")) if path.is_dir() else [path]
        for header in headers:
            text = re.sub(r"//[^\n]*", "", header.read_text(encoding="utf-8"))
            names.update(DECLARED.findall(text))
            names.update(FUNCTION.findall(text))
    return names - {"detail"}


def first_scope(symbol):
    match = SCOPE.match(symbol)
    return identifier(symbol, match.group(1), match.end()) if match else None


def is_known(symbol, names):
    if STANDARD.match(symbol):
        return not re.search(r"N\d*6detail", symbol)
    scope = first_scope(symbol)
    if scope is not None:
        return scope in names
    if OPERATOR.match(symbol):  # of our own types only
        return any(f"{len(name)}{name}" in symbol for name in names)
    return False


def external_symbols(nm, library):
    listing = subprocess.run([nm, "-g", "-P", "--defined-only", library], check=True,
                             capture_output=True, text=True).stdout
    fields = (line.split() for line in listing.splitlines())
    return sorted({f[0] for f in fields if len(f) >= 2 and len(f[1]) == 1})


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--allow", default="(?!)", help="scopes that may appear besides")
    parser.add_argument("--headers", nargs="+", type=pathlib.Path, required=True)
    parser.add_argument("--libraries", nargs="+", required=True)
    options = parser.parse_args()

    names = declared_names(options.headers) | NAMESPACES
    if len(names) < 30:
        sys.exit(f"only {len(names)} names are declared in the headers that were given")
    failed = False
    for library in options.libraries:
        symbols = external_symbols(options.nm, library)
        if len(symbols) < 5:  # the smallest library has 10, an archive that is not read none
            sys.exit(f"{library} shows only {len(symbols)} symbols")
        strange = [s for s in symbols if not is_known(s, names)
                   and not re.match(options.allow, first_scope(s) or s)]
        for symbol in strange:
            print(f"{library} defines {symbol}")
        failed = failed or bool(strange)
        print(f"{library}: {len(symbols)} external symbols, {len(strange)} a host could define")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
