# SPDX-License-Identifier: MIT
"""The tip of a leaning survey pole: position, calibration, solution without a heading.

>>> import numpy as np, tiltpole
>>> pole = tiltpole.Pole()
>>> sample = [[0.0, 10.0, 300.0, 400.0, 0.0, -300.0, -400.0, 0.0]]
>>> pole.position(sample, [[4500000.0, 500000.0, 100.0]], 2.0).tips.round(4).tolist()
[[4500000.2763, 499999.7896, 98.0304]]

Coordinates are N, E, h in meters, angles in degrees, azimuths clockwise from north, magnetometer
readings in counts. Arrays may be anything that NumPy turns into numbers.
"""

from ._tiltpole import (
    Calibration,
    CalibrationResult,
    Correction,
    OccupationEstimate,
    OccupiedPoint,
    Pole,
    Positions,
    Similarity,
    TipEstimate,
    calibrate,
    fit_similarity,
    occupy,
    simulate_occupations,
    simulate_turns,
    solve,
)

__all__ = [
    "Calibration",
    "CalibrationResult",
    "Correction",
    "OccupationEstimate",
    "OccupiedPoint",
    "Pole",
    "Positions",
    "Similarity",
    "TipEstimate",
    "calibrate",
    "fit_similarity",
    "occupy",
    "simulate_occupations",
    "simulate_turns",
    "solve",
]
