#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What check_samples.py takes for a sample, and what it takes for the same output."""
import re
import sys
import unittest

sys.dont_write_bytecode = True
import samples  # noqa: E402


def document(*lines):
    return samples.find("\n".join(lines))


class Find(unittest.TestCase):
    def test_a_command_ends_where_its_output_begins(self):
        runs = document("```", "$ one \\", "  more", "printed", "$ two", "```").runs
        self.assertEqual([run.command for run in runs], ["one \\\n  more", "two"])
        self.assertEqual([(run.first, run.end) for run in runs], [(3, 4), (5, 5)])

    def test_bare_commands_are_run_and_show_nothing(self):
        (run,) = document("```", "tiltpole solve p.csv \\", "  --height 2", "```").runs
        self.assertFalse(run.compared)

    def test_a_mark_gives_the_command_of_a_block(self):
        found = document("<!-- samples: output of head", "  -n 2 x -->", "```json", "{}", "```")
        self.assertEqual(found.runs[0].command, "head -n 2 x")
        self.assertEqual(found.shown(found.runs[0]), ["{}"])

    def test_a_hidden_sample_is_run(self):
        (run,) = document("<!-- samples: hidden", "$ one", "printed", "-->").runs
        self.assertTrue(run.hidden)

    def test_a_block_is_left_out_for_a_stated_reason_only(self):
        block = ("```", "$ one", "```")
        found = document("<!-- samples: not run: takes hours -->", *block)
        self.assertEqual((found.not_run, found.runs), (1, []))
        for mark in ("<!-- samples: not run: -->", "<!-- samples: not run -->", "<!-- sample: no -->"):
            found = document(mark, *block)
            self.assertEqual(len(found.faults), 1, mark)
            self.assertEqual(len(found.runs), 1, mark)

    def test_a_block_of_neither_sample_nor_language_is_a_fault(self):
        self.assertEqual(len(document("```", "figure 3", "```").faults), 1)
        self.assertEqual(document("```text", "figure 3", "```").faults, [])

    def test_output_above_the_first_command_is_a_fault(self):
        self.assertEqual(len(document("```", "printed", "$ one", "```").faults), 1)

    def test_a_mark_far_from_its_block_is_a_fault(self):
        found = document("<!-- samples: not run: slow -->", "words", "```", "$ one", "```")
        self.assertEqual((len(found.faults), len(found.runs)), (1, 1))


class Same(unittest.TestCase):
    cases = [
        (["a 1"], ["a 1"], True, "equal"),
        (["a 1"], ["a 2"], False, "another figure"),
        (["a 1"], ["a 1", "b"], False, "a line more"),
        (["a 1", "b"], ["a 1"], False, "a line less"),
        (["a 1.50"], ["a 1.5"], False, "another number of digits"),
        (["a 1.234567890123"], ["a 1.234567890124"], True, "a last digit of a long figure"),
        (["a 1.234567890123"], ["a 1.234567990123"], False, "more than the last digits"),
        (["a -1.234567890123"], ["a 1.234567890123"], False, "the sign of a long figure"),
        (["a", "...", "d"], ["a", "b", "c", "d"], True, "lines left out"),
        (["a", "...", "d"], ["a", "d"], False, "nothing to leave out"),
        (["a", "..."], ["a", "b"], True, "the end left out"),
        (["a", "..."], ["b", "b"], False, "another beginning"),
        (["a", "...", "d"], ["a", "b", "e"], False, "another end"),
        (["a", "...", "c", "...", "e"], ["a", "b", "c", "d", "e"], True, "two gaps"),
        (["a", "...", "c", "...", "e"], ["a", "c", "b", "d", "e"], False, "the middle in the gap"),
    ]

    def test_output_is_what_is_shown(self):
        for shown, printed, expected, why in self.cases:
            self.assertEqual(samples.same(shown, printed), expected, why)

    def test_marked_figures_vary(self):
        milliseconds = re.compile(r"[\d.]+ ms")
        self.assertTrue(samples.same(["4 runs, 1.2 ms"], ["4 runs, 13 ms"], milliseconds))
        self.assertFalse(samples.same(["4 runs, 1.2 ms"], ["5 runs, 1.2 ms"], milliseconds))


class Filled(unittest.TestCase):
    def test_without_elision_it_is_the_output(self):
        self.assertEqual(samples.filled(["a"], ["b", "c"]), ["b", "c"])

    def test_elisions_stay_where_the_words_are(self):
        shown = ["head 1", "...", "middle 2", "...", "tail 3"]
        printed = ["head 4", "x", "y", "middle 5", "z", "z", "tail 6"]
        expected = ["head 4", "...", "middle 5", "...", "tail 6"]
        self.assertEqual(samples.filled(shown, printed), expected)
        self.assertTrue(samples.same(expected, printed))

    def test_an_elided_end_stays_elided(self):
        self.assertEqual(samples.filled(["a", "..."], ["b", "c", "d"]), ["b", "..."])


if __name__ == "__main__":
    unittest.main()
