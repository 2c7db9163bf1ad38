#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Sources that can be compiled as one: none declares a name that another or its headers declare.

usage: together.py AT_MOST   (on standard input a line a source: TARGET;FILE)

Prints a line for each source that has company: TARGET;FILE;NUMBER, the number that of its company.
"""
import collections
import functools
import pathlib
import re
import sys
import types

# Names that begin a declaration outside of functions and classes; members are qualified.
DECLARED = re.compile(r'^(?:struct|enum class|class|enum|union|#define) (\w+)'
                      r'|^using (\w+) ='
                      r'|^(?!namespace |using )(?:[\w\[\]<>,&*:]+ )+[&*]*(\w+)(?: ?[({=\[;]| *$)',
                      re.MULTILINE)
INCLUDED = re.compile(r'^#include "(.+)"', re.MULTILINE)
TYPES = re.compile(r'^(?:struct|enum class|class|enum) (?:TILTPOLE_API )?(\w+)\b(?!.*;)', re.MULTILINE)
# Kernels by the width of their vectors; names of another namespace by using-declarations; a type named
# like a function elsewhere; what declares functions of the C library.
ALONE = re.compile(r'_[248]\.cpp$|/field/job/(EpochSummary|OccupationRecord)\.cpp$'
                   r'|/tests/quality/(FieldFaults|SolverRun)_test\.cpp$|/FailingAllocations\.cpp$')


@functools.cache
def text_of(file):
    return file.read_text(encoding='utf-8')


@functools.cache
def names_in(file):
    """The names that a file declares outside of functions and classes, as its form shows them."""
    return frozenset(name for match in DECLARED.finditer(text_of(file)) for name in match.groups() if name)


def headers_of(source, root):
    """Our headers that a source includes, and those that they include."""
    headers, waiting = set(), [source]
    while waiting:
        file = waiting.pop()
        for name in INCLUDED.findall(text_of(file)):
            header = root / name if (root / name).is_file() else file.parent / name
            if header.is_file() and header not in headers:
                headers.add(header)
                waiting.append(header)
    return headers


def types_of(headers):
    """The types that headers declare, each with its header."""
    return {(name, header) for header in headers for name in TYPES.findall(text_of(header))}


def differ(some, others):
    """Whether a type of the one is another type for the other."""
    names = {name for name, _ in some} & {name for name, _ in others}
    return any({h for n, h in some if n == name} != {h for n, h in others if n == name} for name in names)


def companies_of(sources, root, at_most):
    """Lists of at most `at_most` sources that can be compiled as one."""
    companies = []
    for source in sources:
        names = names_in(source)
        headers = headers_of(source, root)
        types_seen = types_of(headers)
        of_headers = frozenset().union(*(names_in(header) for header in headers))
        own = names - of_headers  # the others are what its header promises
        for company in companies:
            if (len(company.sources) < at_most and not names & company.names
                    and not own & company.of_headers and not of_headers & company.own
                    and not differ(types_seen, company.types_seen)):
                break
        else:
            company = types.SimpleNamespace(sources=[], names=set(), own=set(), of_headers=set(),
                                            types_seen=set())
            companies.append(company)
        company.sources.append(source)
        company.names |= names
        company.own |= own
        company.of_headers |= of_headers
        company.types_seen |= types_seen
    return [company.sources for company in companies]


def main():
    at_most = int(sys.argv[1])
    root = pathlib.Path(__file__).resolve().parent.parent
    pairs = [line.split(';') for line in sys.stdin.read().splitlines()]
    # A test that compiles a source of a library again takes the place of that object alone.
    times = collections.Counter(source for _, source in pairs)
    targets = {}
    for target, source in pairs:
        if times[source] == 1 and not ALONE.search(source):
            targets.setdefault(target, []).append(pathlib.Path(source))
    for target, sources in targets.items():
        companies = [c for c in companies_of(sources, root, at_most) if len(c) > 1]
        for number, company in enumerate(companies, 1):
            for source in company:
                print(f'{target};{source};{number}')


if __name__ == '__main__':
    main()
