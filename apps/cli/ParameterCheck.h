// SPDX-License-Identifier: MIT
//
// The parameter file of a calibration, checked before a program relies on it. The library takes
// from such a file what it finds and keeps its defaults for the rest; a program wants to know.
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

/// What keeps the file from being a whole and plausible calibration, in the order of its keys;
/// empty when nothing does. All twenty-one keys must be there with a number within the limits of
/// docs/programs.md.
/// @throws InputError when the file cannot be read
std::vector<ParameterProblem> CheckParameters(const std::string& path);

/// Loads a whole and plausible calibration.
/// @param partial  keys may be missing; those keep the value they have in `position`
/// @throws InputError naming every key that is missing or not plausible
void LoadParameters(const std::string& path, CInclineSensor_Position& position,
                    bool partial = false);

} // namespace cli
