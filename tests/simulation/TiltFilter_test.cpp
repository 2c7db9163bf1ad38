// SPDX-License-Identifier: MIT
#include "simulation/TiltFilter.h"

#include "survey/Angle.h"
#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace simulation;
using tiltpole::survey::Deg2Rad;

// The direction up in body axes, written out.
Point3 UpOf(double pitch, double roll)
{
    const double p = Deg2Rad(pitch);
    const double r = Deg2Rad(roll);
    return {std::sin(p), -std::cos(p) * std::sin(r), -std::cos(p) * std::cos(r)};
}

TEST(TiltFilter, ReadsAPoleAtRest)
{
    TiltFilter filter(2.0);
    for (int i = 0; i < 100; ++i) {
        const PoseAngles tilt = filter.Next({}, UpOf(12.0, -7.0), 0.02);
        EXPECT_NEAR(tilt.pitch, 12.0, 1e-12);
        EXPECT_NEAR(tilt.roll, -7.0, 1e-12);
    }
}

// Nose up at 10 degrees/s about the right axis, for 1 s.
TEST(TiltFilter, FollowsTheGyrosAtOnce)
{
    TiltFilter filter(2.0);
    PoseAngles tilt = filter.Next({}, UpOf(0.0, 0.0), 0.02);
    for (int i = 1; i <= 50; ++i)
        tilt = filter.Next({0.0, 10.0, 0.0}, UpOf(0.2 * i, 0.0), 0.02);
    EXPECT_NEAR(tilt.pitch, 10.0, 1e-12);
    EXPECT_NEAR(tilt.roll, 0.0, 1e-12);
}

// A constant forward acceleration of tan 5 degrees looks like a pitch of 5 degrees; after one time
// constant 1 - 1/e of it is believed.
TEST(TiltFilter, BelievesAnAccelerationAfterItsTimeConstant)
{
    TiltFilter filter(2.0);
    filter.Next({}, UpOf(0.0, 0.0), 0.001);
    PoseAngles tilt;
    for (int i = 0; i < 2000; ++i)
        tilt = filter.Next({}, UpOf(5.0, 0.0), 0.001);
    EXPECT_NEAR(tilt.pitch, 5.0 * (1.0 - std::exp(-1.0)), 0.01);
}

} // namespace
