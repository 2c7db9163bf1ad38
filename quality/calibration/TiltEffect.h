// SPDX-License-Identifier: MIT
//
// What errors of pitch and roll that gyros have seen did to a joint fit: both turns are fitted
// again with pitch and roll set right, and the headings of the two fits are compared.
#pragma once

#include "quality/CalibrationReport.h"
#include "quality/calibration/JointModel.h"

#include <array>
#include <optional>

namespace tiltpole::quality {

/// Heading errors of a joint fit, RMS over all headings. [degrees]
struct TiltEffect
{
    double inUse = 0.0;    // formed with pitch and roll as reported after both turns
    double trueTilt = 0.0; // formed with true pitch and roll
};

/// Of what the gyros see, that is counted which chance does not explain.
/// @param model  fitted to `turns`
/// @return for A and B; nothing where a fit with pitch and roll set right finds no end
std::optional<std::array<TiltEffect, 2>> TiltEffectOf(const CalibrationTurns& turns, int sensorType,
                                                      const JointModel& model,
                                                      const ::quality::GyroTilt& seen);

} // namespace tiltpole::quality
