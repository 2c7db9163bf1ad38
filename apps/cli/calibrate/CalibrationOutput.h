// SPDX-License-Identifier: MIT
//
// The output files of a calibration: the report as JSON, the picture, the parameter file.
#pragma once

#include "apps/tables/Output.h"
#include "quality/CalibrationReport.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

/// All figures of a report, angles in degrees, shares as fractions of 1. Figures that could not be
/// computed are null.
nlohmann::ordered_json JsonOf(const quality::CalibrationReport& report,
                              const quality::CalibrationRun& run);

/// The values of a calibration, as in its report.
nlohmann::ordered_json CalibrationJson(const quality::Calibration& calibration);

/// Raw and corrected readings of both turns in their planes, missing sectors marked; PNG or SVG.
/// @throws InputError when the file cannot be written
void SaveCalibrationPicture(tables::OutputFiles& files, const std::string& path,
                            const quality::CalibrationReport& report,
                            const quality::CalibrationRun& run);

/// The content of the parameter file.
/// @throws as ParameterText
std::string ParametersOf(const std::string& path, const quality::Calibration& calibration);

} // namespace cli
