// SPDX-License-Identifier: MIT
//
// Writes the parameter file of a calibration as the library saves it.
#pragma once

#include "positioning/InclineSensor_Position.h"
#include <string>

namespace cli {

/// Replaces the parameter file by the calibration of `position`, after reading the new content back
/// in memory. Bytes of the path are taken as they are; "-" is standard output.
/// @throws InputError, leaving an existing file unchanged, when a value is not finite or the programs
///         would refuse to load it (quality/ParameterFile.h), when the file cannot be written, or when
///         reading the content back gives other values
void WriteParameters(const std::string& path, const CInclineSensor_Position& position);

} // namespace cli
