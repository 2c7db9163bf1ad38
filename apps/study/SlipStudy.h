// SPDX-License-Identifier: MIT
//
// What is said of occupations whose tip slips, of those whose pole has another length, and of those
// with nothing wrong.
#pragma once

#include <cstdint>
#include <string>

namespace study {

/// Of each motion `runs` poles; each of them occupies a point with a slip of 30 mm, in any direction
/// and at any time from 1 s after the start to 1 s before the end, one with a pole that is 50 mm
/// longer or shorter, and one with nothing wrong.
/// @param only  only motions with this text in their name
/// @return two tables: what was named and stored, and the ellipses of what was rightly stored
/// @throws InputError where no motion is left
std::string SlipStudy(int runs, std::uint64_t seed, const std::string& only);

} // namespace study
