#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of coverage.py on what llvm-cov exports, and of the exclusions on the sources."""
import pathlib
import tomllib
import unittest

from coverage import EXCLUSIONS, ROOT, File, files_of, folder_of, measure, places_of, table_of

TEXT = ["int Sign(int x)", "{", "    if (x < 0) return -1;", "    while (true)", "        Wait();", "}"]
BELOW = (3, 9, 3, 14)
# A function that ran twice and never saw a negative number; its loop is no decision.
SEGMENTS = [[2, 1, 2, True, True, False], [3, 9, 2, True, True, False], [3, 14, 2, True, False, False],
            [3, 16, 0, True, True, False], [3, 25, 2, True, False, False], [4, 12, 2, True, True, False],
            [4, 17, 0, True, False, True], [5, 9, 0, True, True, False], [5, 15, 2, True, False, False],
            [6, 2, 0, False, False, False]]
BRANCHES = [[*BELOW, 0, 2, 0, 0, 4], [4, 12, 4, 16, 0, 0, 0, 0, 4]]


def export_of(*names, branches=BRANCHES):
    return {"data": [{"files": [{"filename": f"/tree/{name}", "segments": SEGMENTS, "branches": branches}
                                for name in names]}]}


def the_file(branches=BRANCHES):
    return files_of(export_of("a/Sign.cpp", branches=branches), pathlib.Path("/tree"))["a/Sign.cpp"]


def outcome(*exclusions):
    return measure({"a/Sign.cpp": the_file()}, exclusions, lambda name: TEXT)


def exclusion(code, *never, file="a/Sign.cpp", reason="It waits for what cannot come."):
    return {"file": file, "code": code, "never": list(never), "reason": reason}


class Counting(unittest.TestCase):
    def test_a_line_has_the_runs_of_what_begins_on_it_or_reaches_it(self):
        self.assertEqual(the_file().lines, {2: 2, 3: 2, 4: 2, 5: 0, 6: 2})

    def test_both_sides_of_a_decision_count_and_one_that_the_compiler_takes_does_not(self):
        self.assertEqual(the_file().decisions, {BELOW: [0, 2]})

    def test_a_decision_that_is_never_reached_counts(self):
        never = (5, 9, 5, 13)
        self.assertIn(never, the_file(branches=[*BRANCHES, [*never, 0, 0, 0, 0, 4]]).decisions)

    def test_instantiations_of_a_template_reach_the_sides_together(self):
        self.assertEqual(the_file(branches=[*BRANCHES, [*BELOW, 3, 0, 0, 0, 4]]).decisions, {BELOW: [3, 2]})

    def test_tests_and_other_projects_are_not_measured(self):
        export = export_of("a/b.h", "tests/a.cpp", "benchmarks/a.cpp", "build/dev/a.cpp")
        export["data"][0]["files"].append({"filename": "/usr/a.h", "segments": [], "branches": []})
        self.assertEqual(list(files_of(export, pathlib.Path("/tree"))), ["a/b.h"])

    def test_folders_are_summed_and_what_was_missed_is_named(self):
        folders, missed, wrong = outcome()
        (lines, branches), = folders.values()
        self.assertEqual((lines.all, lines.reached, branches.all, branches.reached), (5, 4, 2, 1))
        self.assertEqual(missed, ["a/Sign.cpp:5: Wait();", "a/Sign.cpp:3: x < 0 is true"])
        self.assertEqual(wrong, [])
        self.assertEqual(table_of(folders)[1][0].percent(), 80.0)

    def test_some_folders_are_shown_by_the_folders_in_them(self):
        self.assertEqual([folder_of(n) for n in ("field/job/A.cpp", "field/A.cpp", "matrix/detail/A.h")],
                         ["field/job", "field", "matrix"])


class Exclusions(unittest.TestCase):
    def test_a_line_that_never_runs_is_not_among_those_that_can_be_reached(self):
        folders, missed, wrong = outcome(exclusion("while (true)\n  Wait();", "Wait();"))
        self.assertEqual((folders["a"][0].excluded, folders["a"][0].percent(), wrong), (1, 100.0, []))
        self.assertEqual(missed, ["a/Sign.cpp:3: x < 0 is true"])

    def test_a_side_that_is_never_taken_leaves_the_other_one(self):
        folders, missed, wrong = outcome(exclusion("if (x < 0) return -1;", "x < 0 is true"))
        self.assertEqual((folders["a"][1].excluded, folders["a"][1].percent(), wrong), (1, 100.0, []))
        self.assertEqual(missed, ["a/Sign.cpp:5: Wait();"])

    def test_what_a_test_runs_is_not_excluded(self):
        for never in ("x < 0 is false", "if (x < 0) return -1;"):
            self.assertEqual(len(outcome(exclusion("if (x < 0) return -1;", never))[2]), 1, never)

    def test_a_remainder_of_runs_beside_the_cases_of_a_switch_refutes_nothing(self):
        text = ["    switch (sign) {", "    if (sign) {"]
        for line, before, wrongs in ((1, 13, 0), (2, 9, 1)):
            place = (line, before, line, before + 4)
            file = File({}, {place: [1, 5]})
            entry = exclusion(text[line - 1], "sign is true")
            folders, missed, wrong = measure({"a/Sign.cpp": file}, [entry], lambda name: text)
            self.assertEqual((folders["a"][1].excluded, missed, len(wrong)), (1, [], wrongs))

    def test_what_is_no_longer_there_is_an_error(self):
        for gone in (exclusion("if (x < 1) return -1;", "x < 1 is true"),
                     exclusion("if (x < 0) return -1;", "x < 1 is true"),
                     exclusion("if (x < 0) return -1;", "Wait();"),
                     exclusion("Wait();", "Wait();", file="a/Gone.cpp")):
            self.assertEqual(len(outcome(gone)[2]), 1, gone)

    def test_a_line_without_code_is_an_error(self):
        self.assertEqual(len(outcome(exclusion("int Sign(int x)", "int Sign(int x)"))[2]), 1)

    def test_an_exclusion_without_a_reason_is_an_error(self):
        self.assertEqual(len(outcome(exclusion("Wait();", "Wait();", reason=" "))[2]), 1)


class TheExclusions(unittest.TestCase):
    def test_of_the_sources_name_code_that_is_there_and_give_a_reason(self):
        with EXCLUSIONS.open("rb") as file:
            for entry in tomllib.load(file).get("exclusion", []):
                text = (ROOT / entry["file"]).read_text(encoding="utf-8").splitlines()
                with self.subTest(file=entry["file"], code=entry["code"]):
                    self.assertTrue(places_of(entry["code"], text)[0])
                    self.assertTrue(entry["never"])
                    self.assertGreater(len(entry["reason"].split()), 3)


if __name__ == "__main__":
    unittest.main()
