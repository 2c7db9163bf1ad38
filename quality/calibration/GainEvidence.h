// SPDX-License-Identifier: MIT
//
// What the turns tell of gains that change between them. Of a field or a tilt that changes both
// magnetometers tell the same; of a gain each tells its own story, or both the same by chance. A
// gain of x or y then leaves the vertical part of the field as it is, as another field hardly does.
#pragma once

#include "quality/calibration/JointModel.h"

namespace tiltpole::quality {

/// Heading errors by gains that change. [degrees]
struct GainEvidence
{
    /// By what A and B find different in the vertical turn, each by its joint fit: their corrected
    /// readings apart from noise and length, the change of the dip, the change of the length. Which
    /// of them is wrong the turns do not tell.
    double apart = 0.0;
    /// By a level part of the field that changes for both alike and a vertical part that does not.
    double alike = 0.0;
};

/// @param model  fitted
GainEvidence GainEvidenceOf(const CalibrationTurns& turns, int sensorType, const JointModel& model);

} // namespace tiltpole::quality
