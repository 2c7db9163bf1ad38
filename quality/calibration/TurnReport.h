// SPDX-License-Identifier: MIT
//
// The figures of one turn for the calibration report.
#pragma once

#include "quality/TurnFigures.h"
#include "quality/calibration/FieldModel.h"
#include "survey/TurnAxis.h"

namespace tiltpole::quality {

using ::quality::TurnFigures;
using survey::TurnAxis;

/// Samples of one turn, before and after screening, and which turn it is.
struct TurnSamples
{
    const std::vector<PoseSensorData>& recorded;
    const std::vector<PoseSensorData>& used;
    TurnAxis axis;
    int sensorType;
};

/// Counts, covered and missing sectors, turning back: everything that needs no correction.
TurnFigures FiguresOf(const TurnSamples& samples);

/// Standard deviation of the corrected readings from their circle in the plane of the turn, as a
/// share of its radius; 0 for fewer than three readings.
double CircleResidual(const Turn& turn, TurnAxis axis, const FullCorrection& correction);

/// Whether pitch and roll of a recording can be believed.
enum class Tilt { Usable, Unusable };

/// Sets axis error and wobble of a turn and, with usable tilt, its level error.
/// @param turn        as one magnetometer sees it
/// @param correction  the best known one of that magnetometer
void DescribeAxis(const Turn& turn, TurnAxis axis, const FullCorrection& correction, Tilt tilt,
                  TurnFigures& figures);

} // namespace tiltpole::quality
