// SPDX-License-Identifier: MIT
//
// The parameter file of a calibration as the library saves it.
#pragma once

#include "positioning/InclineSensor_Position.h"
#include <string>

namespace cli {

/// The content of the parameter file with the calibration of `position`, read back in memory.
/// @param path  of the file, for messages
/// @throws InputError when a value is not finite or the programs would refuse to load it
///         (quality/ParameterFile.h), or when reading the content back gives other values
std::string ParameterText(const std::string& path, const CInclineSensor_Position& position);

} // namespace cli
