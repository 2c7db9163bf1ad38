// SPDX-License-Identifier: MIT
//
// What is wrong with the logs of a calibration as such: exchanged, with axes under wrong names, or
// of a sensor that sits on the pole otherwise than its type says.
#pragma once

#include "quality/CalibrationReport.h"

#include <optional>
#include <string>
#include <vector>

namespace tiltpole::quality {

struct InputFault
{
    ::quality::Finding finding;
    std::vector<std::string> suspects; // half sentences
};

/// What speaks for looking at the names of the axes.
struct Suspicion
{
    ::quality::JointFitOutcome jointFit;
    double disagreement; // of A and B, systematic [degrees]; 0 where it is not known
    bool turnsBackwards; // a magnetometer's corrected field turns against the angular rate
};

/// The fault of the logs, if they have one that can be named.
std::optional<InputFault> InputFaultOf(const ::quality::CalibrationTurns& turns, int sensorType,
                                       const Suspicion& suspicion);

/// Whether a corrected field turns against the angular rate over the horizontal turn; false where
/// there is no rate to believe.
bool TurnsBackwards(const ::quality::CalibrationRun& run);

} // namespace tiltpole::quality
