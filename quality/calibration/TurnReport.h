// SPDX-License-Identifier: MIT
//
// The figures of one turn for the calibration report.
#pragma once

#include "quality/CalibrationReport.h"
#include "quality/calibration/EightValues.h"
#include "quality/calibration/JointModel.h"

namespace tiltpole::quality {

/// Samples of one turn, before and after screening, and which turn it is.
struct TurnSamples
{
    const std::vector<PoseSensorData>& recorded;
    const std::vector<PoseSensorData>& used;
    bool vertical;
    int sensorType;
};

/// Counts, covered and missing sectors, turning back: what the samples alone tell.
::quality::TurnFigures FiguresOf(const TurnSamples& samples);

/// Standard deviation of the corrected readings from their circle in the plane of the turn, as a
/// share of the radius; 0 for fewer than three readings.
double CircleResidual(const Turn& turn, bool vertical, const FullCorrection& correction);

/// Axis, wobble and, with usable tilt, level error of a turn, seen by one magnetometer.
/// @param correction  of that magnetometer, the best that is known
void DescribeAxis(const Turn& turn, bool vertical, const FullCorrection& correction,
                  bool tiltUsable, ::quality::TurnFigures& figures);

} // namespace tiltpole::quality
