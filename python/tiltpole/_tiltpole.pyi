# SPDX-License-Identifier: MIT
from typing import Literal, NamedTuple, Optional

import numpy as np
from numpy.typing import ArrayLike, NDArray

Doubles = NDArray[np.float64]

class Correction:
    x0: float
    y0: float
    z0: float
    a: float
    b: float
    c: float
    d: float
    e: float
    def __init__(self) -> None: ...

class Calibration:
    correction_a: Correction
    correction_b: Correction
    translation: tuple[float, float, float]
    bias_a: float
    bias_b: float
    def __init__(self) -> None: ...

class Positions(NamedTuple):
    tips: Doubles
    heading_a: Doubles
    heading_b: Doubles
    heading_y: Doubles
    still: NDArray[np.bool_]
    interference: NDArray[np.bool_]

class Pole:
    calibration: Calibration
    @property
    def sensor_type(self) -> int: ...
    def __init__(self, sensor_type: int = 1) -> None: ...
    def load(self, path: str) -> None: ...
    def save(self, path: str) -> None: ...
    def position(self, samples: ArrayLike, antennas: ArrayLike, length: float) -> Positions: ...

class CalibrationResult:
    @property
    def accepted(self) -> bool: ...
    @property
    def verdict(self) -> Literal["good", "usable", "unchecked", "poor", "refused"]: ...
    @property
    def reason(self) -> str: ...
    @property
    def advice(self) -> str: ...
    @property
    def headline(self) -> str: ...
    @property
    def text(self) -> str: ...
    @property
    def heading_error(self) -> float: ...
    @property
    def suspects(self) -> list[str]: ...
    @property
    def calibration(self) -> Calibration: ...

def calibrate(
    horizontal: ArrayLike,
    vertical: ArrayLike,
    *,
    method: Literal["solver", "joint"] = "solver",
    bias_a: float = 0.0,
    bias_b: float = 0.0,
    sensor_type: int = 1,
) -> CalibrationResult: ...

class TipEstimate:
    @property
    def store(self) -> bool: ...
    @property
    def verdict(
        self,
    ) -> Literal[
        "store", "no solution", "outlier", "wrong radius", "ambiguous", "too uncertain"
    ]: ...
    @property
    def tip(self) -> Doubles: ...
    @property
    def covariance(self) -> Doubles: ...
    @property
    def ellipse_major(self) -> float: ...
    @property
    def ellipse_minor(self) -> float: ...
    @property
    def ellipse_azimuth(self) -> float: ...
    @property
    def height_half_interval(self) -> float: ...
    @property
    def residual_rms(self) -> float: ...
    @property
    def used(self) -> int: ...
    @property
    def suspect_index(self) -> int: ...
    @property
    def suspect_ratio(self) -> float: ...
    @property
    def radius_excess(self) -> float: ...
    @property
    def radius_excess_limit(self) -> float: ...
    @property
    def direction_spread(self) -> float: ...

def solve(
    antennas: ArrayLike,
    antenna_height: float,
    *,
    plan_error: float = 0.008,
    height_error: float = 0.015,
    shared_plan_error: float = 0.003,
    shared_height_error: float = 0.0105,
    antenna_height_error: float = 0.002,
) -> TipEstimate: ...

class OccupationEstimate:
    @property
    def advice(self) -> Literal["store", "move", "refuse"]: ...
    @property
    def text(self) -> str: ...
    @property
    def tip(self) -> Optional[Doubles]: ...
    @property
    def covariance(self) -> Doubles: ...
    @property
    def ellipse_major(self) -> float: ...
    @property
    def ellipse_minor(self) -> float: ...
    @property
    def ellipse_azimuth(self) -> float: ...
    @property
    def height_half_interval(self) -> float: ...
    @property
    def heading(self) -> float: ...
    @property
    def heading_error(self) -> float: ...
    @property
    def lean(self) -> float: ...
    @property
    def magnetic_difference(self) -> float: ...
    @property
    def length_error(self) -> float: ...
    @property
    def epochs(self) -> int: ...

def occupy(
    seconds: ArrayLike,
    rates: ArrayLike,
    accelerations: ArrayLike,
    magnetic: Optional[ArrayLike],
    epoch_seconds: ArrayLike,
    antennas: ArrayLike,
    *,
    pole_length: float,
    sensor_type: int = 1,
    magnetic_bias: float = 0.0,
    delay: float = 0.0,
    pole_error: float = 0.002,
    plan_error: float = 0.004,
    height_error: float = 0.011,
    axis_error: float = 0.15,
    accelerometer_error: float = 0.15,
) -> OccupationEstimate: ...

class Similarity:
    @property
    def scale(self) -> float: ...
    @property
    def rotation(self) -> float: ...
    @property
    def dx(self) -> float: ...
    @property
    def dy(self) -> float: ...
    @property
    def residuals(self) -> Doubles: ...
    def __init__(
        self, scale: float = 1.0, rotation: float = 0.0, dx: float = 0.0, dy: float = 0.0
    ) -> None: ...
    def forward(self, points: ArrayLike) -> Doubles: ...
    def backward(self, points: ArrayLike) -> Doubles: ...

def fit_similarity(source: ArrayLike, target: ArrayLike) -> Similarity: ...

class OccupiedPoint(NamedTuple):
    seconds: Doubles
    rates: Doubles
    accelerations: Doubles
    magnetic: Doubles
    epoch_seconds: Doubles
    antennas: Doubles
    tip: Doubles

def simulate_occupations(
    seed: int,
    *,
    points: int = 8,
    motion: Literal["lean-in", "opposite", "rock", "hold", "free"] = "lean-in",
    seconds: Optional[float] = None,
    lean_to: Optional[float] = None,
    pole_length: float = 2.0,
    exact: bool = False,
) -> list[OccupiedPoint]: ...
def simulate_turns(
    seed: int,
    *,
    hard_iron_a: tuple[float, float, float] = (45.0, -30.0, 20.0),
    hard_iron_b: tuple[float, float, float] = (-20.0, 40.0, 15.0),
    noise: float = 1.0,
    level_error: float = 0.0,
    axis_error: float = 0.0,
    wobble: float = 0.0,
) -> tuple[Doubles, Doubles]: ...
