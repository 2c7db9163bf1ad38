#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of the table of speeds: what is counted as behind, and what has to have a reason."""
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "benchmarks"))

from table import LEVEL, ROWS, Row, figure, native, table_of, title_of  # noqa: E402

ROW = Row("a sum", "matrix", "Sum/ours/3", ("Sum/eigen/3", "Sum/armadillo/3"))
EXPLAINED = Row("a sum", "matrix", "Sum/ours/3", ("Sum/eigen/3", "Sum/armadillo/3"), "It checks sizes.")


def lines_of(row, **times):
    names = {"ours": "Sum/ours/3", "eigen": "Sum/eigen/3", "armadillo": "Sum/armadillo/3",
             "eigen_native": "Sum/eigen-native/3", "armadillo_native": "Sum/armadillo-native/3"}
    return table_of([row], {names[key]: value for key, value in times.items()})


class Comparing(unittest.TestCase):
    def test_the_quickest_peer_counts(self):
        lines, wrong = lines_of(ROW, ours=10.0, eigen=30.0, armadillo=15.0)
        self.assertEqual(lines[2], "| a sum | 10 ns | Armadillo | 15 ns | 1.50 |  |  |  |")
        self.assertEqual(wrong, [])

    def test_a_peer_for_this_processor_stands_beside_it(self):
        lines, _ = lines_of(EXPLAINED, ours=10.0, eigen=30.0, armadillo=15.0, eigen_native=5.0, armadillo_native=8.0)
        self.assertEqual(lines[2], "| a sum | 10 ns | Armadillo | 15 ns | 1.50 | 5 ns (Eigen) | 0.50 | (1) |")

    def test_what_is_behind_without_a_reason_is_an_error(self):
        for times in ({"eigen": 9.0}, {"eigen": 20.0, "eigen_native": 9.0}):
            _, wrong = lines_of(ROW, ours=10.0, armadillo=30.0, **times)
            self.assertEqual(wrong, ["a sum: 0.90 of a peer, without a reason"])

    def test_a_reason_is_told_once_and_only_where_it_is_needed(self):
        times = {"Sum/ours/3": 10.0, "Sum/eigen/3": 9.0, "Sum/armadillo/3": 30.0}
        lines, wrong = table_of([EXPLAINED, EXPLAINED], times)
        self.assertEqual(wrong, [])
        self.assertEqual(lines.count("1. It checks sizes."), 1)
        self.assertEqual(lines[-1], f"2 pieces of work, 2 below {LEVEL} of a peer.")
        lines, _ = table_of([EXPLAINED], times | {"Sum/eigen/3": 11.0})
        self.assertNotIn("1. It checks sizes.", lines)
        self.assertEqual(lines[-1], f"1 pieces of work, 0 below {LEVEL} of a peer.")

    def test_a_benchmark_that_is_gone_is_an_error(self):
        self.assertEqual(lines_of(ROW, eigen=9.0, armadillo=9.0)[1], ["a sum: 'Sum/ours/3' was not measured"])
        self.assertEqual(lines_of(ROW, ours=9.0, eigen=9.0)[1], ["a sum: 'Sum/armadillo/3' was not measured"])


class Naming(unittest.TestCase):
    def test_the_native_peer_has_the_name_that_its_program_gives_it(self):
        for name, expected in (("Sum/eigen/3", "Sum/eigen-native/3"),
                               ("Sum/eigen-fixed/3", "Sum/eigen-fixed-native/3"),
                               ("Normal/armadillo/20x5", "Normal/armadillo-native/20x5"),
                               ("Kalman_Eigen/0", "Kalman_Eigen-native/0"),
                               ("Adjust_Eigen/samples:100/kind:0", "Adjust_Eigen-native/samples:100/kind:0"),
                               ("FusionStep", "FusionStep-native")):
            self.assertEqual(native(name), expected)

    def test_times_have_three_digits(self):
        self.assertEqual([figure(t) for t in (9.04, 425.3, 999.7, 1234.0, 7.6e6)],
                         ["9.04 ns", "425 ns", "1 us", "1.23 us", "7.6 ms"])

    def test_every_peer_has_a_title(self):
        for row in ROWS:
            for peer in row.peers:
                self.assertNotEqual(title_of(peer), peer)

    def test_every_reason_names_a_record_that_exists(self):
        for why in {row.why for row in ROWS if row.why}:
            record = re.search(r"\]\((decisions/[^)]*\.md)\)", why)
            self.assertTrue(record and (ROOT / "docs" / record[1]).is_file(), why)


if __name__ == "__main__":
    unittest.main()
