#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes the library on purpose, one place at a time, and counts the changes that its tests notice.

Works on copies of the sources below build/mutation; the working tree is never touched. The tests of
the folder run first and end at the first failure; a change that they miss goes on to the tests of the
folders that build on it. A change that does not compile is not counted, one that makes a test run out
of time counts as noticed and is listed apart. Results are kept for each seed and folder in
out/mutation: a run that was interrupted goes on where it ended. With the same sources, seed and
folder the same changes are tried. Everything runs at the lowest priority.
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
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True  # leave nothing beside the sources
from mutants import mutants_of  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
RESULTS = ROOT / "out" / "mutation"
FOLDERS = ["survey", "vector", "positioning", "matrix", "calibration", "geometry",
           "quality/calibration", "quality/tip", "quality/parameters", "quality/statistics",
           "field", "simulation", "apps/cli", "apps/live", "apps/tables", "apps/charts",
           "framework/core", "framework/gui", "controls"]
# Programs of folders without a list of tests of their own.
PROGRAMS = {"quality/calibration": ["quality_tests"], "quality/tip": ["quality_tip_tests"],
            "quality/parameters": ["quality_tests"],
            "quality/statistics": ["quality_tip_tests", "quality_tests"],
            "field": ["live_pole_tests", "field_tests", "job_tests"]}
# Folders whose tests also hold a folder to its rules.
ALSO = {
    "survey": ["positioning", "calibration"],
    "vector": ["matrix", "geometry", "calibration"],
    "matrix": ["calibration", "geometry"],
    "simulation": ["quality/calibration"],
    "apps/cli": ["simulation", "apps/live"],
    "apps/tables": ["apps/cli"],
    "apps/charts": ["apps/cli"],
    "framework/core": ["positioning"],
    "framework/gui": ["controls"],
}
WALL = 60.0  # seconds, besides 20 times the usual, after which a program that waits is ended
MEMORY = 6 << 30  # bytes that one test program may have
FILE_SIZE = 1 << 30  # bytes that it may write to a file


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
    parser.add_argument("--tree", type=int, default=0, metavar="N",
                        help="number of the first copy; runs at the same time need their own")
    parser.add_argument("--sources", action="store_true", help="change no headers")
    parser.add_argument("--again", action="store_true", help="also try again what survived before")
    options = parser.parse_args()
    if options.count < 1 or options.jobs < 1:
        parser.error("--count and --jobs take numbers from 1")
    return options


def tracked(*patterns):
    listing = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard",
                              "--", *patterns], cwd=ROOT, check=True, capture_output=True, text=True)
    return [name for name in listing.stdout.splitlines() if (ROOT / name).is_file()]


def programs_of(folder):
    """The test programs that the folder's own tests make."""
    if folder in PROGRAMS:
        return PROGRAMS[folder]
    lists = ROOT / "tests" / folder / "CMakeLists.txt"
    programs = re.findall(r"tiltpole_test\((\w+)", lists.read_text(encoding="utf-8"))
    if not programs:
        sys.exit(f"no test program belongs to {folder}")
    return programs


def test_stages(folder):
    """Lists of test programs, each built and run only when the one before noticed nothing."""
    return [programs_of(folder), *(programs_of(also) for also in ALSO.get(folder, []))]


def limit(seconds):
    """Limits of a test program; its processor time does not depend on what else the machine does."""
    if seconds is not None:
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 5))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def processor_time():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


class Scratch:
    """A copy of the sources with a build tree in it."""

    def __init__(self, number, stages, build_jobs):
        self.tree = WORK / f"tree-{number}"
        self.stages = stages
        self.build_jobs = build_jobs
        self.limits = {}  # of each program that was built and run without a change
        self.environment = {**os.environ, "RC_PARAMS": "seed=20261121",
                            "QT_QPA_PLATFORM": "offscreen", "CCACHE_BASEDIR": str(self.tree),
                            "CCACHE_DIR": str(WORK / "ccache"), "CCACHE_NOHASHDIR": "true",
                            "CCACHE_SLOPPINESS": "pch_defines,time_macros"}

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
        if shutil.which("ld.lld"):
            options.append("-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld")
        subprocess.run(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.tree / "build", *options,
                        "-Wno-dev"], check=True, stdout=subprocess.DEVNULL, env=self.environment)

    def build(self, programs):
        done = subprocess.run(["cmake", "--build", self.tree / "build", "-j", str(self.build_jobs),
                               "--target", *programs], env=self.environment,
                              capture_output=True, text=True)
        return done.returncode == 0, done.stdout

    def run(self, program, path=None, only="*"):
        """How the tests `only` of a program end: None if they pass. The first failure ends them."""
        if path is None:
            path = next(p for p in (self.tree / "build" / "tests").rglob(program) if p.is_file())
        with tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o755)  # some tests go on as an ordinary user
            seconds, wall = self.limits.get(program, (None, None))
            running = subprocess.Popen([path, "--gtest_fail_fast", "--gtest_brief=1",
                                        f"--gtest_filter={only}"], cwd=folder,
                                       env={**self.environment, "TMPDIR": folder},
                                       start_new_session=True, preexec_fn=lambda: limit(seconds),
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                ended = running.wait(wall)
            except subprocess.TimeoutExpired:
                os.killpg(running.pid, signal.SIGKILL)
                running.wait()
                return "timed out"
        if ended == 0:
            return None
        return "timed out" if ended in (-signal.SIGXCPU, -signal.SIGKILL) else "killed"

    def build_and_run(self, program, changed):
        """The tests named like the changed source begin."""
        if not self.build([program])[0]:
            return "does not compile"
        return self.run(program, only=f"*{pathlib.Path(changed).stem}*") or self.run(program)

    def link_command(self, program):
        """The words that link a program, without what the shell needs around them."""
        commands = subprocess.run(["ninja", "-C", self.tree / "build", "-t", "commands", program],
                                  capture_output=True, text=True, check=True).stdout.splitlines()
        return [word for word in shlex.split(commands[-1]) if word not in ("&&", ":")]

    def build_and_run_by_source(self, program, changed):
        """One test source after the other, each linked to a program of its own.

        A header makes all of them compile again; those named like the header begin.
        """
        words = self.link_command(program)
        tests = [word for word in words if word.endswith("_test.cpp.o")]
        stem = pathlib.Path(changed).stem.lower()
        tests.sort(key=lambda test: -len(os.path.commonprefix([pathlib.Path(test).name.lower(), stem])))
        if not self.build([word for word in words
                           if word.endswith((".o", ".a")) and not word.startswith("/")
                           and word not in tests])[0]:
            return "does not compile"
        path = self.tree / "build" / "one_source"
        for test in tests:
            if not self.build([test])[0]:
                return "does not compile"
            link = [word for word in words if word == test or word not in tests]
            link[link.index("-o") + 1] = path
            subprocess.run(link, cwd=self.tree / "build", check=True)
            outcome = self.run(program, path)
            if outcome:
                return outcome
        return None

    def prepare(self):
        """Makes the copy, with the folder's own tests built and timed."""
        self.refresh()
        self.configure()
        for program in self.stages[0]:
            self.try_unchanged(program)

    def try_unchanged(self, program):
        """Builds a program with all cores and sets the limits of its time."""
        jobs, self.build_jobs = self.build_jobs, os.cpu_count() or 1
        built, output = self.build([program])
        if not built:
            sys.exit(f"the unchanged sources do not build:\n{output}")
        start, used = time.monotonic(), processor_time()
        if self.run(program):
            sys.exit(f"{program} fails without any change")
        self.limits[program] = (int(8 + 4 * (processor_time() - used)),
                                WALL + 20 * (time.monotonic() - start))
        self.build_jobs = jobs

    def judge(self, mutant):
        path = self.tree / mutant["file"]
        original = path.read_text(encoding="utf-8")
        begin, end = mutant["span"]
        changed = original[:begin] + mutant["new"] + original[end:]
        try:
            for program in sum(self.stages, []):
                if program not in self.limits:
                    path.write_text(original, encoding="utf-8")
                    self.try_unchanged(program)
                path.write_text(changed, encoding="utf-8")
                if mutant["file"].endswith(".h"):
                    outcome = self.build_and_run_by_source(program, mutant["file"])
                else:
                    outcome = self.build_and_run(program, mutant["file"])
                if outcome:
                    return outcome
            return "survived"
        finally:
            path.write_text(original, encoding="utf-8")


def choose(folder, seed, suffixes):
    """All changes of a folder in the order of the seed, the kinds of change in turn."""
    names = sorted(tracked(*(f"{folder}/*{suffix}" for suffix in suffixes)))
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
        self.write()

    def count(self, *outcomes):
        return sum(1 for kept in self.outcomes.values() if kept in outcomes)

    def judged(self):
        return self.count("killed", "timed out", "survived")

    def write(self):
        noticed = self.count("killed", "timed out")
        summary = {
            "killed": self.count("killed"),
            "timed out": self.count("timed out"),
            "survived": self.count("survived"),
            "does not compile": self.count("does not compile"),
            "percent": round(100.0 * noticed / max(1, self.judged()), 1),
            "survivors": sorted(k for k, v in self.outcomes.items() if v == "survived"),
            "outcomes": self.outcomes,
        }
        RESULTS.mkdir(parents=True, exist_ok=True)
        self.path.write_text(json.dumps(summary, indent=2) + "\n", encoding="utf-8")
        return summary


def run(options, journal):
    """Judges changes until `count` of them compiled."""
    candidates = choose(options.folder, options.seed,
                        [".cpp"] if options.sources else [".cpp", ".h"])
    if not candidates:
        sys.exit(f"nothing can be changed in {options.folder}")
    present = {key_of(mutant) for mutant in candidates}
    journal.outcomes = {k: v for k, v in journal.outcomes.items() if k in present}
    if options.again:
        journal.outcomes = {k: v for k, v in journal.outcomes.items() if v != "survived"}
    waiting = [mutant for mutant in candidates if key_of(mutant) not in journal.outcomes]
    if not waiting or journal.judged() >= options.count:
        return
    build_jobs = max(1, (os.cpu_count() or 1) // options.jobs)
    scratches = queue.SimpleQueue()
    for number in range(options.tree, options.tree + options.jobs):
        scratch = Scratch(number, test_stages(options.folder), build_jobs)
        scratch.prepare()
        scratches.put(scratch)

    def judge(mutant):
        scratch = scratches.get()
        try:
            return mutant, scratch.judge(mutant)
        finally:
            scratches.put(scratch)

    # A change is begun only while too few compiled even if all that run now do: the same ones
    # are judged for any number of jobs.
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        running = set()
        while True:
            while (waiting and len(running) < options.jobs
                   and journal.judged() + len(running) < options.count):
                running.add(pool.submit(judge, waiting.pop(0)))
            if not running:
                break
            done, running = concurrent.futures.wait(
                running, return_when=concurrent.futures.FIRST_COMPLETED)
            for ended in done:
                journal.add(*ended.result())


def main():
    options = parse_options()
    os.nice(19)
    journal = Journal(options.folder, options.seed)
    run(options, journal)
    summary = journal.write()
    for survivor in summary["survivors"]:
        print(f"survivor: {survivor}")
    noticed = summary["killed"] + summary["timed out"]
    print(f"{noticed} of {journal.judged()} changes of {options.folder} noticed "
          f"({summary['timed out']} by running out of time): {summary['percent']} %; "
          f"{journal.path.relative_to(ROOT)}")
    return 0 if journal.judged() and summary["percent"] >= options.least else 1


if __name__ == "__main__":
    sys.exit(main())
