// SPDX-License-Identifier: MIT
//
// What tiltpole transform says about a fit, and the parameter file it shares with itself.
#pragma once

#include "apps/cli/TransformFit.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

std::string FitText(const std::string& file, const TransformFit& fit);

/// Holds the parameters under "parameters", so that it is a parameter file too.
nlohmann::ordered_json FitJson(const std::string& file, const TransformFit& fit);

nlohmann::ordered_json ParametersJson(const Magnetic_FourParameter& parameters);

/// Reads "scale", "rotation" [radians], "dx", "dy" and, where given, "x0", "y0" [m] from a JSON
/// object, or from the object "parameters" within it.
/// @throws InputError for anything else, and for a scale that is not above 0
Magnetic_FourParameter ReadParameters(const std::string& path);

} // namespace cli
