// SPDX-License-Identifier: MIT
//
// What gyros tell of pitch and roll. The vertical stands still in space, so the attitude by the
// gyros takes the reported vertical of every sample to one direction once the errors of pitch and
// roll are taken off:
//
//   R_i·up_i(offset ± step/2 + drift·t_i) + θ_i × R_i·up_i = u
//
// R_i is the attitude by the gyros since the start of the turn, u the vertical there, t_i the time
// within the turn from −1/2 to 1/2, and θ_i what errors of the gyros have turned R_i by: their
// bias, how they sit against the inclinometers, and the time between samples, which logs tell to a
// second only. All are solved together by least squares, with what is known of gyros beforehand.
//
// For the axes of type 1 alone. With the others the vertical turn is about the forward axis, which
// pitch counts the slope of and roll goes round: a step of pitch looks like an axis that slopes, a
// step of roll like a turn that began elsewhere, and the vertical stands still with either.
// Derivation: docs/formulas.md, "Errors of pitch and roll by gyros".
#pragma once

#include "quality/CalibrationReport.h"
#include "quality/calibration/JointModel.h"

#include <optional>

namespace tiltpole::quality {

/// @param model  fitted; its correction of A tells how fast a turn went
/// @return nothing with other axes than those of sensor type 1, where a turn has no gyros or too few
///         samples, or where the gyros follow the turns so badly that a step is not known to 0.6
///         degrees
std::optional<::quality::GyroTilt> TiltByGyros(const CalibrationTurns& turns, int sensorType,
                                               const JointModel& model);

} // namespace tiltpole::quality
