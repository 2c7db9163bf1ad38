// SPDX-License-Identifier: MIT
//
// A measuring walk: point after point the tip is set down, the pole is held leaning and still for a
// while and carried on.
//
// Every sample carries the tip, the antenna without and with noise and the number of the point,
// 0 on the way between two points.
#pragma once

#include "simulation/Pole.h"
#include "simulation/Timeline.h"
#include <string>

namespace simulation {

struct WalkPlan
{
    int points = 8;
    double rate = 10.0;                       // samples per second [Hz]
    double dwell = 6.0;                       // on each point [s]
    double travel = 4.0;                      // from one point to the next [s]
    Point3 start{4500000.0, 500000.0, 100.0}; // first tip [m]
    double spacing = 5.0;                     // between neighboring points in the plane [m]
    double relief = 0.2;                      // standard deviation of the heights of the points [m]
    double poleLength = 2.0;                  // antenna to tip [m]
    double leastLean = 5.0;                   // on the points [degrees]
    double mostLean = 30.0;                   // on the points [degrees], below 45
    double tremor = 0.05; // of the hand, standard deviation of heading, pitch and roll [degrees]
    double sensorHeight = 1.5; // of the pose sensor above the tip, along the pole [m]
    PoleGeometry geometry = PoleGeometry::Rigid;
    AntennaNoise noise{};
    Losses losses{};
    std::vector<Magnet> magnets{};
    double startOfDay = 36000.0; // time of day of the first sample [s]
};

struct WalkTruth
{
    PoseTruth pose;
    int point = 0;  // from 1; 0 on the way
    Point3 tip;     // [m]
    Point3 antenna; // without noise [m]
};

/// A sample, its antenna coordinate and what they show stand at the same place of the three lists.
struct Walk
{
    std::vector<PoseSensorData> samples;
    std::vector<Point3> antenna; // with noise [m]
    std::vector<WalkTruth> truth;
    std::vector<Point3> tips; // true tip of point 1, 2, ... [m]
};

/// One sentence on what makes a plan impossible; empty for a plan that can be carried out.
std::string ProblemOf(const WalkPlan& plan);

/// The samples of a walk; an empty walk for a plan that cannot be carried out.
Walk SimulateWalk(const PoseSensor& sensor, const EarthField& field, const WalkPlan& plan,
                  std::uint64_t seed);

} // namespace simulation
