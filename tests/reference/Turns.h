// SPDX-License-Identifier: MIT
//
// Turns of a pole as its magnetometers see them: made ones of a given shape, and recorded readings.
//
//   for (const PoseSensorData& s : turns::Make({.samples = 500}, turns::TurnAxis::Horizontal))
//       filter.Add(new PoseSensorData(s));
#pragma once

#include "framework/core/Array.h"
#include "positioning/PoseSensorData.h"
#include "survey/TurnAxis.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace turns {

using Samples = CArray<PoseSensorData*, PoseSensorData*>;

// About z, readings in x and y; about y, readings in x and z.
using tiltpole::survey::TurnAxis;

/// A sample that reads (x, v, w) on magnetometer A.
inline PoseSensorData At(double x, double v, double w = 0)
{
    PoseSensorData sample;
    sample.dMag_x = x;
    sample.dMag_y = v;
    sample.dMag_z = w;
    return sample;
}

/// x and v of ten samples on a square about (5, 5).
inline constexpr double kSquare[10][2] = {
    {0,  0 },
    {5,  0 },
    {10, 0 },
    {10, 5 },
    {10, 10},
    {5,  10},
    {0,  10},
    {0,  5 },
    {0,  2 },
    {0,  1 }
};

/// A turn of the field vector on a circle that the sensor sees skewed and shifted.
struct Shape
{
    int samples = 300;
    double revolutions = 1.1;
    double radius = 500;
    double skew = 0;     // share of x in the second axis; above 0 also 0.05 in the third
    double scale = 1;    // of the second axis
    double offset = 100; // of the center [counts]
    double noise = 2;    // standard deviation [counts]
    bool wholeCounts = false;
    int stopEvery = 0;      // the pole stands still for 12 samples after this many; 0: never
    bool turnsBack = false; // a tenth of the turn is run through backwards in the middle
    double perSecond = 20;  // samples
    unsigned seed = 1;      // of the noise
};

/// Where the pole points at sample i [revolutions].
inline double Progress(const Shape& shape, int i)
{
    double at = static_cast<double>(i) / shape.samples;
    if (shape.stopEvery > 0) {
        const int block = shape.stopEvery + 12;
        at = static_cast<double>(i / block * shape.stopEvery + std::min(i % block, shape.stopEvery))
             / shape.samples * block / shape.stopEvery;
    }
    if (shape.turnsBack && at > 0.5) at = at < 0.6 ? 1.0 - at : at - 0.2;
    return at * shape.revolutions;
}

/// The second axis of the turn is y for the horizontal, z for the vertical one. Magnetometer B reads
/// what A reads with x and y negated. The time of day starts at 10:00:00.
inline std::vector<PoseSensorData> Make(const Shape& shape, TurnAxis axis)
{
    const bool vertical = axis == TurnAxis::Vertical;
    std::mt19937 random(shape.seed);
    std::normal_distribution<double> unit;
    const auto noise = [&](std::mt19937& source) { return shape.noise * unit(source); };
    std::vector<PoseSensorData> made;
    for (int i = 0; i < shape.samples; ++i) {
        const double angle = 2 * 3.14159265358979 * Progress(shape, i) + 0.3;
        double x = shape.radius * std::cos(angle) + shape.offset + noise(random);
        double v = shape.radius * shape.scale * std::sin(angle) - shape.offset / 2 + noise(random)
                   + shape.skew * x;
        double w = -shape.offset * 3 + 0.05 * x * (shape.skew != 0) + noise(random);
        if (shape.wholeCounts) {
            x = std::round(x);
            v = std::round(v);
            w = std::round(w);
        }
        PoseSensorData s;
        const int second = static_cast<int>(36000 + i / shape.perSecond);
        s.nHour = second / 3600;
        s.nMinute = second / 60 % 60;
        s.nSecond = second % 60;
        s.dMag_x = x;
        (vertical ? s.dMag_z : s.dMag_y) = v;
        (vertical ? s.dMag_y : s.dMag_z) = w;
        s.dMag_x_2 = -s.dMag_x + noise(random);
        s.dMag_y_2 = -s.dMag_y + noise(random);
        s.dMag_z_2 = s.dMag_z + noise(random);
        made.push_back(s);
    }
    return made;
}

/// Readings of a pole moved by hand; see tests/data/README.md.
inline std::vector<PoseSensorData> Recorded()
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/tests/data/recorded_magnetometer.csv");
    std::string line;
    std::getline(file, line);
    std::vector<PoseSensorData> samples;
    while (std::getline(file, line)) {
        for (char& c : line)
            if (c == ',' || c == ':') c = ' ';
        std::istringstream fields(line);
        fields.imbue(std::locale::classic());
        PoseSensorData s;
        fields >> s.nHour >> s.nMinute >> s.nSecond >> s.dMag_x >> s.dMag_y >> s.dMag_z
            >> s.dMag_x_2 >> s.dMag_y_2 >> s.dMag_z_2;
        samples.push_back(s);
    }
    return samples;
}

/// Round, skewed, stopping, backward and noisy turns, for comparisons that run over all of them.
inline std::vector<Shape> Shapes()
{
    std::vector<Shape> shapes;
    shapes.push_back({});
    shapes.push_back({.samples = 9});
    shapes.push_back({.samples = 10});
    shapes.push_back({.samples = 1000, .revolutions = 3, .noise = 5, .seed = 2});
    shapes.push_back({.samples = 700, .revolutions = -1.3, .noise = 1, .seed = 3});
    shapes.push_back({.samples = 500, .skew = 0.4, .scale = 0.6, .offset = 900, .seed = 4});
    shapes.push_back({.samples = 600, .stopEvery = 25, .seed = 5});
    shapes.push_back({.samples = 800, .turnsBack = true, .seed = 6});
    shapes.push_back({.samples = 900, .revolutions = 4, .noise = 0, .wholeCounts = true});
    shapes.push_back({.samples = 400, .radius = 6, .noise = 1, .wholeCounts = true, .seed = 7});
    shapes.push_back({.samples = 333, .radius = 300, .noise = 60, .perSecond = 1, .seed = 8});
    return shapes;
}

} // namespace turns
