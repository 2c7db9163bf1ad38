#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs every saving command on a full disk, with closed standard streams, and twice at once.

usage: file_limits.py PROGRAM

A full disk: no file of the process can grow beyond a size, from 0 to one byte less than the largest output. Each
output is then its old content, or the new one where it fits; a run that ends with 0 left the new ones, any
other says so; no other file is left. With any of the standard streams closed the outputs are those of a usual run.
Of two runs at once both succeed, and the outputs are whole. Prints how many runs there were.
"""
import itertools
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile

from file_faults import Check, commands

STREAMS = [streams for size in (1, 2, 3) for streams in itertools.combinations((0, 1, 2), size)]


class Limits(Check):
    def __init__(self, program):
        super().__init__(program, None)

    def start(self, words, prepare=None, **streams):
        environment = dict(os.environ, LC_ALL="C", SOURCE_DATE_EPOCH="0")
        return subprocess.Popen([self.program, *words], env=environment, preexec_fn=prepare,
                                stdin=subprocess.DEVNULL, **streams)

    def look(self, words, out, old, new, ended, shown):
        self.runs += 1
        found = {path.name: path.read_bytes() for path in out.iterdir()}
        for name in new:
            content = found.pop(name, None)
            if content != old.get(name) and not self.is_new(name, content, new):
                self.complain(f"{name} is neither old nor new", words, shown)
            elif ended == 0 and not self.is_new(name, content, new):
                self.complain(f"ends with 0, {name} is not new", words, shown)
        if found:
            self.complain(f"leaves {sorted(found)}", words, shown)

    def on_a_full_disk(self, words, out, old, new):
        largest = max(len(content) for content in new.values())
        for most in sorted({0, 1, largest // 2, largest - 1}):
            def prepare(most=most):
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (most, most))
            self.reset(out, old)
            run = self.start(words, prepare, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            _, said = run.communicate(timeout=60)
            shown = f"{most} of {largest} bytes"
            self.look(words, out, old, new, run.returncode, shown)
            if run.returncode == 0:
                self.complain("succeeds where its output does not fit", words, shown)
            elif not said:  # the parameter file is made in memory first, under the same limit
                self.complain("fails without a word", words, shown)

    def with_closed_streams(self, words, out, old, new):
        for streams in STREAMS:
            def prepare(streams=streams):
                for stream in streams:
                    os.close(stream)
            self.reset(out, old)
            run = self.start(words, prepare, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            code = run.wait(timeout=60)
            shown = f"closed streams {streams}"
            self.look(words, out, old, new, code, shown)
            if code != 0 and 1 not in streams:  # what cannot be said on standard output may be a failure
                self.complain(f"ends with {code}", words, shown)

    def twice_at_once(self, words, out, old, new):
        self.reset(out, old)
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        codes = [run.wait(timeout=60) for run in [self.start(words, **quiet) for _ in range(2)]]
        self.look(words, out, old, new, max(codes, key=abs), "twice at once")
        if codes != [0, 0]:
            self.complain(f"ends with {codes}", words, "twice at once")

    def command(self, words, out, _=None):
        self.reset(out, {})
        if self.run(*words).returncode != 0:
            raise SystemExit(f"{words[:2]} does not run at all")
        new = {path.name: path.read_bytes() for path in out.iterdir()}
        for old in ({}, {name: b"old\n" for name in new if not name.endswith(".cfg.json")}):
            self.on_a_full_disk(words, out, old, new)
            self.with_closed_streams(words, out, old, new)
            self.twice_at_once(words, out, old, new)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    check = Limits(sys.argv[1])
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "out").mkdir()
        for _, words in commands(folder, check.run):
            before = check.runs
            check.command(words, folder / "out")
            print(f"{' '.join(words[:2])}: {check.runs - before} runs")
    print(f"{check.runs} runs, {check.failures} losses")
    sys.exit(1 if check.failures or check.runs < 100 else 0)


if __name__ == "__main__":
    main()
