// SPDX-License-Identifier: MIT
//
// What the turns tell of errors of pitch and roll, given the joint fits of both magnetometers.
//
//   pitch = true pitch + offset + drift·(time within the turn, from −1/2 to 1/2)     roll alike
//
// Both corrections and these four errors are solved together by one step of least squares from the
// joint fits: an error of pitch and roll is common to A and B, where iron and mounting turn each
// magnetometer by itself. An offset that turns the inclinometers as a whole against the pole is
// seen no better than iron and mounting are known; that is in the standard deviations. Derivation:
// docs/formulas.md, "Errors of pitch and roll".
#pragma once

#include "quality/CalibrationReport.h"
#include "quality/calibration/JointModel.h"

namespace tiltpole::quality {

using ::quality::TiltEvidence;

/// @param model  fitted
TiltEvidence TiltEvidenceOf(const ::quality::CalibrationTurns& turns, int sensorType,
                            const JointModel& model);

} // namespace tiltpole::quality
