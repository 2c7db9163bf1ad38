// SPDX-License-Identifier: MIT
//
// Which axes of a magnetometer are reversed or exchanged.
//
// The 48 ways to name three axes and their signs are tried on the readings of one magnetometer at a
// time, and on both alike. A way counts where a quick joint fit of the turns so named succeeds
// (right-handed, near the sensor's own axes, the field at one angle to the vertical), where A and B
// then find the same dip and the same headings, and where the field turns as the angular rate
// tells, if there is one. Of several the simplest is named; where the readings as they are belong
// to them, none.
//
// What two turns cannot show without an angular rate: y reversed in both magnetometers alike, where
// the pole was plumb and its axes exact; and x and z, or all three, reversed in both alike, which
// is the field of the other hemisphere.
#pragma once

#include "quality/Calibration.h"
#include "survey/Reading.h"

#include <Eigen/Core>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tiltpole::quality {

/// Axes under other names: component i of the renamed reading is sign[i]·reading[source[i]].
struct AxisNames
{
    std::array<int, 3> source = {0, 1, 2};
    std::array<int, 3> sign = {1, 1, 1};

    Eigen::Matrix3d Matrix() const;
    bool AreOwn() const;

    /// What is wrong with axes that have to be renamed so: "y looks reversed", "x and z look
    /// exchanged"; empty for the sensor's own names.
    std::string Fault() const;
};

/// Faults as half sentences, "magnetometer A: y looks reversed"; more than one where the turns
/// cannot tell which of them it is. Empty where the readings fit as they are, or no way fits.
/// @param turns  recorded samples
std::vector<std::string> AxisFaultsOf(const ::quality::CalibrationTurns& turns, int sensorType);

/// Whether both raw magnetometers turned as if the horizontal log were the vertical one and the
/// other way round: z varies in the horizontal one and y in the vertical one.
bool LogsLookExchanged(const ::quality::CalibrationTurns& turns);

} // namespace tiltpole::quality
