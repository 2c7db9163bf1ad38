// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/PointInWork.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

cli::LogRow RowOf(double seconds, const xyhCoordinate& antenna, double pitch = 10.0)
{
    cli::LogRow row;
    row.sample.seconds = seconds;
    row.pose.dPitch = pitch;
    row.pose.dMag_x = 300.0;
    row.pose.dMag_x_2 = -300.0;
    row.epoch = field::AntennaEpoch{seconds, antenna, 0.0, 0.0};
    return row;
}

TEST(PointInWork, KeepsNoTipOfASampleThatIsNotFinite)
{
    cli::OccupySetup setup;
    setup.occupation.poleLength = 2.0;
    cli::PointInWork point(setup);
    point.Begin("1");
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    point.Add(RowOf(0.0, {100.0, 200.0, 50.0}));
    point.Add(RowOf(0.1, {kNone, 200.0, 50.0}));
    point.Add(RowOf(0.2, {100.0, kNone, 50.0}));
    point.Add(RowOf(0.3, {100.0, 200.0, kNone}));
    point.Add(RowOf(0.4, {100.0, 200.0, 50.0}, kNone));
    EXPECT_EQ(point.Point().epochs, 5U);
    ASSERT_EQ(point.Point().singleTips.size(), 1U);
    EXPECT_NEAR(point.Point().singleTips[0].h, 50.0 - 2.0 * std::cos(std::acos(-1.0) / 18.0), 1e-9);
}

} // namespace
