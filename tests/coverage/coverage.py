#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Lines and branches that the tests run, by what the instrumented programs have counted.

usage: coverage.py BUILD COUNTS OUT [--lines PERCENT] [--branches PERCENT] [--programs NAME...]

BUILD is a build tree of the preset coverage, COUNTS the folder with the *.profraw files of its
programs. OUT gets pages, and missed.txt with each line and each side of a decision that no test
reached. The exit code is 1 where less than a limit is reached or an exclusion no longer holds.
"""
import argparse
import bisect
import collections
import dataclasses
import json
import os
import pathlib
import re
import subprocess
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXCLUSIONS = pathlib.Path(__file__).resolve().parent / "exclusions.toml"
NOT_MEASURED = ("tests", "benchmarks", "fuzz", "examples", "build", "out")
IN_TWO = ("apps", "framework", "field", "quality")  # shown by the folders in them
SIDES = (" is true", " is false")


@dataclasses.dataclass
class File:
    """What was counted in one source: runs of lines, and of both sides of its decisions."""
    lines: dict  # number -> runs
    decisions: dict  # (line, column, last line, last column) -> [runs true, runs false]


def runs_of_lines(segments):
    """Number -> runs of every line with code: the most of the regions that begin on it or reach it."""
    by_line = collections.defaultdict(list)
    for segment in segments:
        by_line[segment[0]].append(segment)
    runs, reaching = {}, None
    for line in range(segments[0][0], segments[-1][0] + 1) if segments else ():
        own = by_line.get(line, [])
        begun = [s for s in own if not s[5] and s[3] and s[4]]
        skipped = bool(own) and not own[0][3] and own[0][4]
        if not skipped and (begun or (reaching and reaching[3])):
            runs[line] = max([s[2] for s in begun] + ([reaching[2]] if reaching else []))
        if own:
            reaching = own[-1]
    return runs


def sides_of_decisions(branches, segments):
    """(line, column, last line, last column) -> runs of both sides, over all instantiations.

    A decision that the compiler takes counts on neither side where its region runs: it is none.
    """
    sides = {}
    for *place, true, false, _, _, _ in branches:
        both = sides.setdefault(tuple(place), [0, 0])
        both[0] += true
        both[1] += false
    starts = [(s[0], s[1]) for s in segments]

    def runs_at(place):
        index = bisect.bisect_right(starts, place[:2]) - 1
        return segments[index][2] if index >= 0 and segments[index][3] else 0

    return {place: both for place, both in sides.items() if any(both) or runs_at(place) == 0}


def files_of(export, root):
    """Relative path -> File of the sources that are measured, of what llvm-cov exports."""
    files = {}
    for entry in export["data"][0]["files"]:
        path = pathlib.Path(os.path.normpath(entry["filename"]))
        if not path.is_relative_to(root):
            continue
        name = str(path.relative_to(root))
        if name.split("/")[0] not in NOT_MEASURED:
            files[name] = File(runs_of_lines(entry["segments"]),
                               sides_of_decisions(entry["branches"], entry["segments"]))
    return files


def spelled(text, place):
    """The source text of a decision, in one line."""
    first, start, last, end = place
    lines = text[first - 1:last]
    lines[-1] = lines[-1][:end - 1]
    lines[0] = lines[0][start - 1:]
    return " ".join(" ".join(lines).split())


def places_of(code, text):
    """Numbers of the lines where the lines of `code` stand in `text`, indentation aside."""
    wanted = [line.strip() for line in code.strip().splitlines()]
    given = [line.strip() for line in text]
    return [start + 1 for start in range(len(given) - len(wanted) + 1)
            if given[start:start + len(wanted)] == wanted], len(wanted)


def is_of_switch(text, place):
    """Whether a decision is the side of a switch that no case takes.

    Its count is the difference between the switch and its cases, and of two processes that count at
    once one can lose a run: a remainder says nothing.
    """
    return text[place[0] - 1][:place[1] - 1].rstrip().endswith("switch (")


def excluded_by(exclusion, file, text):
    """Lines and (decision, side) that an exclusion takes out, and what is wrong with it."""
    lines, sides, wrong = set(), set(), []
    starts, count = places_of(exclusion["code"], text)
    if not starts:
        return lines, sides, ["its code is not in the file"]
    for start in starts:
        block = range(start, start + count)
        for never in exclusion["never"]:
            if never.endswith(SIDES):
                side = 0 if never.endswith(SIDES[0]) else 1
                condition = never.removesuffix(SIDES[side])
                found = [place for place in file.decisions
                         if place[0] in block and spelled(text, place) == condition]
                if not found:
                    wrong.append(f"no decision '{condition}' in line {start}")
                wrong += [f"line {place[0]}: a test reaches '{never}'" for place in found
                          if file.decisions[place][side] and not is_of_switch(text, place)]
                sides |= {(place, side) for place in found}
            else:
                found = [n for n in block if text[n - 1].strip() == never and n in file.lines]
                if not found:
                    wrong.append(f"no line '{never}' with code in line {start}")
                wrong += [f"line {n}: a test runs '{never}'" for n in found if file.lines[n]]
                lines |= set(found)
                sides |= {(p, s) for p in file.decisions if p[0] in found for s in (0, 1)}
    return lines, sides, wrong


@dataclasses.dataclass
class Count:
    """How many lines or branches there are, are excluded, and are reached."""
    all: int = 0
    excluded: int = 0
    reached: int = 0

    def add(self, other):
        self.all += other.all
        self.excluded += other.excluded
        self.reached += other.reached

    def percent(self):
        possible = self.all - self.excluded
        return 100.0 * self.reached / possible if possible else 100.0


def folder_of(name):
    parts = name.split("/")
    return "/".join(parts[:2]) if parts[0] in IN_TWO and len(parts) > 2 else parts[0]


def measure(files, exclusions, text_of):
    """Folder -> (lines, branches), what was missed, and the exclusions that do not hold."""
    lines_out, sides_out = collections.defaultdict(set), collections.defaultdict(set)
    wrong = []
    for exclusion in exclusions:
        name = exclusion["file"]
        if not exclusion.get("reason", "").strip():
            wrong.append(f"{name}: an exclusion without a reason")
        if name not in files:
            wrong.append(f"{name}: excluded, and no source that was measured")
            continue
        lines, sides, errors = excluded_by(exclusion, files[name], text_of(name))
        wrong += [f"{name}: {error}" for error in errors]
        lines_out[name] |= lines
        sides_out[name] |= sides
    folders, missed = {}, []
    for name, file in sorted(files.items()):
        text = text_of(name)
        lines, branches = folders.setdefault(folder_of(name), (Count(), Count()))
        lines.add(Count(len(file.lines), len(lines_out[name]),
                        sum(1 for n, runs in file.lines.items() if runs and n not in lines_out[name])))
        missed += [f"{name}:{n}: {text[n - 1].strip()}" for n, runs in file.lines.items()
                   if not runs and n not in lines_out[name]]
        for place, both in sorted(file.decisions.items()):
            for side in (0, 1):
                out = (place, side) in sides_out[name]
                branches.add(Count(1, int(out), int(bool(both[side]) and not out)))
                if not both[side] and not out:
                    missed.append(f"{name}:{place[0]}: {spelled(text, place)}{SIDES[side]}")
    return folders, missed, wrong


def table_of(folders):
    rows = ["".join(f"{head:>{width}}" for head, width in zip(
        ("", "lines", "excluded", "reached", "branches", "excluded", "reached"), (24, 8, 10, 11, 10, 10, 11)))]
    total = (Count(), Count())
    for name, counts in folders.items():
        for sum_, count in zip(total, counts):
            sum_.add(count)
    for name, counts in [*folders.items(), ("all", total)]:
        rows.append(f"{name:24}" + "".join(f"{c.all:{w}}{c.excluded:10}{c.percent():9.2f} %"
                                           for c, w in zip(counts, (8, 10))))
    return rows, total


def programs_of(build):
    """Programs and modules of a build tree that can count."""
    programs = []
    for path in sorted(build.rglob("*")):
        if "CMakeFiles" in path.parts or not path.is_file() or path.is_symlink():
            continue
        if path.suffix == ".so" or (os.access(path, os.X_OK) and not path.suffix):
            with path.open("rb") as file:
                if file.read(4) == b"\x7fELF" and b"__llvm_covmap" in file.read():
                    programs.append(path)
    return programs


# llvm-cov warns of inline functions that one of the programs does not use: others count them.
UNUSED = re.compile(r"^.*warning: \d+ functions have mismatched data.*\n?", re.MULTILINE)


def run(*command):
    done = subprocess.run([str(part) for part in command], check=False, capture_output=True)
    sys.stderr.write(UNUSED.sub("", done.stderr.decode()))
    done.check_returncode()
    return done.stdout


def tracked_sources(root):
    names = run("git", "-C", root, "ls-files", "*.cpp").decode().splitlines()
    return [name for name in names if name.split("/")[0] not in NOT_MEASURED]


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("counts", type=pathlib.Path)
    parser.add_argument("out", type=pathlib.Path)
    parser.add_argument("--lines", type=float, default=0.0, help="percentage that is the least")
    parser.add_argument("--branches", type=float, default=0.0, help="the same of branches")
    parser.add_argument("--programs", nargs="+", default=[], help="names of those to look at")
    options = parser.parse_args()

    options.out.mkdir(parents=True, exist_ok=True)
    merged = options.out / "merged.profdata"
    run("llvm-profdata-14", "merge", "-sparse", "-o", merged, *options.counts.glob("*.profraw"))
    programs = [p for p in programs_of(options.build) if not options.programs or p.name in options.programs]
    objects = [programs[0], *(part for program in programs[1:] for part in ("-object", program))]
    export = json.loads(run("llvm-cov-14", "export", "-skip-functions", "-skip-expansions",
                            f"-instr-profile={merged}", *objects))
    files = files_of(export, ROOT)
    with EXCLUSIONS.open("rb") as file:
        exclusions = tomllib.load(file).get("exclusion", [])
    run("llvm-cov-14", "show", "-format=html", f"-output-dir={options.out / 'pages'}",
        "-show-branches=count", "-ignore-filename-regex=^/usr/|/(tests|benchmarks|build)/",
        f"-instr-profile={merged}", *objects)
    folders, missed, wrong = measure(
        files, exclusions, lambda name: (ROOT / name).read_text(encoding="utf-8").splitlines())
    rows, (lines, branches) = table_of(folders)
    print("\n".join(rows))
    without = sorted(set(tracked_sources(ROOT)) - set(files))
    missed += [f"{name}: no function of its own in any program" for name in without]
    (options.out / "missed.txt").write_text("".join(f"{line}\n" for line in missed), encoding="utf-8")
    print(f"{len(programs)} programs; sources without a function of their own in them: {len(without)}")
    print(f"what no test reaches: {options.out / 'missed.txt'}")
    for name, count, least in (("lines", lines, options.lines), ("branches", branches, options.branches)):
        if count.percent() < least:
            wrong.append(f"{count.percent():.2f} % of the {name} are less than {least} %")
    for error in wrong:
        print(f"coverage: {error}", file=sys.stderr)
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
