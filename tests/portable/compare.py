#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares what the programs of this folder printed on one processor with what it printed on another.

usage: compare.py EXPECTED FOUND --least LINES [--limit 1e-9]

Decisions and bytes have to be the same, numbers within the limit, relative to the larger of the
number and its stated size. Fewer than LINES: the programs were not run, or to no end. The last line has
the figures; ends with 1 where something differs.
"""
import argparse
import math
import sys


class Figures:
    def __init__(self):
        self.counts = {"d": 0, "n": 0, "b": 0}
        self.same_bits = 0
        self.largest = 0.0
        self.errors = []


def compare(expected, found, limit):
    """Both are lists of lines."""
    figures = Figures()
    if len(expected) != len(found):
        figures.errors.append(f"{len(expected)} lines expected, {len(found)} found")
    for number, (left, right) in enumerate(zip(expected, found), 1):
        ours, theirs = left.split(" "), right.split(" ")
        kind, name = ours[:2]
        figures.counts[kind] += 1
        if left == right:
            figures.same_bits += kind == "n"
            continue
        if kind != "n" or theirs[:2] != [kind, name] or theirs[3:] != ours[3:]:
            figures.errors.append(f"line {number}: expected '{left[:120]}', found '{right[:120]}'")
            continue
        here, there, size = (float.fromhex(text) for text in (ours[2], theirs[2], ours[3]))
        if not (math.isfinite(here) and math.isfinite(there)):
            figures.errors.append(f"line {number}: {name} is {here}, found {there}")
            continue
        scale = max(abs(here), size)
        difference = abs(here - there) / scale if scale else math.inf
        figures.largest = max(figures.largest, difference)
        if not difference <= limit:
            figures.errors.append(f"line {number}: {name} is {here!r}, found {there!r}, {difference:.1e} apart")
    return figures


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("expected")
    parser.add_argument("found")
    parser.add_argument("--least", type=int, required=True)
    parser.add_argument("--limit", type=float, default=1e-9)
    arguments = parser.parse_args()
    texts = []
    for path in (arguments.expected, arguments.found):
        with open(path, encoding="ascii") as file:
            texts.append(file.read().splitlines())
    figures = compare(*texts, arguments.limit)
    if len(texts[0]) < arguments.least:
        figures.errors.append(f"only {len(texts[0])} lines")
    for error in figures.errors[:20]:
        print(error, file=sys.stderr)
    counts = figures.counts
    print(f"{counts['d']} decisions, {counts['b']} texts and files, {counts['n']} numbers, "
          f"{figures.same_bits} of them in all bits, the others within {figures.largest:.1e}: "
          f"{len(figures.errors) or 'no'} difference{'s' if len(figures.errors) > 1 else ''}")
    return 1 if figures.errors else 0


if __name__ == "__main__":
    sys.exit(main())
