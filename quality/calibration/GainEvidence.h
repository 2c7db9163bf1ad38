// SPDX-License-Identifier: MIT
//
// What the turns tell of gains that change between them. Of a field or a tilt that changes both
// magnetometers tell the same; of a gain each tells its own story.
#pragma once

#include "quality/calibration/JointModel.h"

namespace tiltpole::quality {

/// What A and B find different in the vertical turn, each by its joint fit, as heading error: their
/// corrected readings apart from noise and length, the change of the dip, the change of the length.
/// Which of them is wrong the turns do not tell. [degrees]
/// @param model  fitted
double HeadingErrorOfGains(const CalibrationTurns& turns, int sensorType, const JointModel& model);

} // namespace tiltpole::quality
