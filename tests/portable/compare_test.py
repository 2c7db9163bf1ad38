#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of compare.py."""
import unittest

from compare import compare

LINES = ["d walk.status 1", "n tip.x 0x1p+1 0x1p+1", "n tip.error nan 0x0p+0", "b file 5b5d", "b empty "]


class Compare(unittest.TestCase):
    def errors(self, line, replacement):
        found = [*LINES]
        found[line] = replacement
        return len(compare(LINES, found, 1e-9).errors)

    def test_the_same_lines_are_counted_and_differ_in_nothing(self):
        figures = compare(LINES, LINES, 1e-9)
        self.assertEqual((figures.counts, figures.same_bits, figures.errors), ({"d": 1, "n": 2, "b": 2}, 2, []))

    def test_decisions_and_bytes_have_to_be_the_same(self):
        self.assertEqual(self.errors(0, "d walk.status 0"), 1)
        self.assertEqual(self.errors(3, "b file 5b5e"), 1)
        self.assertEqual(self.errors(4, "b empty 00"), 1)

    def test_numbers_may_differ_within_the_limit_of_their_size(self):
        self.assertEqual(self.errors(1, f"n tip.x {(2 + 1e-9).hex()} 0x1p+1"), 0)
        self.assertEqual(self.errors(1, f"n tip.x {(2 + 3e-9).hex()} 0x1p+1"), 1)

    def test_the_largest_difference_is_stated(self):
        figures = compare(["n x 0x1p+0 0x1p+2"], ["n x 0x1.8p+0 0x1p+2"], 1.0)
        self.assertEqual((figures.largest, figures.same_bits), (0.125, 0))

    def test_a_number_that_is_none_on_one_side_differs(self):
        self.assertEqual(self.errors(1, "n tip.x nan 0x1p+1"), 1)
        self.assertEqual(self.errors(2, "n tip.error 0x0p+0 0x0p+0"), 1)

    def test_another_name_kind_or_number_of_lines_differs(self):
        self.assertEqual(self.errors(1, "n tip.y 0x1p+1 0x1p+1"), 1)
        self.assertEqual(self.errors(1, "d tip.x 2"), 1)
        self.assertEqual(len(compare(LINES, LINES[:-1], 1e-9).errors), 1)


if __name__ == "__main__":
    unittest.main()
