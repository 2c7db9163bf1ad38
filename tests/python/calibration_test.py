# SPDX-License-Identifier: MIT
import unittest

import numpy as np
import tiltpole

HARD_IRON = (60.0, -25.0, 40.0)


class Calibration(unittest.TestCase):
    def test_finds_the_hard_iron_of_turns_about_the_axes(self):
        horizontal, vertical = tiltpole.simulate_turns(3, hard_iron_a=HARD_IRON, noise=0.2)
        for method in ("solver", "joint"):
            result = tiltpole.calibrate(horizontal, vertical, method=method)
            self.assertTrue(result.accepted, result.text)
            found = result.calibration.correction_a
            np.testing.assert_allclose((found.x0, found.y0, found.z0), HARD_IRON, rtol=0.0, atol=3.0)

    def test_makes_the_magnetometers_of_a_pole_agree(self):
        horizontal, vertical = tiltpole.simulate_turns(4, noise=0.2)
        pole = tiltpole.Pole()
        antennas = np.zeros((len(horizontal), 3))
        before = pole.position(horizontal[:, :8], antennas, 2.0)
        pole.calibration = tiltpole.calibrate(horizontal, vertical).calibration
        after = pole.position(horizontal[:, :8], antennas, 2.0)

        def apart(found):
            turned = np.radians(found.heading_b - found.heading_a)
            return np.degrees(np.abs(np.angle(-np.exp(1j * turned)))).max()

        self.assertGreater(apart(before), 5.0)
        self.assertLess(apart(after), 1.0)

    def test_adds_the_angles_that_are_given(self):
        turns = tiltpole.simulate_turns(5)
        without = tiltpole.calibrate(*turns, method="joint").calibration
        given = tiltpole.calibrate(*turns, method="joint", bias_a=-1.5, bias_b=2.0).calibration
        self.assertAlmostEqual(given.bias_a - without.bias_a, -1.5, places=12)
        self.assertAlmostEqual(given.bias_b - without.bias_b, 2.0, places=12)

    def test_refuses_a_turn_that_is_not_there_and_says_why(self):
        horizontal, vertical = tiltpole.simulate_turns(6)
        result = tiltpole.calibrate(horizontal, vertical[:5], method="joint")
        self.assertFalse(result.accepted)
        self.assertEqual(result.verdict, "refused")
        self.assertEqual(result.reason, "The joint fit found no calibration.")
        self.assertIn("5 recorded, 0 used", result.text)

    def test_names_what_cannot_be(self):
        turn = np.zeros((20, 8))
        with self.assertRaisesRegex(ValueError, r"vertical must have the shape \(n, 8\)"):
            tiltpole.calibrate(turn, turn[:, :7])
        with self.assertRaisesRegex(ValueError, r"horizontal must have the shape \(n, 8\)"):
            tiltpole.calibrate(np.zeros(8), turn)
        with self.assertRaisesRegex(ValueError, "not 'best'"):
            tiltpole.calibrate(turn, turn, method="best")


if __name__ == "__main__":
    unittest.main()
