// SPDX-License-Identifier: MIT
//
// What the occupations of a live pole are worth: estimated twice a second while they go on, begun
// anew where an estimate refuses, with antenna errors that last for a while.
#pragma once

#include <cstdint>
#include <string>

namespace study {

/// @param runs  of each line, without a fault and with a slip each
/// @param only  only lines with this text in their name
/// @return a table
/// @throws InputError where no line has such a name
std::string LiveStudy(int runs, std::uint64_t seed, const std::string& only);

} // namespace study
