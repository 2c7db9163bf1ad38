// SPDX-License-Identifier: MIT
#include "survey/Point.h"

#include "positioning/PoseSensorData.h"

#include <gtest/gtest.h>

using tiltpole::survey::Point3;

namespace {

TEST(Point, StartsAtTheOrigin)
{
    EXPECT_EQ(Point3{}, (Point3{0, 0, 0}));
}

TEST(Point, AddsSubtractsAndScalesByCoordinate)
{
    constexpr Point3 a{1, 2, 3};
    constexpr Point3 b{10, 30, 50};
    EXPECT_EQ(a + b, (Point3{11, 32, 53}));
    EXPECT_EQ(b - a, (Point3{9, 28, 47}));
    EXPECT_EQ(-2 * a, (Point3{-2, -4, -6}));
}

TEST(Point, HasALengthAndAProduct)
{
    EXPECT_EQ(Dot(Point3{1, 2, 3}, Point3{10, 20, -30}), -40.0);
    EXPECT_EQ(Length(Point3{2, -3, 6}), 7.0);
}

TEST(Point, BecomesARecordAndComesBack)
{
    const auto record = tiltpole::survey::RecordOf<xyhCoordinate>({1, 2, 3});
    EXPECT_EQ(record.x, 1.0);
    EXPECT_EQ(record.y, 2.0);
    EXPECT_EQ(record.h, 3.0);
    EXPECT_EQ(tiltpole::survey::PointOf(record), (Point3{1, 2, 3}));
}

} // namespace
