# SPDX-License-Identifier: MIT
import unittest

import numpy as np
import tiltpole

TIP = np.array([4500000.0, 500000.0, 98.0])


def antennas(count, lean=35.0, length=2.0):
    """Positions on the sphere about the tip, evenly around it, at two leans."""
    azimuth = np.arange(count) * 2.39996
    tilt = np.radians(np.where(np.arange(count) % 2, lean, 0.4 * lean))
    return TIP + length * np.column_stack(
        [np.sin(tilt) * np.cos(azimuth), np.sin(tilt) * np.sin(azimuth), np.cos(tilt)]
    )


class Solve(unittest.TestCase):
    def test_finds_the_center_of_the_sphere(self):
        found = tiltpole.solve(antennas(30), 2.0)
        self.assertTrue(found.store, found)
        np.testing.assert_allclose(found.tip, TIP, rtol=0.0, atol=1e-6)
        self.assertEqual(found.used, 30)
        self.assertEqual(repr(found), "<TipEstimate: store, 30 positions>")

    def test_stores_no_tip_that_is_too_uncertain(self):
        found = tiltpole.solve(antennas(6, lean=8.0), 2.0, plan_error=0.5, height_error=0.5)
        self.assertEqual((found.verdict, found.store), ("too uncertain", False))

    def test_stores_no_tip_where_another_fits_as_well(self):
        lean = np.radians(np.linspace(-50.0, 50.0, 30))  # all in one upright plane, 0.6 m from the tip
        within = np.sqrt(1.0 - 0.3**2)
        plane = np.column_stack([within * np.sin(lean), np.full(30, 0.3), within * np.cos(lean)])
        found = tiltpole.solve(TIP + 2.0 * plane, 2.0)
        self.assertEqual((found.verdict, found.store), ("ambiguous", False))

    def test_states_regions_that_follow_from_the_stated_errors(self):
        usual = tiltpole.solve(antennas(30), 2.0)
        rough = tiltpole.solve(antennas(30), 2.0, plan_error=0.03, height_error=0.05)
        self.assertGreater(rough.ellipse_major, 2.0 * usual.ellipse_major)
        np.testing.assert_allclose(usual.covariance, usual.covariance.T, rtol=1e-12)

    def test_leaves_out_what_is_not_finite(self):
        positions = antennas(30)
        positions[7] = np.nan
        self.assertEqual(tiltpole.solve(positions, 2.0).used, 29)

    def test_names_a_wrong_antenna_height_and_a_position_that_is_off(self):
        self.assertEqual(tiltpole.solve(antennas(40), 1.5).verdict, "wrong radius")
        positions = antennas(30)
        positions[11] += 0.5
        found = tiltpole.solve(positions, 2.0)
        self.assertEqual((found.verdict, found.suspect_index), ("outlier", 11))
        self.assertFalse(found.store)

    def test_has_no_solution_from_three_positions(self):
        found = tiltpole.solve(antennas(3), 2.0)
        self.assertEqual((found.verdict, found.store), ("no solution", False))

    def test_names_what_cannot_be(self):
        for arguments, options, message in (
            ((antennas(5)[:, :2], 2.0), {}, r"antennas must have the shape \(n, 3\)"),
            ((antennas(5), 0.0), {}, "antenna_height must be above 0"),
            ((antennas(5), float("nan")), {}, "antenna_height must be above 0"),
        ):
            with self.assertRaisesRegex(ValueError, message):
                tiltpole.solve(*arguments, **options)
        errors = ("plan_error", "height_error", "shared_plan_error", "shared_height_error",
                  "antenna_height_error")
        for error in errors:
            for value in (-1.0, 101.0, float("nan")) + ((0.0,) if "shared" not in error
                                                        and "antenna" not in error else ()):
                with self.assertRaisesRegex(ValueError, "errors must be above 0", msg=error):
                    tiltpole.solve(antennas(5), 2.0, **{error: value})
        exact = {error: 0.0 for error in errors[2:]}
        self.assertTrue(tiltpole.solve(antennas(30), 2.0, **exact).store)


if __name__ == "__main__":
    unittest.main()
