#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the speed of the working tree with that of a commit, in one run.

Both are built the same way, and their benchmark programs run in turn, round by round, the first of
a round last in the next. For each benchmark that both have, the median over the rounds of the ratio
of processor times is printed; below 1 the working tree is faster. What a library beside ours takes
(--filter eigen) is the same code in both: its ratios show what the measurement cannot tell.
"""

import argparse
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
OURS = "/ours|Ours|^(Position|Calculate)/|^(Save|Read)$"


def build(source, folder, targets):
    """Builds the benchmark programs of a source tree; returns them by name."""
    folder.mkdir(parents=True, exist_ok=True)
    log = folder / "against.log"
    configure = ["cmake", "-S", source, "-B", folder, "-G", "Ninja", "-Wno-dev", "-DCMAKE_BUILD_TYPE=Release",
                 "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache", "-DTILTPOLE_BENCHMARKS=ON", "-DTILTPOLE_TESTS=OFF",
                 "-DTILTPOLE_APPS=OFF", "-DTILTPOLE_CONTROLS=OFF"]
    make = ["cmake", "--build", folder, "-j", str(len(os.sched_getaffinity(0))), "--target", *targets]
    with log.open("wb") as output:
        for command in (configure, make):
            if subprocess.run(command, stdout=output, stderr=subprocess.STDOUT).returncode != 0:
                sys.exit(f"against.py: {source} could not be built; the output is in {log}")
    return {name: next(path for path in folder.glob(f"benchmarks/*/{name}") if path.is_file()) for name in targets}


def unpacked(commit):
    """The sources of a commit below build/against/."""
    identity = subprocess.run(["git", "-C", ROOT, "rev-parse", "--verify", "--quiet", f"{commit}^{{commit}}"],
                              capture_output=True, text=True).stdout.strip()
    if not identity:
        sys.exit(f"against.py: '{commit}' is no commit of this repository")
    folder = ROOT / "build" / "against" / identity
    source = folder / "source"
    if not source.is_dir():
        folder.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryDirectory(dir=folder) as scratch:
            archive = subprocess.Popen(["git", "-C", ROOT, "archive", identity], stdout=subprocess.PIPE)
            subprocess.run(["tar", "-x", "-C", scratch], stdin=archive.stdout, check=True)
            if archive.wait() != 0:
                sys.exit(f"against.py: git could not unpack {commit}")
            os.rename(scratch, source)
            os.mkdir(scratch)
    return folder


def names_of(program, pattern):
    listed = subprocess.run([program, "--benchmark_list_tests"], capture_output=True, text=True, check=True).stdout
    return [name for name in listed.split() if re.search(pattern, name)]


def times_of(program, name, seconds):
    """Nanoseconds of a processor an iteration takes."""
    output = subprocess.run([program, f"--benchmark_filter=^{re.escape(name)}$", f"--benchmark_min_time={seconds}",
                             "--benchmark_format=json"], capture_output=True, text=True, check=True).stdout
    row = json.loads(output)["benchmarks"][0]
    return row["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("commit", help="what to compare with")
    parser.add_argument("programs", nargs="+", metavar="PROGRAM", help="benchmark programs, such as matrix_benchmarks")
    parser.add_argument("--filter", default=OURS, metavar="REGEX", help="benchmarks by name (those of this library)")
    parser.add_argument("--rounds", type=int, default=15, help="how often each is measured (15)")
    parser.add_argument("--seconds", type=float, default=0.05, help="the least time of one measurement (0.05)")
    parser.add_argument("--limit", type=float, default=1.03, help="medians above it are counted as slower (1.03)")
    arguments = parser.parse_args()

    before_folder = unpacked(arguments.commit)
    before = build(before_folder / "source", before_folder / "build", arguments.programs)
    now = build(ROOT, ROOT / "build" / "against" / "now", arguments.programs)

    ratios = {}
    for round_ in range(arguments.rounds):
        for program in arguments.programs:
            common = set(names_of(before[program], arguments.filter))
            for name in names_of(now[program], arguments.filter):
                if name not in common or "-native" in name:
                    continue
                sides = [(now, "now"), (before, "before")]
                took = {}
                for side, label in sides if round_ % 2 == 0 else reversed(sides):
                    took[label] = times_of(side[program], name, arguments.seconds)
                ratios.setdefault(name, []).append((took["now"] / took["before"], took["before"]))

    if not ratios:
        sys.exit("against.py: the two have no benchmark of that name in common")
    print(f"{'benchmark':46} {'before/ns':>12} {'median':>7} {'quartiles':>13}")
    medians = {}
    for name, values in ratios.items():
        quotients = sorted(ratio for ratio, _ in values)
        medians[name] = statistics.median(quotients)
        first, third = quotients[len(quotients) // 4], quotients[-1 - len(quotients) // 4]
        print(f"{name:46} {statistics.median(time for _, time in values):12.1f} {medians[name]:7.3f}"
              f" {first:6.3f} {third:6.3f}")
    slower = [name for name, median in medians.items() if median > arguments.limit]
    print(f"{len(medians)} benchmarks, geometric mean {statistics.geometric_mean(medians.values()):.3f}, "
          f"{len(slower)} above {arguments.limit}")
    return 1 if slower else 0


if __name__ == "__main__":
    sys.exit(main())
