// SPDX-License-Identifier: MIT
//
// The log of a pole: poses with headings, and antenna positions.
#pragma once

#include "positioning/InclineSensor_Position.h"
#include "positioning/PoseSensorData.h"

#include <string>
#include <vector>

namespace gallery {

struct ReplaySample
{
    PoseSensorData pose; // headings computed
    xyhCoordinate antenna;
};

/// @throws tables::InputError when the log cannot be read
std::vector<ReplaySample> ReadReplay(const std::string& path);

} // namespace gallery
