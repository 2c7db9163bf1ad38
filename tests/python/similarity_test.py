# SPDX-License-Identifier: MIT
import math
import unittest

import numpy as np
import tiltpole

SOURCE = np.array([[0.0, 0.0], [100.0, 0.0], [100.0, 50.0], [0.0, 50.0]])


class Similarity(unittest.TestCase):
    def test_is_found_from_points_that_were_turned_and_moved(self):
        turn = math.radians(30.0)
        matrix = np.array([[math.cos(turn), -math.sin(turn)], [math.sin(turn), math.cos(turn)]])
        target = 1.002 * SOURCE @ matrix.T + [5000.0, 8000.0]
        fit = tiltpole.fit_similarity(SOURCE, target)
        self.assertAlmostEqual(fit.scale, 1.002, places=12)
        self.assertAlmostEqual(fit.rotation, turn, places=12)
        np.testing.assert_allclose(fit.residuals, 0.0, rtol=0.0, atol=1e-9)
        np.testing.assert_allclose(fit.forward(SOURCE), target, rtol=0.0, atol=1e-9)
        np.testing.assert_allclose(fit.backward(target), SOURCE, rtol=0.0, atol=1e-9)

    def test_shows_what_does_not_fit(self):
        target = SOURCE.copy()
        target[0, 0] += 0.4
        residuals = tiltpole.fit_similarity(SOURCE, target).residuals
        self.assertLess(residuals[0, 0], -0.1)
        np.testing.assert_allclose(residuals.sum(axis=0), 0.0, rtol=0.0, atol=1e-9)

    def test_can_be_given(self):
        moved = tiltpole.Similarity(dx=500.0, dy=800.0).forward([[1.0, 2.0]])
        self.assertEqual(moved.tolist(), [[501.0, 802.0]])

    def test_names_what_cannot_be(self):
        for source, target, message in (
            (SOURCE, SOURCE[:3], "same length, not 4 and 3"),
            (SOURCE[:1], SOURCE[:1], "two different source points"),
            (SOURCE[:0], SOURCE[:0], "two different source points"),
            (np.zeros((3, 2)), SOURCE[:3], "two different source points"),
            (SOURCE * float("nan"), SOURCE, "coordinates must be finite"),
        ):
            with self.assertRaisesRegex(ValueError, message):
                tiltpole.fit_similarity(source, target)
        for target in (SOURCE + float("inf"), SOURCE + [[0.0, float("nan")]]):
            with self.assertRaisesRegex(ValueError, "coordinates must be finite"):
                tiltpole.fit_similarity(SOURCE, target)
        with self.assertRaisesRegex(ValueError, "coordinates must be finite"):
            tiltpole.fit_similarity(SOURCE + [[0.0, float("nan")]], SOURCE)
        for name in ("scale", "rotation", "dx", "dy"):
            with self.assertRaisesRegex(ValueError, "scale above 0", msg=name):
                tiltpole.Similarity(**{name: float("nan")})
        with self.assertRaisesRegex(ValueError, "scale above 0"):
            tiltpole.Similarity(scale=0.0)

    def test_needs_points_that_differ_in_one_coordinate_only(self):
        line = np.array([[5.0, 0.0], [5.0, 3.0]])
        fit = tiltpole.fit_similarity(line, line)
        np.testing.assert_allclose(fit.forward(SOURCE), SOURCE, rtol=0.0, atol=1e-9)


if __name__ == "__main__":
    unittest.main()
