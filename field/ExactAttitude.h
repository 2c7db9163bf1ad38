// SPDX-License-Identifier: MIT
/// @file
/// The exact attitude of a straight pole from pitch, roll and heading, and the tip by it. With
/// errorless sensors the tip is exact at every lean; CInclineSensor_Position, which takes roll as a
/// turn in the heading and as a slope in the step to the tip, then misses it by up to 1 mm at 10
/// degrees of lean, 14 at 20, 71 at 30 and 131 at 35 (pole of 2 m, dip 66 degrees, roll a slope; 2,
/// 17, 64 and 108 for a turn).
///
///     field::Tilt tilt;
///     tilt.pitch = sample.dPitch;
///     tilt.roll = sample.dRoll;
///     tilt.meaning = field::PitchRoll::Slopes;
///     const double heading = field::MagneticHeading(tilt, reading) - bias;
///     const xyhCoordinate tip = field::ExactTip(antenna, 2.0, tilt, heading);
///
///     sensor     axes by sensor type: 1 is x forward, y left, z up the pole; every other value is x right,
///                y forward, z up the pole
///     survey     x north, y east, h up [m]
///     angles     [degrees]; positive pitch raises the forward axis, positive roll lowers the right side;
///                heading: azimuth of the levelled forward axis, from north towards east
///
/// Formulas (derivation: docs/occupation.md, "Attitude"), for type 1:
///
///     u = (sin p, sin r, √(1 − sin²p − sin²r))          pitch and roll as slopes
///     u = (sin p, cos p·sin r, cos p·cos r)             as turns, pitch last
///     f = (e − (e·u) u) / |e − (e·u) u|,  l = u × f      e: the forward axis of the sensor
///     pole = (f·z, l·z, u·z)                            z: the pole's axis in the sensor
///     north = cos H·(f·z) + sin H·(l·z),  east = sin H·(f·z) − cos H·(l·z),  up = u·z
///     tip = antenna − L·(north, east, up)
///
/// The two meanings of roll differ by sin r (slope) = cos p·sin r (turn).
#pragma once

#include "framework/core/Export.h"
#include "positioning/PoseSensorData.h"

namespace field {

/// What a sensor reports as pitch and roll.
enum class PitchRoll {
    Slopes, ///< inclinations of the forward and of the left axis against the horizontal
    Turns, ///< pitch turns the levelled sensor about its left axis, roll then about its forward axis
};

/// Inclination of the sensor.
struct Tilt
{
    double pitch = 0.0; ///< [degrees]
    double roll = 0.0;  ///< [degrees]
    PitchRoll meaning = PitchRoll::Slopes;
    int sensorType = 1; ///< selects the axes
};

/// A vector in the axes of the sensor, in its own unit.
struct SensorVector
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// The level frame in the axes of the sensor: unit vectors at right angles to each other.
struct LevelAxes
{
    SensorVector forward; ///< horizontal, in the vertical plane of the sensor's forward axis
    SensorVector left;    ///< horizontal
    SensorVector up;
};

/// The level frame at an inclination. NaN where slopes belong to no direction (sin²p + sin²r > 1);
/// forward and left are those of rounding errors where the forward axis is vertical.
TILTPOLE_API LevelAxes LevelAxesOf(const Tilt& tilt);

/// Azimuth of the levelled forward axis from magnetic north [degrees], in [0, 360).
/// @param reading  corrected reading of magnetometer A [any unit]
/// @return NaN where the level frame is NaN, 0 where the field has no horizontal part
TILTPOLE_API double MagneticHeading(const Tilt& tilt, const SensorVector& reading);

/// The unit vector up the pole, from tip to antenna: x north, y east, h up.
/// @param heading  azimuth of the levelled forward axis [degrees]
TILTPOLE_API xyhCoordinate PoleDirection(const Tilt& tilt, double heading);

/// The tip of a straight pole: antenna − poleLength·PoleDirection(tilt, heading). Rounding: below
/// 1e-9 m at survey coordinates and leans to 45 degrees (ExactAttitude.FindsTheTipOfAStraightPole).
/// @param poleLength  antenna to tip [m]
TILTPOLE_API xyhCoordinate ExactTip(const xyhCoordinate& antenna, double poleLength,
                                    const Tilt& tilt, double heading);

} // namespace field
