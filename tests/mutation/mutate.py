#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes the library on purpose, one place at a time, and counts the changes that its tests notice.

Works on a copy of the sources below build/mutation; the working tree is never touched. A change that
does not compile is not counted, one that makes a test run out of time counts as noticed. Results are
kept for each seed and folder in out/mutation: a run that was interrupted goes on where it ended. With
the same sources, seed and folder the same changes are tried.
"""
import argparse
import concurrent.futures
import filecmp
import json
import os
import pathlib
import queue
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True  # leave nothing beside the sources
from mutants import mutants_of  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
RESULTS = ROOT / "out" / "mutation"
FOLDERS = ["survey", "vector", "positioning", "matrix", "calibration", "geometry", "quality",
           "simulation", "framework/core", "framework/gui", "controls"]
# Folders whose tests also hold a folder to its rules.
ALSO = {"survey": ["positioning"], "vector": ["matrix", "geometry", "calibration"]}


def parse_options():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--folder", choices=FOLDERS, default="positioning")
    parser.add_argument("--count", type=int, default=20, help="changes to judge (default 20)")
    parser.add_argument("--seed", type=int, default=1, help="chooses the changes (default 1)")
    parser.add_argument("--least", type=float, default=85.0,
                        help="percentage below which the exit code is 1 (default 85)")
    parser.add_argument("--jobs", type=int, default=1,
                        help="changes tried at a time, each in a copy of its own (default 1)")
    options = parser.parse_args()
    if options.count < 1 or options.jobs < 1:
        parser.error("--count and --jobs take numbers from 1")
    return options


def tracked(*patterns):
    listing = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard",
                              "--", *patterns], cwd=ROOT, check=True, capture_output=True, text=True)
    return [name for name in listing.stdout.splitlines() if (ROOT / name).is_file()]


def test_programs(folder):
    """The test programs that the folder's own tests make, and those named in ALSO."""
    programs = []
    for tested in [folder, *ALSO.get(folder, [])]:
        lists = ROOT / "tests" / tested / "CMakeLists.txt"
        if lists.is_file():
            programs += re.findall(r"tiltpole_test\((\w+)", lists.read_text(encoding="utf-8"))
    if not programs:
        sys.exit(f"no test program belongs to {folder}")
    return programs


class Scratch:
    """A copy of the sources with a build tree in it."""

    def __init__(self, number, programs, build_jobs):
        self.tree = WORK / f"tree-{number}"
        self.programs = programs
        self.build_jobs = build_jobs
        self.limit = None
        self.environment = {**os.environ, "RC_PARAMS": "seed=20261121",
                            "QT_QPA_PLATFORM": "offscreen", "CCACHE_BASEDIR": str(self.tree)}

    def refresh(self):
        names = tracked()
        for name in names:
            target = self.tree / name
            if target.is_file() and filecmp.cmp(ROOT / name, target, shallow=False):
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(ROOT / name, target)
            shutil.copymode(ROOT / name, target)
        if self.tree.is_dir():
            kept = set(names)
            for path in self.tree.rglob("*"):
                name = str(path.relative_to(self.tree))
                if path.is_file() and name not in kept and not name.startswith("build/"):
                    path.unlink()

    def configure(self):
        options = ["-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1 -D_GLIBCXX_ASSERTIONS"]
        if shutil.which("ccache"):
            options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        subprocess.run(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.tree / "build", *options,
                        "-Wno-dev"], check=True, stdout=subprocess.DEVNULL)

    def build(self):
        done = subprocess.run(["cmake", "--build", self.tree / "build", "-j", str(self.build_jobs),
                               "--target", *self.programs], env=self.environment,
                              capture_output=True, text=True)
        return done.returncode == 0, done.stdout

    def passes(self):
        """Whether all programs pass; the first failure, or a time-out, ends the run."""
        for program in self.programs:
            path = next(p for p in (self.tree / "build" / "tests").rglob(program) if p.is_file())
            with tempfile.TemporaryDirectory() as folder:
                try:
                    done = subprocess.run([path, "--gtest_fail_fast", "--gtest_brief=1"], cwd=folder,
                                          env=self.environment, timeout=self.limit,
                                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                except subprocess.TimeoutExpired:
                    return False
            if done.returncode != 0:
                return False
        return True

    def prepare(self):
        self.refresh()
        self.configure()
        built, output = self.build()
        if not built:
            sys.exit(f"the unchanged sources do not build:\n{output}")
        start = time.monotonic()
        if not self.passes():
            sys.exit("the tests fail without any change")
        self.limit = 10.0 + 10.0 * (time.monotonic() - start)

    def judge(self, mutant):
        path = self.tree / mutant["file"]
        original = path.read_text(encoding="utf-8")
        begin, end = mutant["span"]
        path.write_text(original[:begin] + mutant["new"] + original[end:], encoding="utf-8")
        try:
            if not self.build()[0]:
                return "does not compile"
            return "survived" if self.passes() else "killed"
        finally:
            path.write_text(original, encoding="utf-8")


def choose(folder, seed):
    """All changes of a folder in the order of the seed, the kinds of change in turn."""
    names = sorted(tracked(f"{folder}/*.cpp", f"{folder}/*.h"))
    kinds = {}
    for name in names:
        for mutant in mutants_of(name, (ROOT / name).read_text(encoding="utf-8")):
            kinds.setdefault(mutant["kind"], []).append(mutant)
    order = random.Random(seed)
    for kind in sorted(kinds):
        order.shuffle(kinds[kind])
    chosen = []
    while any(kinds.values()):
        for kind in sorted(kinds):
            if kinds[kind]:
                chosen.append(kinds[kind].pop())
    return chosen


def key_of(mutant):
    return f"{mutant['file']}:{mutant['line']}:{mutant['column']}: {mutant['old']} -> {mutant['new']}"


class Journal:
    """The outcome of every change that was tried, written after each."""

    def __init__(self, folder, seed):
        self.path = RESULTS / f"{folder.replace('/', '-')}-{seed}.json"
        self.outcomes = {}
        if self.path.is_file():
            self.outcomes = json.loads(self.path.read_text(encoding="utf-8"))["outcomes"]

    def add(self, mutant, outcome):
        self.outcomes[key_of(mutant)] = outcome
        print(f"{outcome:17s}{key_of(mutant)}", flush=True)

    def count(self, outcome):
        return sum(1 for kept in self.outcomes.values() if kept == outcome)

    def write(self):
        killed, survived = self.count("killed"), self.count("survived")
        summary = {
            "killed": killed,
            "survived": survived,
            "does not compile": self.count("does not compile"),
            "percent": round(100.0 * killed / max(1, killed + survived), 1),
            "survivors": sorted(k for k, v in self.outcomes.items() if v == "survived"),
            "outcomes": self.outcomes,
        }
        RESULTS.mkdir(parents=True, exist_ok=True)
        self.path.write_text(json.dumps(summary, indent=2) + "\n", encoding="utf-8")
        return summary


def run(options, journal):
    """Judges changes until `count` of them compiled."""
    candidates = choose(options.folder, options.seed)
    if not candidates:
        sys.exit(f"nothing can be changed in {options.folder}")
    present = {key_of(mutant) for mutant in candidates}
    journal.outcomes = {k: v for k, v in journal.outcomes.items() if k in present}
    waiting = [mutant for mutant in candidates if key_of(mutant) not in journal.outcomes]
    build_jobs = max(1, (os.cpu_count() or 1) // options.jobs)
    scratches = queue.SimpleQueue()
    for number in range(options.jobs):
        scratch = Scratch(number, test_programs(options.folder), build_jobs)
        scratch.prepare()
        scratches.put(scratch)

    def judge(mutant):
        scratch = scratches.get()
        try:
            return mutant, scratch.judge(mutant)
        finally:
            scratches.put(scratch)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        while waiting:
            missing = options.count - journal.count("killed") - journal.count("survived")
            if missing <= 0:
                break
            batch, waiting = waiting[:min(missing, options.jobs)], waiting[min(missing, options.jobs):]
            for mutant, outcome in pool.map(judge, batch):
                journal.add(mutant, outcome)
            journal.write()


def main():
    options = parse_options()
    journal = Journal(options.folder, options.seed)
    run(options, journal)
    summary = journal.write()
    for survivor in summary["survivors"]:
        print(f"survivor: {survivor}")
    judged = summary["killed"] + summary["survived"]
    print(f"{summary['killed']} of {judged} changes of {options.folder} noticed: "
          f"{summary['percent']} %; {journal.path.relative_to(ROOT)}")
    return 0 if judged and summary["percent"] >= options.least else 1


if __name__ == "__main__":
    sys.exit(main())
