// SPDX-License-Identifier: MIT
//
// Everything that was set for a simulation, as a JSON text beside the log: what a host under test
// should find. Names follow the JSON outputs of the commands: in lower case, with the unit as their
// last word. docs/schemas/simulate-truth.schema.json describes the format.
#pragma once

#include "simulation/Occupation.h"
#include "simulation/Points.h"
#include "simulation/Turn.h"
#include "simulation/Walk.h"
#include <string>

namespace simulation {

/// The world of a simulation: what all its recordings share.
struct Scene
{
    PoseSensor sensor{};
    EarthField field{};
    std::uint64_t seed = 1;
};

/// A planned turn and what became of it.
struct TurnResult
{
    TurnPlan plan{};
    std::size_t samples = 0; // written
};

/// @param turns  one or two
std::string TruthOfTurns(const Scene& scene, const std::vector<TurnResult>& turns);

std::string TruthOfOccupations(const Scene& scene, const OccupationPlan& plan,
                               const Occupations& log);

std::string TruthOfWalk(const Scene& scene, const WalkPlan& plan, const Walk& walk);

/// @param positions  those of the file beside which the truth is written
std::string TruthOfPoints(std::uint64_t seed, const PointsPlan& plan,
                          const std::vector<AntennaPosition>& positions);

} // namespace simulation
