// SPDX-License-Identifier: MIT
//
// Occupations to study: motions with a calibrated sensor that is mounted anew on every point, and
// faults of poles, sensors and antennas.
#pragma once

#include "simulation/Occupation.h"

#include <string>
#include <vector>

namespace simulation {

struct OccupationCase
{
    std::string name;
    PoseSensor sensor;
    OccupationPlan plan; // its number of points is left open
};

/// Occupations of 5 s without faults: leans, opposite leans, rocking and holding.
std::vector<OccupationCase> OccupationMotions();

/// The same of 5 to 10 s, by which a slip of the tip and a wrong length are to be seen.
std::vector<OccupationCase> SlipMotions();

/// A slipped tip, a wrong length, a delay, a magnet, errors of gyros, lost and wrong epochs; each
/// of them with a lean-in and with opposite leans, after the same without a fault.
std::vector<OccupationCase> OccupationFaults();

} // namespace simulation
