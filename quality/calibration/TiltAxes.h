// SPDX-License-Identifier: MIT
//
// What pitch and roll alone tell of the turns: about which of the sensor's axes the pole was
// turned, and whether the two logs were taken for each other.
#pragma once

#include "quality/Calibration.h"

#include <optional>

namespace tiltpole::quality {

/// Axes of the turns by the inclinometers, as angles from those that a turn is to be made about.
struct TiltAxes
{
    /// Of the mean vertical from the sensor's z axis, where the vertical stays near one direction.
    std::optional<double> horizontal; // [degrees]
    /// Of the axis that the vertical goes round about from the sensor's y axis, where it goes all
    /// round.
    std::optional<double> vertical; // [degrees] in [0, 90]
    /// The vertical goes all round in the horizontal turn, and stays in the vertical one.
    bool exchanged = false;
};

TiltAxes TiltAxesOf(const ::quality::CalibrationTurns& turns, int sensorType);

} // namespace tiltpole::quality
