// SPDX-License-Identifier: MIT
//
// The two turns of a magnetometer calibration, by the axis that the pole is turned about.
#pragma once

#include <cstdint>

namespace tiltpole::survey {

enum class TurnAxis : std::uint8_t {
    Horizontal, // about the sensor's z axis, the pole upright
    Vertical,   // about the sensor's y axis, the pole going over head
};

} // namespace tiltpole::survey
