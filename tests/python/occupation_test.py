# SPDX-License-Identifier: MIT
import unittest

import numpy as np
import tiltpole


class Occupation(unittest.TestCase):
    def test_finds_the_tip_of_an_exact_pole(self):
        for motion in ("lean-in", "opposite", "rock", "free"):
            (point,) = tiltpole.simulate_occupations(1, points=1, motion=motion, exact=True)
            found = tiltpole.occupy(*point[:6], pole_length=2.0)
            self.assertEqual(found.advice, "store", found.text)
            np.testing.assert_allclose(found.tip, point.tip, rtol=0.0, atol=3e-3)
            self.assertEqual(repr(found), "<OccupationEstimate: " + found.text + ">")

    def test_is_not_changed_by_epochs_behind_the_last_sample(self):
        (point,) = tiltpole.simulate_occupations(7, points=1)
        found = tiltpole.occupy(*point[:6], pole_length=2.0)
        later = point.seconds[-1] + np.array([0.1, 0.2])
        fields = list(point[:6])
        fields[4] = np.concatenate([point.epoch_seconds, later])
        fields[5] = np.vstack([point.antennas, point.antennas[-1:] + [[9, 9, 9], [9, 9, 9]]])
        np.testing.assert_array_equal(tiltpole.occupy(*fields, pole_length=2.0).tip, found.tip)

    def test_holds_the_true_tip_in_its_ellipse(self):
        points = tiltpole.simulate_occupations(2, points=40, motion="free")
        held = 0
        for point in points:
            found = tiltpole.occupy(*point[:6], pole_length=2.0)
            off = (found.tip - point.tip)[:2]
            weight = np.linalg.inv(found.covariance[:2, :2])
            held += off @ weight @ off < 5.991  # chi-square of two, 95 %
        self.assertGreaterEqual(held, 34)  # 1 in 1000 where 95 of 100 hold

    def test_takes_a_pole_of_a_length_without_error(self):
        (point,) = tiltpole.simulate_occupations(1, points=1, exact=True)
        found = tiltpole.occupy(*point[:6], pole_length=2.0, pole_error=0.0)
        self.assertEqual(found.advice, "store", found.text)
        usual = tiltpole.occupy(*point[:6], pole_length=2.0, pole_error=0.01)
        self.assertGreater(usual.covariance[2, 2], found.covariance[2, 2])

    def test_needs_no_magnetometer(self):
        (point,) = tiltpole.simulate_occupations(3, points=1, lean_to=30.0)
        fields = list(point[:6])
        fields[3] = None
        found = tiltpole.occupy(*fields, pole_length=2.0)
        self.assertLess(np.linalg.norm(found.tip - point.tip), 0.05)
        self.assertTrue(np.isnan(found.magnetic_difference))

    def test_refuses_a_wrong_length(self):
        (point,) = tiltpole.simulate_occupations(4, points=1, lean_to=30.0)
        found = tiltpole.occupy(*point[:6], pole_length=1.85)
        self.assertEqual(found.advice, "refuse")
        self.assertIn("length", found.text)

    def test_has_no_tip_without_epochs(self):
        (point,) = tiltpole.simulate_occupations(5, points=1)
        found = tiltpole.occupy(*point[:4], [], np.zeros((0, 3)), pole_length=2.0)
        self.assertIsNone(found.tip)
        self.assertEqual(found.advice, "refuse")

    def test_names_what_cannot_be(self):
        (point,) = tiltpole.simulate_occupations(6, points=1)
        for change, message in (
            ({0: point.seconds[:-1]}, "seconds and rates must have the same length"),
            ({1: point.rates[:, :2]}, r"rates must have the shape \(n, 3\)"),
            ({3: point.magnetic[:-1]}, "seconds and magnetic must have the same length"),
            ({4: point.epoch_seconds[:-1]}, "epoch_seconds and antennas must have"),
        ):
            fields = list(point[:6])
            for index, value in change.items():
                fields[index] = value
            with self.assertRaisesRegex(ValueError, message):
                tiltpole.occupy(*fields, pole_length=2.0)
        fields = list(point[:6])
        fields[0] = np.reshape(point.seconds, (-1, 1))
        with self.assertRaisesRegex(ValueError, r"seconds must have the shape \(n,\)"):
            tiltpole.occupy(*fields, pole_length=2.0)
        bounds = {"pole_length": (0.0, 101.0), "magnetic_bias": (-361.0, 361.0),
                  "delay": (-11.0, 11.0), "pole_error": (-0.1, 101.0), "plan_error": (0.0, 101.0),
                  "height_error": (0.0, 101.0), "axis_error": (0.0, 91.0),
                  "accelerometer_error": (0.0, 91.0)}
        for options in [{"pole_length": 2.0, name: value} for name, values in bounds.items()
                        for value in (*values, float("nan"))]:
            with self.assertRaisesRegex(ValueError, "out of its range"):
                tiltpole.occupy(*point[:6], **options)


class Simulation(unittest.TestCase):
    def test_repeats_itself_for_the_same_seed_only(self):
        first, second, other = (
            tiltpole.simulate_occupations(seed, points=1)[0].rates for seed in (7, 7, 8)
        )
        np.testing.assert_array_equal(first, second)
        self.assertFalse(np.array_equal(first, other))

    def test_lasts_as_long_as_it_is_asked_to(self):
        for seconds in (9.0, 15.0):
            (point,) = tiltpole.simulate_occupations(1, points=1, seconds=seconds)
            self.assertAlmostEqual(point.seconds[-1] - point.seconds[0], seconds, delta=0.1)

    def test_names_what_cannot_be(self):
        with self.assertRaisesRegex(ValueError, "no motion 'jump'"):
            tiltpole.simulate_occupations(1, motion="jump")
        with self.assertRaises(ValueError):
            tiltpole.simulate_occupations(1, points=-1)


if __name__ == "__main__":
    unittest.main()
