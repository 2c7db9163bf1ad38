// SPDX-License-Identifier: MIT
//
// The picture of tiltpole solve: antennas, both tips and the 95 % ellipse in plan, and the
// residual of every position.
#pragma once

#include "apps/cli/solve/SolvedTip.h"
#include <string>

namespace cli {

/// @throws InputError when the file cannot be written
void SaveSolvePicture(const std::string& path, const SolvedTip& solved);

} // namespace cli
