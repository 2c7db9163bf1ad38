// SPDX-License-Identifier: MIT
//
// Occupations that are simulated and estimated as `tiltpole occupy` does it.
#pragma once

#include "apps/cli/occupy/LogRow.h"
#include "apps/cli/occupy/OccupiedPoint.h"
#include "simulation/trials/OccupationCases.h"

#include <cstdint>
#include <string>
#include <vector>

namespace study {

/// One study has so many seeds for each seed of its own.
inline constexpr std::uint64_t kSeeds = 1000000;

xyhCoordinate CoordinateOf(const simulation::Point3& p);

/// A simulated row as it is read from a log.
cli::LogRow RowOf(const simulation::OccupationRow& row, const cli::OccupySetup& setup);

/// `points` occupations, compared with their true tips.
cli::OccupyResult Simulated(const simulation::OccupationCase& occupation, int points,
                            std::uint64_t seed);

/// Those whose name has `only` in it.
std::vector<simulation::OccupationCase> CasesNamed(std::vector<simulation::OccupationCase> cases,
                                                   const std::string& only);

/// In percent, "-" of nothing.
std::string Share(std::uint64_t part, std::uint64_t whole);

} // namespace study
