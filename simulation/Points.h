// SPDX-License-Identifier: MIT
//
// Antenna positions about one tip, for the solution from many positions.
//
// The upper end of the pole leans evenly over the zone between two leans and a range of azimuths:
// a small most lean makes a narrow cone, a small width a one-sided set.
#pragma once

#include "simulation/Pole.h"
#include <string>
#include <vector>

namespace simulation {

struct PointsPlan
{
    int points = 20;
    Point3 tip{4500000.0, 500000.0, 100.0}; // [m]
    double poleLength = 2.0;                // antenna to tip [m]
    double leastLean = 5.0;                 // [degrees]
    double mostLean = 35.0;                 // [degrees], below 90
    double azimuth = 0.0;                   // middle of the range of leaning azimuths [degrees]
    double width = 360.0;                   // of that range [degrees]
    double spacing = 0.0;       // least distance between two noisy positions in the plane [m]
    double planNoise = 0.008;   // standard deviation of each plane coordinate [m]
    double heightNoise = 0.015; // [m]
    double inclineNoise = 0.0;  // of the reported lean [degrees]
    int outliers = 0;           // positions that are off by `outlierSize`
    double outlierSize = 0.1;   // in a random direction [m]
};

struct AntennaPosition
{
    Point3 antenna;       // with noise [m]
    Point3 truth;         // without [m]
    double incline = 0.0; // reported lean of the pole [degrees]
    double lean = 0.0;    // true lean [degrees]
    double azimuth = 0.0; // the upper end leans towards it [degrees]
    bool outlier = false;
};

/// One sentence on what makes a plan impossible; empty for a plan that can be carried out.
std::string ProblemOf(const PointsPlan& plan);

/// The antenna positions. Fewer than planned when the zone has no room for them at the spacing,
/// none for a plan that cannot be carried out.
std::vector<AntennaPosition> SimulatePoints(const PointsPlan& plan, std::uint64_t seed);

} // namespace simulation
