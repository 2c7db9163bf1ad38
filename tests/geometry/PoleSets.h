// SPDX-License-Identifier: MIT
//
// Sets of antenna positions about a tip, as the tests of the multi-point solution use them.
#pragma once

#include "geometry/TiltPosition_Geometry.h"
#include "tests/reference/LiteralSearch.h"

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace poles {

struct PoleSet
{
    int count = 15;
    double poleLength = 2.0;  // [m]
    double tilt = 40.0;       // largest, from the vertical [degrees]
    double planNoise = 0.0;   // standard deviation of x and y each [m]
    double heightNoise = 0.0; // [m]
    literal::Point tip = {0.0, 0.0, 0.0};
};

// Directions evenly over the cap of the sphere.
inline std::vector<literal::Point> Antennas(const PoleSet& setup, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    std::normal_distribution<double> normal;
    const double cap = 1.0 - std::cos(setup.tilt * std::numbers::pi / 180.0);
    std::vector<literal::Point> antennas;
    for (int k = 0; k < setup.count; ++k) {
        const double up = 1.0 - share(random) * cap;
        const double out = setup.poleLength * std::sqrt(1.0 - up * up);
        const double azimuth = 2.0 * std::numbers::pi * share(random);
        antennas.push_back(
            {setup.tip[0] + out * std::cos(azimuth) + setup.planNoise * normal(random),
             setup.tip[1] + out * std::sin(azimuth) + setup.planNoise * normal(random),
             setup.tip[2] + setup.poleLength * up + setup.heightNoise * normal(random)});
    }
    return antennas;
}

inline CTiltMatrix Vector(const literal::Point& p)
{
    CTiltMatrix v(3);
    for (unsigned c = 0; c < 3; ++c)
        v.SetData(c, p[c]);
    return v;
}

inline literal::Point ToPoint(const CTiltMatrix& v)
{
    return {v.GetData(0), v.GetData(1), v.GetData(2)};
}

inline std::vector<CTiltMatrix> Vectors(const std::vector<literal::Point>& points)
{
    std::vector<CTiltMatrix> vectors;
    for (const literal::Point& p : points)
        vectors.push_back(Vector(p));
    return vectors;
}

inline std::vector<literal::Point> Moved(std::vector<literal::Point> points,
                                         const literal::Point& by, double sign = 1.0)
{
    for (literal::Point& p : points)
        for (std::size_t c = 0; c < 3; ++c)
            p[c] += sign * by[c];
    return points;
}

struct Solution
{
    literal::Point tip = {0.0, 0.0, 0.0};
    TiltPoint_State state;
};

inline Solution Solve(const std::vector<literal::Point>& antennas, double antennaHeight)
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(antennaHeight);
    std::vector<CTiltMatrix> vectors = Vectors(antennas);
    Solution solution;
    const CTiltMatrix tip =
        geometry.Adjustment(vectors.data(), static_cast<int>(vectors.size()), solution.state);
    solution.tip = ToPoint(tip);
    return solution;
}

// The literal search about the first position.
inline Solution SolveLiterally(const std::vector<literal::Point>& antennas, double antennaHeight)
{
    literal::State found;
    Solution solution;
    const literal::Point tip =
        literal::Search<>(Moved(antennas, antennas.front(), -1.0), antennaHeight, found);
    if (found.status != -99 && found.status != -100)
        solution.tip = Moved({tip}, antennas.front()).front();
    solution.state = {found.radius,         found.pointError, found.geometryFigure,
                      found.heightCofactor, found.excess,     found.status};
    return solution;
}

} // namespace poles
