# SPDX-License-Identifier: MIT
"""Makes and destroys each control many times, paints each many times with other values, and prints what the process holds
more than before; exits with 1 where that is anything.

usage: controls.py PROGRAM LIFETIMES PAINTS
"""
import json
import subprocess
import sys

import judge


def soaked(path, lifetimes, paints):
    """What `controls_soak` prints: an object for each control and each of the two, as they end."""
    with subprocess.Popen([path, str(lifetimes), str(paints)], stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            yield json.loads(line)
    if process.returncode != 0:
        sys.exit("controls.py: the program ended early")


def main():
    try:
        path, lifetimes, paints = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
    except (IndexError, ValueError):
        sys.exit("usage: controls.py PROGRAM LIFETIMES PAINTS")
    print("What the process holds more after them than before; pictures that were not those of the same value before:\n")
    print(f"{'':<34}{'us each':>10}{'blocks':>8}{'MiB':>8}{'files':>7}{'windows':>9}{'pictures':>10}")
    missed = 0
    for line in soaked(path, lifetimes, paints):
        held = judge.holds_nothing_more(line)
        missed += not held
        print(f"{line['control']:<14}{line['count']:>10} {line['what']:<9}{1e6 * line['seconds'] / line['count']:>10.1f}"
              f"{line['blocks']:>8}{line['resident'] / 1024:>8.2f}{line['descriptors']:>7}{line['windows']:>9}{line['wrong']:>10}"
              f"{'' if held else '   MISSED'}", flush=True)
    print(f"{'limit':<34}{'-':>10}{0:>8}{judge.GROWTH:>8.2f}{0:>7}{0:>9}{0:>10}")
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
