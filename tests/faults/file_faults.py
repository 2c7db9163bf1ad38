#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails, kills, ends, cuts short and interrupts every file call of every saving command in turn.

usage: file_faults.py PROGRAM PRELOADED_LIBRARY

The processes write below a scratch folder only. After each run every output is its old or its new content, whole, and
those of one command are all old or all new. Only a fault of the renaming itself may leave some of each, and then the
file that the others belong to is an old one. A run that ends with 0 left the new ones;
one that was not killed left no other file in the folder (one that was asked to end neither), and says why where it
ends with another code. The next run after a kill succeeds and removes what was left over. Prints how many runs there were.
"""
import errno
import os
import pathlib
import signal
import subprocess
import sys
import tempfile

FAULTS = [("fail", errno.EIO), ("fail", errno.ENOSPC), ("last", errno.EIO), ("kill", 0), ("after", 0),
          ("end", 0), ("short", 0), ("cut", 0), ("signal", 0)]
PAIRS = "x_source,y_source,x_target,y_target\n0,0,1,1\n9,0,10,1\n0,9,1,10\n"


def commands(folder, run):
    """Each saving command, its outputs in `folder`/out, and the one that they belong to; their inputs are made in `folder`."""
    inputs = {name: str(folder / name) for name in ("walk.csv", "h.csv", "v.csv", "pairs.csv")}
    run("simulate", "walk", "--points", "1", "--out", inputs["walk.csv"])
    run("simulate", "turns", "--samples", "120", "--horizontal", inputs["h.csv"], "--vertical",
        inputs["v.csv"])
    pathlib.Path(inputs["pairs.csv"]).write_text(PAIRS)
    out = folder / "out"
    yield "points.csv", ["simulate", "points", "--out", str(out / "points.csv")]
    yield "w.csv", ["simulate", "walk", "--points", "1", "--out", str(out / "w.csv"), "--truth",
                    str(out / "t.csv")]
    yield "tips.csv", ["measure", inputs["walk.csv"], "--pole", "2", "--out", str(out / "tips.csv")]
    yield "fit.json", ["transform", "fit", inputs["pairs.csv"], "--out", str(out / "fit.json")]
    yield "pole.cfg", ["calibrate", "--horizontal", inputs["h.csv"], "--vertical", inputs["v.csv"],
                       "--force", "--out", str(out / "pole.cfg")]


class Check:
    def __init__(self, program, library):
        self.program, self.library = program, library
        self.runs = self.failures = 0
        self.calls = {}

    def run(self, *words, fault=None):
        environment = dict(os.environ, LC_ALL="C", SOURCE_DATE_EPOCH="0")
        if fault:
            environment.update(fault, LD_PRELOAD=self.library)
        return subprocess.run([self.program, *words], env=environment, capture_output=True,
                              stdin=subprocess.DEVNULL, timeout=60, check=False)

    def complain(self, what, words, fault):
        self.failures += 1
        print(f"{' '.join(words[:2])}, {fault}: {what}", file=sys.stderr)

    def reset(self, out, old):
        for path in out.iterdir():
            path.unlink()
        for name, content in old.items():
            (out / name).write_bytes(content)

    def one(self, words, out, last, names, old, new, fault, told):
        """Runs with a fault; False where the program makes fewer calls."""
        self.reset(out, old)
        told.unlink(missing_ok=True)
        ended = self.run(*words, fault=dict(fault, TILTPOLE_FAULT_TOLD=str(told)))
        if not told.exists():
            return False
        self.runs += 1
        call = told.read_text().split("\n")[0]
        self.calls[call] = self.calls.get(call, 0) + 1
        shown = f"{fault['TILTPOLE_FAULT']} at {call} {fault['TILTPOLE_FAULT_AT']}"
        found = {path.name: path.read_bytes() for path in out.iterdir()}
        ages = {name: "old" if found.get(name) == old.get(name) else "new" for name in names}
        if len(set(ages.values())) > 1 and (call != "renameat" or ages[last] == "new"):
            self.complain(f"files of different ages: {ages}", words, shown)
        for name in names:
            content = found.pop(name, None)
            if content != old.get(name) and not self.is_new(name, content, new):
                self.complain(f"{name} is neither old nor new", words, shown)
            elif ended.returncode == 0 and not self.is_new(name, content, new):
                self.complain(f"ends with 0, {name} is not new", words, shown)
        if ended.returncode == -signal.SIGTERM and found:
            self.complain(f"leaves {sorted(found)}", words, shown)
        if ended.returncode < 0:
            if self.run(*words).returncode != 0 or {p.name for p in out.iterdir()} != set(names):
                self.complain("the next run does not put it right", words, shown)
        elif found and fault["TILTPOLE_FAULT"] != "last" and not call.startswith("unlink"):
            self.complain(f"leaves {sorted(found)}", words, shown)
        elif ended.returncode != 0 and not ended.stderr:
            # Standard error itself may be what failed.
            if call != "write":
                self.complain("fails without a word", words, shown)
        return True

    @staticmethod
    def is_new(name, content, new):
        """Records of calibrations have the time of the run."""
        if content is None:
            return False
        return content == new[name] or (name.endswith(".json") and b"made_utc" in content
                                        and len(content) == len(new[name]))

    def command(self, last, words, out, told):
        self.reset(out, {})
        if self.run(*words).returncode != 0:
            raise SystemExit(f"{words[:2]} does not run at all")
        new = {path.name: path.read_bytes() for path in out.iterdir()}
        names = sorted(new)
        for old in ({}, {name: b"old\n" for name in names if not name.endswith(".cfg.json")}):
            for kind, error in FAULTS:
                at = 1
                while self.one(words, out, last, names, old, new,
                               {"TILTPOLE_FAULT": kind, "TILTPOLE_FAULT_AT": str(at),
                                "TILTPOLE_FAULT_ERROR": str(error)}, told):
                    at += 1


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    check = Check(*sys.argv[1:])
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "out").mkdir()
        for last, words in commands(folder, check.run):
            before = check.runs
            check.command(last, words, folder / "out", folder / "told")
            print(f"{' '.join(words[:2])}: {check.runs - before} runs with a fault")
    print(f"{check.runs} runs, {check.failures} losses; "
          + ", ".join(f"{name} {count}" for name, count in sorted(check.calls.items())))
    needed = {"open", "openat", "write", "close", "fsync", "renameat"}
    if not needed <= set(check.calls):
        sys.exit(f"no run had a fault in {sorted(needed - set(check.calls))}")
    sys.exit(1 if check.failures else 0)


if __name__ == "__main__":
    main()
