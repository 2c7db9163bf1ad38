#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tells how the library's speed compares with that of its peers, each pair measured in one run.

usage: table.py BUILD [--rounds N] [--seconds S] [--only TEXT] [--json FILE]

BUILD is a build tree of the preset bench. Every row of the table is a piece of work of ours beside the same
work of others; a ratio above 1 says that ours is quicker. Peers are there as everybody builds them and, where that may
matter, compiled for this processor. Where a ratio is below 1 the row says why, else the exit code is 1.
"""
import argparse
import collections
import dataclasses
import json
import pathlib
import statistics
import subprocess
import sys

LEVEL = 0.97  # below it a row is behind: medians of equal code differ by up to 3 in 100
UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


@dataclasses.dataclass(frozen=True)
class Row:
    """A piece of work: the benchmark that is ours, those of others, and why ours may be behind."""
    work: str
    program: str
    ours: str
    peers: tuple
    why: str = ""


FIXED = ("Its sizes are fixed when it is compiled: no check of sizes, no health, and the loop disappears into its "
         "caller; ours is a call into a library ([record 0020](decisions/0020-elements-inside-the-matrix.md)).")
ROTATIONS = ("The header promises cyclic rotations and the order in which they leave the eigenvalues; the peer reduces "
             "the matrix to three diagonals first ([record 0023](decisions/0023-jacobi-touches-two-lines.md)).")
FLOATS = ("Single precision carries half the digits; the same step in doubles is the row above "
          "([record 0030](decisions/0030-one-sine-and-cosine.md)).")
FORMULAS = ("For these types the tilt angle is an arc sine whose sine and cosine are taken again, and the peer forms neither "
            "tilt direction nor flags ([record 0030](decisions/0030-one-sine-and-cosine.md)).")
VECTOR = ("Elements are addressed by the size, where a vector has an address of its end "
          "([record 0010](decisions/0010-framework-core.md)).")
FLUSHED = ("A save waits for the device twice and keeps permissions, locks and attributes; the other only writes its text "
           "([record 0032](decisions/0032-parameter-file.md)).")


FUSED = ("Compiled for this processor the peer fuses each product with a sum; ours keeps two roundings, so that a result is the same "
         "on every processor ([record 0021](decisions/0021-vector-kernels-at-run-time.md)).")
CALLED = ("Nine additions beside a call into the library, a check of both sizes and a health "
          "([record 0020](decisions/0020-elements-inside-the-matrix.md)).")
LARGE = ("Of the difference to the peer that is compiled for this processor a tenth is memory that begins anywhere; what the rest "
         "is was not found ([record 0021](decisions/0021-vector-kernels-at-run-time.md)).")


REASONS = {("Product", 40): FUSED, ("Sum", 3): CALLED, ("Sum", 12): LARGE, ("Sum", 40): LARGE}


def matrix_rows():
    """Rows for the matrices: as dynamic as ours, and fixed at compile time."""
    rows = []
    for operation, name in (("Product", "product"), ("Sum", "sum"), ("Inverse", "inverse"),
                            ("Cholesky", "Cholesky factor"), ("Eigen", "`Jacobi`")):
        for n in (3, 6, 12, 40):
            peers = (f"{operation}/eigen/{n}", f"{operation}/armadillo/{n}")
            why = REASONS.get((operation, n), ROTATIONS if operation == "Eigen" else "")
            rows.append(Row(f"{name} {n} x {n}", "matrix", f"{operation}/ours/{n}", peers, why))
    for operation, name in (("Product", "product"), ("Sum", "sum")):
        for n in (3, 6):
            rows.append(Row(f"{name} {n} x {n}, peer of fixed size", "matrix", f"{operation}/ours/{n}",
                            (f"{operation}/eigen-fixed/{n}",), FIXED))
    for n in (20, 100, 200, 1000):
        rows.append(Row(f"normal equations {n} x 5", "matrix", f"Normal/ours/{n}x5",
                        (f"Normal/eigen/{n}x5", f"Normal/armadillo/{n}x5")))
    return rows


ROWS = [
    *(Row(f"`Position`, sensor type {type_}", "positioning", f"Position/type:{type_}", ("FusionStep",))
      for type_ in (1, 2)),
    Row("`Position`, sensor type 1, peer in single precision", "positioning", "Position/type:1",
        ("FusionStepFloat",), FLOATS),
    Row("`CalculateYaw_A` and `_B`, type 1", "positioning", "OneByOne/type:1", ("TwoCompasses",)),
    Row("`CalculateYaw_A` and `_B`, type 2", "positioning", "OneByOne/type:2", ("TwoCompasses",), FORMULAS),
    Row("parameter file, text and writing", "positioning", "SaveText", ("SaveLiteral",)),
    Row("parameter file, whole save in memory", "positioning", "Save/device:0/flushed:1", ("SaveLiteral",), FLUSHED),
    Row("parameter file, read", "positioning", "Read", ("ReadLiteral",)),
    *(Row(f"`Adjust`, {n} samples a turn", "calibration", f"Adjust_Ours/samples:{n}/kind:0",
          (f"Adjust_Eigen/samples:{n}/kind:0",)) for n in (100, 500, 1000)),
    *(Row(f"one conic, {n} points", "calibration", f"Conic_Ours/{n}", (f"Conic_Eigen/{n}",)) for n in (100, 1000)),
    *(Row(f"`Add` a sample, turn of {n}", "calibration", f"Add_Ours/samples:{n}/kind:0",
          (f"Add_ByHand/samples:{n}/kind:0",)) for n in (1000, 3000)),
    *(Row(f"`Filter`, {n} samples", "calibration", f"FilterXY_Ours/samples:{n}/kind:0",
          (f"FilterXY_ByHand/samples:{n}/kind:0",)) for n in (1000, 3000)),
    Row("Kalman step 6 x 6, general", "calibration", "Kalman_Ours/0", ("Kalman_Eigen/0",), FUSED),
    Row("Kalman step 6 x 6, identities", "calibration", "Kalman_Ours/1", ("Kalman_Eigen/1",)),
    *matrix_rows(),
    Row("plane fit, 1,000,000 points", "geometry", "FitOurs/points:1000000", ("FitUmeyama/points:1000000",)),
    Row("plane transform, 1,000,000 points", "geometry", "ForwardOurs/points:1000000",
        ("ForwardBoost/points:1000000", "ForwardProj/points:1000000")),
    *(Row(f"`CArray` of samples, {n} added", "framework", f"FillArray<PoseSensorData>/{n}",
          (f"FillVector<PoseSensorData>/{n}",), VECTOR) for n in (10, 1000, 10000)),
    *(Row(f"`CArray` of numbers, {n} added", "framework", f"FillArray<double>/{n}",
          (f"FillVector<double>/{n}",), VECTOR) for n in (10, 1000)),
]


def native(name):
    """The name of the same peer compiled for this processor."""
    head, slash, tail = name.rpartition("/eigen")
    if slash:  # matrices: operation/contender/size
        contender, size = tail.split("/")
        return f"{head}/eigen{contender}-native/{size}"
    if "/armadillo/" in name:
        return name.replace("/armadillo/", "/armadillo-native/")
    first, slash, rest = name.partition("/")
    return f"{first}-native{slash}{rest}"


def times_of(program, names, rounds, seconds):
    """Name -> medians of processor nanoseconds over the rounds, all names mixed in one run."""
    listed = set(subprocess.run([program, "--benchmark_list_tests"], capture_output=True, text=True,
                                check=True).stdout.split("\n"))
    wanted = sorted(listed & set(names))
    if not wanted:
        return {}
    pattern = "^(" + "|".join(wanted) + ")$"
    output = subprocess.run(
        [program, f"--benchmark_filter={pattern}", f"--benchmark_min_time={seconds}",
         f"--benchmark_repetitions={rounds}", "--benchmark_enable_random_interleaving=true",
         "--benchmark_format=json"], capture_output=True, text=True, check=True).stdout
    runs = collections.defaultdict(list)
    for row in json.loads(output)["benchmarks"]:
        if row["run_type"] == "iteration":
            runs[row["run_name"]].append(row["cpu_time"] * UNITS[row["time_unit"]])
    return {name: statistics.median(values) for name, values in runs.items()}


def compared(row, times):
    """(ours, [(peer, time) as built, quickest first], [the same for this processor]) in nanoseconds."""
    as_built = sorted(((times[p], p) for p in row.peers if p in times))
    for_this = sorted(((times[native(p)], p) for p in row.peers if native(p) in times))
    return times[row.ours], as_built, for_this


def figure(nanoseconds):
    """Three digits and a unit."""
    for limit, unit, size in ((999.5, "ns", 1.0), (999.5e3, "us", 1e3), (float("inf"), "ms", 1e6)):
        if nanoseconds < limit:
            return f"{nanoseconds / size:.3g} {unit}"
    raise ValueError(nanoseconds)


def title_of(peer):
    """How a table calls a peer."""
    lower = peer.lower()
    for word, title in (("eigen-fixed", "Eigen, fixed size"), ("eigen", "Eigen"), ("armadillo", "Armadillo"),
                        ("umeyama", "Eigen"), ("boost", "Boost.Geometry"), ("proj", "PROJ"),
                        ("fusionstepfloat", "fusion step, single"), ("fusionstep", "fusion step"),
                        ("twocompasses", "two compasses on Eigen"), ("byhand", "loops by hand"),
                        ("literal", "written line by line"), ("fillvector", "`std::vector`")):
        if word in lower:
            return title
    return peer


def table_of(rows, times):
    """The lines of the table with notes, and the works that are behind without a reason."""
    lines = ["| work | ours | best peer | | ratio | for this processor | ratio | |",
             "|---|---|---|---|---|---|---|---|"]
    notes, unexplained, shown, behind = [], [], 0, 0
    for row in rows:
        if row.ours not in times:
            unexplained.append(f"{row.work}: '{row.ours}' was not measured")
            continue
        absent = [peer for peer in row.peers if peer not in times]
        if absent:
            unexplained.append(f"{row.work}: '{absent[0]}' was not measured")
            continue
        ours, as_built, for_this = compared(row, times)
        shown += 1
        cells, ratios = [], []
        for peers in (as_built, for_this):
            if not peers:
                cells += ["", ""]
                continue
            ratios.append(peers[0][0] / ours)
            name = "" if title_of(peers[0][1]) == title_of(as_built[0][1]) else f" ({title_of(peers[0][1])})"
            cells += [figure(peers[0][0]) + name, f"{ratios[-1]:.2f}"]
        mark = ""
        if min(ratios) < LEVEL:
            behind += 1
            if not row.why:
                unexplained.append(f"{row.work}: {min(ratios):.2f} of a peer, without a reason")
            else:
                if row.why not in notes:
                    notes.append(row.why)
                mark = f"({notes.index(row.why) + 1})"
        lines.append(f"| {row.work} | {figure(ours)} | {title_of(as_built[0][1])} | {' | '.join(cells)} | {mark} |")
    lines += [""] + [f"{number}. {note}" for number, note in enumerate(notes, 1)] + ([""] if notes else [])
    lines += [f"{shown} pieces of work, {behind} below {LEVEL} of a peer."]
    return lines, unexplained


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=9, help="how often each is measured (9)")
    parser.add_argument("--seconds", type=float, default=0.05, help="the least time of one measurement (0.05)")
    parser.add_argument("--only", default="", help="rows whose work contains this text")
    parser.add_argument("--json", type=pathlib.Path, help="also keep the times in this file")
    options = parser.parse_args()
    rows = [row for row in ROWS if options.only in row.work]
    if not rows:
        sys.exit(f"table.py: no row has '{options.only}' in its work")
    times = {}
    for program in dict.fromkeys(row.program for row in rows):
        path = options.build / "benchmarks" / program / f"{program}_benchmarks"
        if not path.is_file():
            sys.exit(f"table.py: {path} is not built")
        names = {name for row in rows if row.program == program
                 for name in (row.ours, *row.peers, *(native(p) for p in row.peers))}
        times |= times_of(path, names, options.rounds, options.seconds)
    if options.json:
        options.json.write_text(json.dumps(times, indent=1) + "\n", encoding="utf-8")
    lines, unexplained = table_of(rows, times)
    print("\n".join(lines))
    for line in unexplained:
        print(f"table.py: {line}", file=sys.stderr)
    return 1 if unexplained else 0


if __name__ == "__main__":
    sys.exit(main())
