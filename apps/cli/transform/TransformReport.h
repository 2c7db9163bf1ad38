// SPDX-License-Identifier: MIT
//
// The report of a fit of tiltpole transform, and the parameter file between `fit` and `apply`.
#pragma once

#include "apps/cli/transform/TransformFit.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

std::string FitText(const std::string& file, const TransformFit& fit);

/// Contains the parameters as "parameters", so that it can serve as a parameter file.
nlohmann::ordered_json FitJson(const std::string& file, const TransformFit& fit);

nlohmann::ordered_json ParametersJson(const Magnetic_FourParameter& parameters);

/// Reads "scale", "rotation" [radians], "dx", "dy" and, if present, "x0", "y0" [m] from a JSON
/// object, or from its member "parameters".
/// @throws InputError for other content, and for a scale that is not positive
Magnetic_FourParameter ReadParameters(const std::string& path);

} // namespace cli
