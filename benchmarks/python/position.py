# SPDX-License-Identifier: MIT
"""Pole.position over a million samples beside the same loop in C++, in turns, and the ratio of the fastest rounds by
processor time.

usage: PYTHONPATH=build/bench/python python3 benchmarks/python/position.py build/bench/benchmarks/python/position_loop
"""
import os
import subprocess
import sys
import tempfile
import time

import numpy as np
import tiltpole

COUNT = 1_000_000
TURNS, ROUNDS = 5, 3


def samples():
    random = np.random.default_rng(1)
    tilt = random.uniform(-30.0, 30.0, (COUNT, 2))
    magnetic = random.normal(0.0, 300.0, (COUNT, 6))
    antennas = np.array([4500000.0, 500000.0, 100.0]) + random.normal(0.0, 10.0, (COUNT, 3))
    return np.column_stack([tilt, magnetic]), antennas


def loop(program, path):
    words = subprocess.run(
        [program, path, str(COUNT), str(ROUNDS)], check=True, capture_output=True, text=True
    ).stdout.split()
    return [float(word) for word in words[:-1]], float(words[-1])


def package(given):
    took = []
    for _ in range(ROUNDS):
        pole = tiltpole.Pole()
        start = time.process_time()
        found = pole.position(*given, 2.0)
        took.append(time.process_time() - start)
    return took, found.tips


def main(program):
    given = samples()
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "samples")
        with open(path, "wb") as file:
            for array in given:
                file.write(array.tobytes())
        in_cpp, in_python = [], []
        for _ in range(TURNS):
            took, total = loop(program, path)
            in_cpp += took
            took, tips = package(given)
            in_python += took
    if not np.isclose(tips.sum(), total, rtol=1e-12):
        sys.exit(f"the tips differ: their sums are {tips.sum()!r} and {total!r}")
    best_cpp, best_python = min(in_cpp), min(in_python)
    print(f"a sample in C++ {1e9 * best_cpp / COUNT:.1f} ns, in Python {1e9 * best_python / COUNT:.1f} ns")
    print(f"Python / C++ {best_python / best_cpp:.2f}")


if __name__ == "__main__":
    main(sys.argv[1])
