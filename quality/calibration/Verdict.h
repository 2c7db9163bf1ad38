// SPDX-License-Identifier: MIT
//
// The verdict on a calibration whose logs are in order, and its reason.
#pragma once

#include "quality/CalibrationReport.h"
#include "quality/calibration/JointModel.h"

namespace tiltpole::quality {

/// Sets verdict, reason and the heading error they rest on, from the figures of the report. Where
/// the joint fit succeeded, both magnetometers must have their heading error.
void Judge(const ::quality::CalibrationRun& run, const JointModel& model,
           ::quality::CalibrationReport& report);

} // namespace tiltpole::quality
