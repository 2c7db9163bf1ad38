# SPDX-License-Identifier: MIT
"""Runs the library as a host does, 50 samples a second for minutes, at that pace, all at once or with cold caches, and prints the times of
its calls, memory and descriptors beside their limits; exits with 1 where one is missed.

usage: engine.py PROGRAM MINUTES [--at-once | --cold]
"""
import json
import os
import subprocess
import sys
import time

import judge

RATE = 50  # [Hz]
MODES = {"at that pace": ["paced"], "at once": [], "at once, caches cold": ["cold"]}  # arguments of the program
OPTIONS = {"": "at that pace", "--at-once": "at once", "--cold": "at once, caches cold"}


def soaked(path, samples, mode="at once"):
    """Of judge.EngineSoak: what `engine_soak` prints, a line at a time."""
    arguments = [path, str(samples)] + MODES[mode]
    rounds, loads, last = [], [os.getloadavg()[0]], {}
    with subprocess.Popen(arguments, stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            last = json.loads(line)
            if "blocks" in last:
                rounds.append(last)
                loads.append(os.getloadavg()[0])
    if process.returncode != 0 or "calls" not in last:
        sys.exit("engine.py: the program ended early")
    return judge.EngineSoak(rounds, last["calls"], last["outcome"], sum(loads) / len(loads), os.cpu_count())


def hours(samples):
    return f"{samples / RATE / 3600:.4g} hours of samples"


def main():
    try:
        path, minutes = sys.argv[1], float(sys.argv[2])
        mode = OPTIONS[" ".join(sys.argv[3:])]
    except (IndexError, KeyError, ValueError):
        sys.exit("usage: engine.py PROGRAM MINUTES [--at-once | --cold]")
    began = time.monotonic()
    soak = soaked(path, max(int(60 * RATE * minutes), 1), mode)
    seen = soak.outcome
    print(f"{seen['samples']} samples at {RATE} Hz, {hours(seen['samples'])}, {mode} in "
          f"{time.monotonic() - began:.0f} s; load of the machine {soak.load:.1f} on {soak.cores} cores")
    print(f"{seen['tips']} tips; live pole: {seen['reports']} epochs, {seen['live']} with a tip, {seen['stored']} may be stored, "
          f"{seen['byOccupation']} of them\nby the occupation; {seen['estimates']} estimates, {seen['calibrations']} calibrations\n")
    print(f"{'time of a call [us]':<32}{'count':>10}{'p50':>10}{'p99':>10}{'p99.9':>10}{'most':>12}")
    for name, call in soak.calls.items():
        for clock in ("clock", "processor"):
            times = call[clock]
            if times["count"]:
                label = name if clock == "clock" else "  its processor time"
                print(f"{label:<32}{times['count']:>10}{times['p50']:>10.1f}{times['p99']:>10.1f}{times['p99.9']:>10.1f}"
                      f"{times['most']:>12.1f}")
    sys.exit(judge.shown(judge.judged_engine(soak)))


if __name__ == "__main__":
    main()
