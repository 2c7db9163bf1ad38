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
