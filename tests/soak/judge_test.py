# SPDX-License-Identifier: MIT
"""The judge of a soak fails what must not pass: one doctored figure at a time."""
import random
import unittest

import judge


def good(**changes):
    noise = random.Random(7)
    samples = [judge.Sample(11.0 + noise.gauss(0.0, 0.05), 21) for _ in range(300)]
    for i in range(20, 300, 60):
        samples[i].descriptors = 20  # unplugged
    soak = judge.Soak(samples, {50: 0.5, 99: 2.0}, 0.2, 1.2, [0.6, 1.2], 2, 17000, 0, 0.5, 2)
    for name, value in changes.items():
        setattr(soak, name, value)
    return soak


def failures(soak):
    return [row.name for row in judge.judged(soak) if not row.holds]


def good_engine():
    rounds = [
        {"samples": 4000 * (i + 1), "blocks": 300 if i else 250, "resident": 9000 if i else 8000, "descriptors": 4}
        for i in range(9)
    ]
    names = ("sample", "sample with an estimate", "sample with a calibration", judge.QUICKEST)
    calls = {
        name: {clock: {"count": 9, "p50": 1.0, "p99": 2.0, "p99.9": 49.0, "most": 9000.0} for clock in ("clock", "processor")}
        for name in names
    }
    outcome = {"samples": 36000, "tips": 36000, "reports": 3599, "live": 3599, "stored": 700, "byOccupation": 200}
    outcome |= {"estimates": 800, "calibrations": 18, "refused": 0, "disturbed": 0}
    return judge.EngineSoak(rounds, calls, outcome, 0.5, 2)


def engine_failures(soak):
    return [row.name for row in judge.judged_engine(soak) if not row.holds]


class JudgeOfTheEngine(unittest.TestCase):
    def test_passes_what_is_flat_and_quick(self):
        self.assertEqual(engine_failures(good_engine()), [])

    def test_fails_one_block_more(self):
        soak = good_engine()
        soak.rounds[-1]["blocks"] += 1
        self.assertEqual(engine_failures(soak), ["blocks of memory, growth"])

    def test_fails_blocks_that_were_not_counted(self):
        soak = good_engine()
        for held in soak.rounds:
            held["blocks"] = 0
        self.assertEqual(engine_failures(soak), ["blocks of memory, growth"])

    def test_fails_growth_of_memory_and_descriptors(self):
        for key, more, row in (("resident", 513, "memory, growth"), ("descriptors", 1, "descriptors, growth")):
            soak = good_engine()
            soak.rounds[-1][key] += more
            self.assertEqual(engine_failures(soak), [row])

    def test_fails_slow_calls_but_where_other_work_interrupts_them(self):
        for name, limit in (("sample", 50), ("sample with an estimate", 2000), ("sample with a calibration", 20000)):
            for clock, row in (("clock", name), ("processor", "  its processor time")):
                soak = good_engine()
                soak.calls[name][clock]["p99.9"] = limit + 0.1
                self.assertEqual(engine_failures(soak), [row])
                soak.load = 8.0
                self.assertEqual(engine_failures(soak), [])

    def test_fails_what_is_slow_in_every_round_on_a_busy_machine_too(self):
        for load in (0.5, 8.0):
            soak = good_engine()
            soak.load = load
            soak.calls[judge.QUICKEST]["clock"]["p99.9"] = 50.1
            self.assertEqual(engine_failures(soak), [judge.QUICKEST])
            soak.calls[judge.QUICKEST]["clock"] |= {"p99.9": 0.0, "count": 0}
            self.assertEqual(engine_failures(soak), [judge.QUICKEST])

    def test_fails_work_that_was_not_done(self):
        for key, value, row in (
            ("tips", 35999, "tips missing"),
            ("live", 3598, "epochs without a tip"),
            ("calibrations", 17, "calibrations missing"),
            ("refused", 1, "refused, disturbed"),
            ("disturbed", 1, "refused, disturbed"),
            ("estimates", 0, "estimates"),
            ("stored", 0, "epochs that may be stored"),
        ):
            soak = good_engine()
            soak.outcome[key] = value
            self.assertEqual(engine_failures(soak), [row])

    def test_fails_a_soak_that_is_too_short_to_say_anything(self):
        soak = good_engine()
        soak.rounds = soak.rounds[:2]
        self.assertEqual(engine_failures(soak), ["rounds of 80 s, but the first"])


class JudgeOfControls(unittest.TestCase):
    LINE = {"held": 5000, "blocks": 0, "resident": 512, "descriptors": 0, "windows": 0, "wrong": 0}

    def test_passes_what_holds_nothing_more(self):
        self.assertTrue(judge.holds_nothing_more(self.LINE))
        self.assertTrue(judge.holds_nothing_more(self.LINE | {"blocks": -3, "resident": -40}))

    def test_fails_anything_more(self):
        for more in ({"blocks": 1}, {"resident": 513}, {"descriptors": 1}, {"windows": 1}, {"wrong": 1}, {"held": 0}):
            self.assertFalse(judge.holds_nothing_more(self.LINE | more), more)


class Judge(unittest.TestCase):
    def test_passes_what_is_flat_but_for_noise(self):
        self.assertEqual(failures(good()), [])

    def test_fails_memory_that_grows_by_three_kibibytes_a_second(self):
        soak = good()
        for i, sample in enumerate(soak.samples):
            sample.memory += i * 3 / 1024
        self.assertEqual(failures(soak), ["memory, growth"])

    def test_fails_memory_that_is_flat_and_too_much(self):
        soak = good()
        for sample in soak.samples:
            sample.memory += 22
        self.assertEqual(failures(soak), ["memory, most"])

    def test_fails_one_descriptor_left_by_each_reconnect(self):
        soak = good()
        for i, sample in enumerate(soak.samples):
            sample.descriptors += i // 60
        self.assertEqual(failures(soak), ["descriptors, growth"])

    def test_fails_each_figure_beyond_its_limit(self):
        for name, value, row in (
            ("latencies", {50: 0.71, 99: 2.0}, "added latency, half"),
            ("hop", -0.01, "added latency, half"),
            ("latencies", {50: 0.5, 99: 3.1}, "latency, 99 in 100"),
            ("processor", 2.1, "processor, of a core"),
            ("recoveries", [0.6, 3.1], "recovery, slowest"),
            ("recoveries", [0.6], "recoveries missing"),
            ("wrong", 1, "wrong epochs"),
            ("received", 0, "epochs received"),
            ("samples", [], "epochs received"),
        ):
            self.assertEqual(failures(good(**{name: value})), [row], name)

    def test_allows_a_busy_machine_ten_milliseconds(self):
        busy = {"load": 8.0, "latencies": {50: 0.9, 99: 9.9}}
        self.assertEqual(failures(good(**busy)), [])
        busy["latencies"] = {50: 9.0, 99: 10.1}
        self.assertEqual(failures(good(**busy)), ["latency, 99 in 100"])


if __name__ == "__main__":
    unittest.main()
