// SPDX-License-Identifier: MIT
//
// The recording of a fixed antenna, as noise of a simulated one.
#pragma once

#include "simulation/Occupation.h"
#include <string>

namespace cli {

/// One position a line, one a second: easting, northing and height [m], separated by blanks; what
/// follows is ignored, as are empty lines. The mean position counts as the true one.
/// @throws InputError when the file cannot be read, a line is something else, or there are fewer
///         than two positions
simulation::RecordedNoise ReadAntennaRecord(const std::string& path);

} // namespace cli
