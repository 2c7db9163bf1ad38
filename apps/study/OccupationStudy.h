// SPDX-License-Identifier: MIT
//
// What the tips of occupations are worth: recorded points and simulated motions, and what comes of
// faults.
#pragma once

#include <cstdint>
#include <string>

namespace study {

/// A log of recorded points; none where `log` is empty.
struct RecordedPoints
{
    std::string log;
    std::string truth; // table of the true tips
    double bias = 0.0; // of magnetometer A [degrees]
};

/// @param runs  simulated points of each motion and of each fault
/// @param only  only simulated occupations with this text in their name
/// @return two tables
/// @throws InputError where the log or the table cannot be read, or nothing is left to simulate
std::string OccupationStudy(int runs, std::uint64_t seed, const std::string& only,
                            const RecordedPoints& recorded);

} // namespace study
