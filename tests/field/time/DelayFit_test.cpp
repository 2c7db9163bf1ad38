// SPDX-License-Identifier: MIT
#include "field/time/DelayFit.h"

#include "tests/field/pose/RockedPole.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using rocked_pole::Rocking;
using tiltpole::field::FitRocking;
using tiltpole::field::ResidualsOf;
using tiltpole::field::RockingFit;
using tiltpole::survey::Deg2Rad;
using tiltpole::survey::Dot;
using tiltpole::survey::Length;
using tiltpole::survey::Point3;

namespace {

constexpr double kHeightWeight = 0.3;
constexpr double kOffset = -3.0; // of the heading [degrees]
constexpr Point3 kTip{4.0, -7.0, 1.5};

struct Track
{
    std::vector<Point3> antenna, up;
};

Track SomeTrack(double noise)
{
    const Rocking rocking;
    std::mt19937_64 random(3);
    std::normal_distribution<double> normal(0.0, 1.0);
    Track track;
    for (int i = 0; i < 100; ++i) {
        const Point3 up = rocking.UpAt(0.1 * i);
        const double c = std::cos(Deg2Rad(kOffset));
        const double s = std::sin(Deg2Rad(kOffset));
        const Point3 turned{c * up.x - s * up.y, s * up.x + c * up.y, up.z};
        track.up.push_back(up);
        track.antenna.push_back(kTip + 2.0 * turned
                                + noise * Point3{normal(random), normal(random), normal(random)});
    }
    return track;
}

double SumOf(const Track& track, const RockingFit& fit)
{
    double sum = 0.0;
    for (const Point3& r : ResidualsOf(track.antenna, track.up, fit))
        sum += r.x * r.x + r.y * r.y + kHeightWeight * r.z * r.z;
    return sum;
}

} // namespace

TEST(DelayFit, FindsTipOffsetAndLength)
{
    const Track track = SomeTrack(0.0);
    const RockingFit fit = FitRocking(track.antenna, track.up, kHeightWeight);
    EXPECT_NEAR(fit.headingOffset, Deg2Rad(kOffset), 1e-12);
    EXPECT_NEAR(fit.length, 2.0, 1e-12);
    EXPECT_LT(Length(fit.tip - kTip), 1e-12);
    EXPECT_NEAR(fit.sum, 0.0, 1e-12);
}

// Every neighbor of the solution has a larger sum of squares, formed from its residuals.
TEST(DelayFit, IsTheLeastSum)
{
    const Track track = SomeTrack(0.01);
    const RockingFit fit = FitRocking(track.antenna, track.up, kHeightWeight);
    EXPECT_NEAR(SumOf(track, fit), fit.sum, 1e-12);
    for (const double step : {-1e-4, 1e-4}) {
        RockingFit changed[] = {fit, fit, fit, fit, fit};
        changed[0].tip.x += step;
        changed[1].tip.y += step;
        changed[2].tip.z += step;
        changed[3].headingOffset += step;
        changed[4].length += step;
        for (const RockingFit& other : changed)
            EXPECT_GT(SumOf(track, other), fit.sum + 1e-10);
    }
}
