// SPDX-License-Identifier: MIT
/// @struct quality::TurnFigures
/// How a turn was made, as the calibration report (CalibrationReport.h) describes it.
///
///     angles    degrees; azimuths about the turn's center, as the sample filters count them
///     readings  raw sensor counts
#pragma once

#include "framework/core/Export.h"

#include <optional>
#include <string>
#include <vector>

namespace quality {

/// A part of a turn without samples, by azimuth about the turn's center, in whole degrees that are
/// multiples of five. `to` is below `from` where the sector extends across 360.
struct TILTPOLE_API MissingSector
{
    int from = 0;
    int to = 360;

    /// "040-055"
    std::string Name() const;
};

/// The circle through the raw readings of magnetometer A in the plane of a turn. [counts]
struct TurnCircle
{
    double x = 0.0;      // center
    double second = 0.0; // center, y or z
    double radius = 0.0;
};

/// What the recorded accelerations say about how steadily a turn was made. [g]
struct TurnAcceleration
{
    double length = 1.0;  // median; 1 for a pole turned slowly
    double leftOut = 0.0; // share of samples whose length is off by more than a tenth
    /// What turns with the pole, as the pull of a swing does; absent without gyros.
    std::optional<double> outward;
};

struct TurnFigures
{
    int recorded = 0;                   // samples before screening
    int used = 0;                       // samples after screening
    TurnCircle circle;                  // of the recorded samples
    double covered = 0.0;               // of the turn, by the used samples [degrees]
    std::vector<MissingSector> missing; // gaps wider than 15 degrees, or than the steps
    double turningBack = 0.0;           // share of recorded samples behind the furthest one
    double circleA = 0.0;               // distance of corrected readings from their circle in the
    double circleB = 0.0;               // turn's plane, RMS, as a share of its radius
    double axisError = 0.0;             // between the turn's axis and the sensor's [degrees]
    double wobble = 0.0;                // of that axis, standard deviation [degrees]
    std::optional<double> levelError;   // of the axis in space, where tilt is usable [degrees]
    std::optional<TurnAcceleration> acceleration; // absent where none is recorded
};

} // namespace quality
