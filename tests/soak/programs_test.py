# SPDX-License-Identifier: MIT
"""Short soaks of the library and of the controls go through, and what they print is judged. Times are not looked at.

usage: programs_test.py ENGINE_SOAK [CONTROLS_SOAK]
"""
import sys
import time
import unittest

import controls
import engine
import judge


class Programs(unittest.TestCase):
    def test_engine_does_its_work_and_holds_what_it_held(self):
        soak = engine.soaked(ENGINE, 16000)
        self.assertEqual(len(soak.rounds), 4)
        self.assertEqual(soak.outcome["samples"], 16000)
        missed = {row.name for row in judge.judged_engine(soak) if not row.holds}
        times = {"sample", "sample with an estimate", "sample with a calibration", "  its processor time", judge.QUICKEST}
        unknown = {"memory, growth"}  # of some minutes; and blocks under another allocator
        if soak.rounds[0]["blocks"] == 0:
            unknown |= {"blocks of memory, growth"}
        self.assertEqual(missed - times - unknown, set())

    def test_engine_keeps_the_pace(self):
        began = time.monotonic()
        soak = engine.soaked(ENGINE, 25, "at that pace")
        self.assertEqual(soak.calls["sample"]["clock"]["count"], 25)
        self.assertGreaterEqual(time.monotonic() - began, 24 / engine.RATE)

    def test_engine_does_the_same_with_cold_caches(self):
        cold, warm = (engine.soaked(ENGINE, 200, mode).outcome for mode in ("at once, caches cold", "at once"))
        self.assertEqual(cold["samples"], 200)
        self.assertEqual(cold, warm)

    def test_controls_hold_what_they_held(self):
        if CONTROLS is None:
            self.skipTest("built without controls")
        lines = list(controls.soaked(CONTROLS, 5, 50))
        self.assertEqual(len({line["control"] for line in lines}), 7)
        self.assertEqual(len(lines), 13)
        for line in lines:
            self.assertTrue(judge.holds_nothing_more(line | {"held": 1, "resident": 0}), line)


if __name__ == "__main__":
    CONTROLS = sys.argv.pop() if len(sys.argv) > 2 else None
    ENGINE = sys.argv.pop()
    unittest.main()
