# SPDX-License-Identifier: MIT
import math
import os
import tempfile
import unittest

import numpy as np
import tiltpole

# Roll 10 degrees; A sees a level field from (300, 400), B the same with x and y reversed.
LEANING = [0.0, 10.0, 300.0, 400.0, 0.0, -300.0, -400.0, 0.0]
ANTENNA = [4500000.0, 500000.0, 100.0]


class Position(unittest.TestCase):
    def test_steps_from_the_antenna_by_the_length_of_the_pole(self):
        found = tiltpole.Pole().position([LEANING], [ANTENNA], 2.0)
        step = found.tips[0] - ANTENNA
        self.assertAlmostEqual(np.linalg.norm(step), 2.0, places=8)
        self.assertAlmostEqual(step[2], -2.0 * math.cos(math.radians(10.0)), places=8)

    def test_gives_the_same_whether_samples_come_together_or_one_by_one(self):
        random = np.random.default_rng(5)
        samples = np.column_stack(
            [random.uniform(-30, 30, (500, 2)), random.normal(0, 300, (500, 6))]
        )
        antennas = ANTENNA + random.normal(0, 10, (500, 3))
        at_once = tiltpole.Pole(2).position(samples, antennas, 1.8)
        pole = tiltpole.Pole(2)
        for i in range(500):
            one = pole.position(samples[i : i + 1], antennas[i : i + 1], 1.8)
            for together, alone in zip(at_once, one):
                np.testing.assert_array_equal(together[i], alone[0])

    def test_knows_a_pole_that_rests_from_one_that_moves(self):
        samples = np.tile(LEANING, (6, 1))
        samples[3:, 0] += 5.0
        still = tiltpole.Pole().position(samples, np.tile(ANTENNA, (6, 1)), 2.0).still
        self.assertEqual(still.dtype, bool)
        self.assertEqual(still.tolist(), [False, True, True, False, True, True])

    def test_sees_magnetometers_that_disagree(self):
        disturbed = LEANING[:5] + [700.0, -400.0, 0.0]
        found = tiltpole.Pole().position([LEANING, disturbed], [ANTENNA] * 2, 2.0)
        self.assertEqual(found.interference.tolist(), [False, True])

    def test_takes_any_array_of_numbers(self):
        whole = np.array([LEANING], dtype=np.int32)
        strided = np.asfortranarray(np.tile(LEANING, (3, 1)))[::2]
        expected = tiltpole.Pole().position([LEANING], [ANTENNA], 2.0).tips[0]
        for samples in (whole, strided):
            tips = tiltpole.Pole().position(samples, [ANTENNA] * len(samples), 2.0).tips
            np.testing.assert_array_equal(tips[0], expected)

    def test_takes_no_sample_at_all(self):
        found = tiltpole.Pole().position(np.zeros((0, 8)), np.zeros((0, 3)), 2.0)
        self.assertEqual(found.tips.shape, (0, 3))

    def test_names_the_argument_whose_shape_is_wrong(self):
        pole = tiltpole.Pole()
        for samples, antennas, message in (
            ([LEANING[:7]], [ANTENNA], r"samples must have the shape \(n, 8\)"),
            (LEANING, [ANTENNA], r"samples must have the shape \(n, 8\)"),
            ([LEANING], [ANTENNA[:2]], r"antennas must have the shape \(n, 3\)"),
            ([LEANING] * 2, [ANTENNA], "same length, not 2 and 1"),
        ):
            with self.assertRaisesRegex(ValueError, message):
                pole.position(samples, antennas, 2.0)


class Parameters(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = os.path.join(self.folder.name, "pölë.cfg")

    def test_are_the_same_after_saving_and_loading(self):
        pole = tiltpole.Pole()
        calibration = pole.calibration
        correction = calibration.correction_a
        correction.x0, correction.b = 12.5, 1.25
        calibration.correction_a = correction
        calibration.translation = (1.0, -2.0, 3.0)
        calibration.bias_a = 0.75
        pole.calibration = calibration
        pole.save(self.path)

        other = tiltpole.Pole()
        other.load(self.path)
        self.assertEqual(other.calibration.correction_a.x0, 12.5)
        self.assertEqual(other.calibration.correction_a.b, 1.25)
        self.assertEqual(other.calibration.translation, (1.0, -2.0, 3.0))
        self.assertEqual(other.calibration.bias_a, 0.75)

    def test_that_are_damaged_are_refused_and_change_nothing(self):
        pole = tiltpole.Pole()
        pole.save(self.path)
        with open(self.path, "rb") as file:
            content = file.read()
        with open(self.path, "wb") as file:
            file.write(content.replace(b"[MagneticA.b]1.0000000000", b"[MagneticA.b]nan"))
        calibration = pole.calibration
        calibration.bias_b = 3.0
        pole.calibration = calibration
        with self.assertRaisesRegex(ValueError, "MagneticA.b is 'nan', not a number"):
            pole.load(self.path)
        self.assertEqual(pole.calibration.bias_b, 3.0)
        with open(self.path, "wb") as file:
            file.write(content.replace(b"[MagneticA.b]", b"[]").replace(b"[MagneticB.e]", b"[]"))
        with self.assertRaisesRegex(ValueError,
                                    "^" + self.path + ": MagneticA.b is missing; "
                                    "MagneticB.e is missing$"):
            pole.load(self.path)

    def test_that_cannot_be_written_are_an_os_error(self):
        with self.assertRaises(OSError):
            tiltpole.Pole().save(os.path.join(self.folder.name, "no", "such", "folder.cfg"))


if __name__ == "__main__":
    unittest.main()
