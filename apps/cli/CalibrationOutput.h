// SPDX-License-Identifier: MIT
//
// What a calibration leaves: the report as JSON, the picture, the parameter file.
#pragma once

#include "quality/CalibrationReport.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

/// All figures of a report, angles in degrees, shares as parts of one. What could not be computed
/// is null.
nlohmann::ordered_json JsonOf(const quality::CalibrationReport& report,
                              const quality::CalibrationRun& run);

/// Raw and corrected readings of both turns in their planes, missing sectors marked; PNG or SVG.
/// @throws InputError when the file cannot be written
void SaveCalibrationPicture(const std::string& path, const quality::CalibrationReport& report,
                            const quality::CalibrationRun& run);

/// Writes a parameter file beside its place, reads it back and only then puts it in its place.
/// @throws InputError, with an old file as it was, when a value is no number, when the file cannot
///         be written, or when it does not come back as it was written
void SaveParameters(const std::string& path, const quality::Calibration& calibration);

} // namespace cli
