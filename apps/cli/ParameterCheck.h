// SPDX-License-Identifier: MIT
//
// Checks the parameter file of a calibration before a program uses it. The library itself reads the
// keys that it finds and keeps its defaults for the others.
#pragma once

#include "positioning/InclineSensor_Position.h"
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

struct ParameterProblem
{
    std::string key;
    std::uint64_t line; // from 1; 0 where the key is missing
    std::string what;   // "is missing", "is 'abc', not a number", "is 40, not between 0.1 and 10"
};

/// Why the file is not a complete and plausible calibration, in the order of the keys; empty if it
/// is one. All twenty-one keys are required, each with a number within the limits listed in
/// docs/programs.md.
/// @throws InputError when the file cannot be read
std::vector<ParameterProblem> CheckParameters(const std::string& path);

/// Loads a complete and plausible calibration.
/// @param partial  keys may be missing; their values in `position` are kept
/// @throws InputError naming every key that is missing or not plausible
void LoadParameters(const std::string& path, CInclineSensor_Position& position,
                    bool partial = false);

} // namespace cli
