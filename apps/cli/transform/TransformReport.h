// SPDX-License-Identifier: MIT
//
// The report of a fit of tiltpole transform, and the parameter file between `fit` and `apply`.
#pragma once

#include "apps/cli/transform/TransformVerdict.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

struct FitReport
{
    std::string file;
    TransformFit fit;
    FitLimits limits;
    std::vector<std::string> dropped; // as given
    bool acceptUnchecked = false;
};

std::string FitText(const FitReport& report, const FitJudgment& judgment);

/// Contains the parameters as "parameters", so that it can serve as a parameter file. Those that
/// may not be used are "refused_parameters" or "unchecked_parameters", which ReadParameters does
/// not accept.
nlohmann::ordered_json FitJson(const FitReport& report, const FitJudgment& judgment);

/// "scale", "rotation_rad", "dx_m", "dy_m", "x0_m", "y0_m".
nlohmann::ordered_json ParametersJson(const Magnetic_FourParameter& parameters);

/// Reads what ParametersJson() writes, also without the units in the names, from a JSON object or
/// from its member "parameters"; "x0_m" and "y0_m" are 0 where they are missing.
/// @throws InputError for other content, naming the key of a number that cannot be used
Magnetic_FourParameter ReadParameters(const std::string& path);

} // namespace cli
