// SPDX-License-Identifier: MIT
#include "controls/dial/DialGeometry.h"
#include "controls/drawing/Pixel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tiltpole::controls {
namespace {

TEST(Pixel, AddsHalfAndCutsTowardsZero)
{
    struct Case
    {
        double given;
        int expected;
        const char* why;
    };
    const double infinity = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {2.49,                                     2,       "below half"         },
        {2.5,                                      3,       "half goes up"       },
        {-0.6,                                     0,       "-0.1 is cut to 0"   },
        {-2.5,                                     -2,      "not symmetric: -2.0"},
        {-2.6,                                     -2,      "-2.1 is cut to -2"  },
        {1e300,                                    INT_MAX, "too large"          },
        {-infinity,                                INT_MIN, "too small"          },
        {std::numeric_limits<double>::quiet_NaN(), 0,       "not a number"       },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ToPixel(c.given), c.expected) << c.why;
}

// 235: 117.5, 117.5 - 4.7 = 112.8, 117.5 - 14.6875 = 102.8125, halves rounded up.
TEST(DialRings, LieAtFixedSharesOfTheDiameter)
{
    const DialRings rings = DialRings::Of(235);
    EXPECT_EQ(rings.outer, 118);
    EXPECT_EQ(rings.middle, 113);
    EXPECT_EQ(rings.inner, 103);
    const DialRings large = DialRings::Of(1195); // 597.5, 573.6, 522.8125
    EXPECT_EQ(large.outer, 598);
    EXPECT_EQ(large.middle, 574);
    EXPECT_EQ(large.inner, 523);
    EXPECT_EQ(DialRings::Of(0).outer, 0);
    EXPECT_EQ(DialRings::Of(-5).outer, -2) << "-2.5 + 0.5";
}

TEST(OnDial, ReadsClockwiseFromTheTop)
{
    const CPoint center(100, 100);
    EXPECT_EQ(OnDial(center, 50, DialAngle(0)), CPoint(100, 50));
    EXPECT_EQ(OnDial(center, 50, DialAngle(90)), CPoint(150, 100));
    EXPECT_EQ(OnDial(center, 50, DialAngle(180)), CPoint(100, 150));
    EXPECT_EQ(OnDial(center, 50, DialAngle(270)), CPoint(50, 100));
}

// Diameter 235, unit 3: h = 54, 54/8 = 6.75 -> 7; 235/3 = 78.3 -> 78; 235/6 = 39.17 -> 39.
TEST(Needle, PointsAtItsHeading)
{
    const CPoint center(120, 120);
    const NeedleShape north = NeedleShape::Of(center, 235, 3, 0);
    EXPECT_EQ(CPoint(north.corners[0]), CPoint(113, 120));
    EXPECT_EQ(CPoint(north.corners[1]), CPoint(120, 42));
    EXPECT_EQ(CPoint(north.corners[2]), CPoint(127, 120));
    EXPECT_EQ(CPoint(north.corners[3]), CPoint(120, 159));

    const NeedleShape east = NeedleShape::Of(center, 235, 3, 90);
    EXPECT_EQ(CPoint(east.corners[0]), CPoint(120, 113));
    EXPECT_EQ(CPoint(east.corners[1]), CPoint(198, 120));
    EXPECT_EQ(CPoint(east.corners[2]), CPoint(120, 127));
    EXPECT_EQ(CPoint(east.corners[3]), CPoint(81, 120));
}

TEST(Needle, TurnsTheSameAfterAFullCircle)
{
    const NeedleShape ten = NeedleShape::Of({120, 120}, 235, 3, 10);
    const NeedleShape again = NeedleShape::Of({120, 120}, 235, 3, 370);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(CPoint(ten.corners[i]), CPoint(again.corners[i]));
}

TEST(Needle, HasNoWidthWithoutAUnit)
{
    const NeedleShape thin = NeedleShape::Of({20, 20}, 40, 0, 33);
    EXPECT_EQ(CPoint(thin.corners[0]), CPoint(20, 20));
    EXPECT_EQ(CPoint(thin.corners[2]), CPoint(20, 20));
}

TEST(FixLine, CrossesTheBandAtItsHeading)
{
    const DialRings rings = DialRings::Of(235);
    const FixLine east = FixLine::Of({120, 120}, rings, 90);
    EXPECT_EQ(east.outer, CPoint(233, 120));
    EXPECT_EQ(east.inner, CPoint(223, 120));
    EXPECT_EQ(FixLine::Of({120, 120}, rings, 370).inner, FixLine::Of({120, 120}, rings, 10).inner);
}

} // namespace
} // namespace tiltpole::controls
