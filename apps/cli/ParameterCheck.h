// SPDX-License-Identifier: MIT
//
// Loads the parameter file of a calibration for a program, which refuses a damaged one.
#pragma once

#include "quality/ParameterFile.h"
#include <string>

namespace cli {

/// Loads a complete and plausible calibration.
/// @param partial  keys may be missing; their values in `position` are kept
/// @throws InputError naming every key that is missing or not plausible
void LoadParameters(const std::string& path, CInclineSensor_Position& position,
                    bool partial = false);

} // namespace cli
