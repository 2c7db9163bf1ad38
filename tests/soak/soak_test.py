# SPDX-License-Identifier: MIT
"""A soak of two seconds goes through: epochs arrive, and each limit has a row. Its figures are not looked at.

usage: soak_test.py PROGRAM
"""
import sys
import unittest

import judge
import soak


class Soak(unittest.TestCase):
    def test_measures_the_program(self):
        measured = soak.soaked(PROGRAM, 2.0)
        self.assertGreater(measured.received, 0)
        self.assertGreater(len(measured.samples), 2)
        self.assertGreater(measured.samples[0].memory, 1.0)
        self.assertGreater(measured.samples[0].descriptors, 5)
        self.assertEqual(len(judge.judged(measured)), 9)
        self.assertTrue(0.0 < measured.hop < measured.latencies[99])


if __name__ == "__main__":
    PROGRAM = sys.argv.pop()
    unittest.main()
