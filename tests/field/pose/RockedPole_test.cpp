// SPDX-License-Identifier: MIT
//
// What a pose between two samples costs at the tip of a pole in motion.
#include "field/pose/PoseRing.h"
#include "tests/field/pose/RockedPole.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using field::PoseLookup;
using field::PoseRing;
using field::PoseSample;
using rocked_pole::MomentOf;
using rocked_pole::Rocking;

namespace {

// Distance of the tip from where it stands, in the plan [m].
double MissOf(PoseSample sample, const Rocking& rocking, double t)
{
    CInclineSensor_Position sensor;
    sensor.SetSensorType(2);
    const auto up = rocking.UpAt(t);
    xyhCoordinate tip{rocked_pole::kLength * up.x, rocked_pole::kLength * up.y,
                      rocked_pole::kLength * up.z};
    sensor.Position(sample.data, rocked_pole::kLength, tip);
    return std::hypot(tip.x, tip.y);
}

struct Misses
{
    double interpolated; // 99 % are below [m]
    double held;
};

Misses At(double rate)
{
    const Rocking rocking{.amplitude = 20.0, .rate = 0.7};
    PoseRing ring(std::chrono::seconds(30));
    for (int i = 0; i <= static_cast<int>(30.0 * rate); ++i)
        ring.Add(rocking.PoseAt(i / rate));
    std::vector<double> interpolated;
    std::vector<double> held;
    for (double t = 0.013; t < 29.9; t += 0.1) {
        const PoseLookup found = ring.At(MomentOf(t));
        EXPECT_EQ(found.state, PoseLookup::State::Found) << t;
        interpolated.push_back(MissOf(found.pose, rocking, t));
        held.push_back(MissOf(rocking.PoseAt(std::floor(t * rate) / rate), rocking, t));
    }
    const auto percentile = [](std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values[values.size() * 99 / 100];
    };
    return {percentile(interpolated), percentile(held)};
}

} // namespace

TEST(RockedPole, IsDescribedExactlyByItsSamples)
{
    const Rocking rocking;
    for (double t = 0.0; t < 10.0; t += 0.37)
        EXPECT_LT(MissOf(rocking.PoseAt(t), rocking, t), 1e-6) << t;
}

TEST(RockedPole, KeepsItsTipWithin3MillimetersBetweenPosesAt30Hz)
{
    const Misses misses = At(30.0);
    EXPECT_LT(misses.interpolated, 3e-3);
    EXPECT_GT(misses.held, 40e-3); // what the last pose would cost
}
