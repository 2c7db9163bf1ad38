// SPDX-License-Identifier: MIT
//
// Error dumps of the calibration: the horizontal samples of each failed attempt, appended to one
// file, each under a header of its own.
#pragma once

#include "positioning/PoseSensorData.h"
#include <string>
#include <vector>

namespace cli {

/// The attempts of a dump, in the file's order; attempts without samples are left out.
/// @throws InputError when the file cannot be read or is not a dump
std::vector<std::vector<PoseSensorData>> ReadDump(const std::string& path);

/// The horizontal samples of one attempt as lines of text: counts, coverage, and which fit of the
/// solver fails on them.
std::string DescribeAttempt(const std::vector<PoseSensorData>& samples, int sensorType);

} // namespace cli
