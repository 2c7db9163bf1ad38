// SPDX-License-Identifier: MIT
#include "survey/Angle.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck/gtest.h>

namespace survey = tiltpole::survey;
using survey::kPi;

namespace {

constexpr double kTiny = 1e-15;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Angles, ConvertBetweenDegreesAndRadians)
{
    EXPECT_EQ(survey::Deg2Rad(180), kPi);
    EXPECT_EQ(survey::Deg2Rad(-90), -kPi / 2);
    EXPECT_EQ(survey::Rad2Deg(kPi), 180.0);
    EXPECT_EQ(survey::Rad2Deg(kPi / 4), 45.0);
    EXPECT_NEAR(survey::kDegreesPerRadian, 57.29577951308232, 1e-14);
}

TEST(Angles, MultiplyBeforeTheyDivide)
{
    // 3·(π/180) and 1.1·(180/π) end in another last digit.
    EXPECT_EQ(survey::Deg2Rad(3), 3 * kPi / 180.0);
    EXPECT_NE(3 * kPi / 180.0, 3 * (kPi / 180.0));
    EXPECT_EQ(survey::Rad2Deg(1.1), 1.1 * 180.0 / kPi);
    EXPECT_NE(1.1 * 180.0 / kPi, 1.1 * (180.0 / kPi));
}

TEST(ArcSineAndCosine, LimitTheirArgument)
{
    EXPECT_EQ(survey::ArcSine(1.0000001), kPi / 2);
    EXPECT_EQ(survey::ArcSine(-kInfinity), -kPi / 2);
    EXPECT_EQ(survey::ArcCosine(-2), kPi);
    EXPECT_EQ(survey::ArcCosine(kInfinity), 0.0);
    EXPECT_TRUE(std::isnan(survey::ArcSine(kNaN)));
    EXPECT_TRUE(std::isnan(survey::ArcCosine(kNaN)));
}

TEST(ArcSineAndCosine, InvertSineAndCosineInside)
{
    EXPECT_NEAR(survey::ArcSine(0.5), kPi / 6, kTiny);
    EXPECT_NEAR(survey::ArcCosine(0.5), kPi / 3, kTiny);
    EXPECT_NEAR(survey::ArcCosine(-0.5), 2 * kPi / 3, kTiny);
}

TEST(AdjustedAzimuth, TakesOneStepAtMost)
{
    struct
    {
        double given, expected;
        const char* why;
    } const cases[] = {
        {-30,    330,   "below zero: one turn is added"         },
        {370,    10,    "above a turn: one turn is taken off"   },
        {360,    360,   "a full turn stays"                     },
        {0,      0,     "zero stays"                            },
        {359.5,  359.5, "inside stays"                          },
        {-360,   0,     "a turn below becomes zero"             },
        {-400,   -40,   "more than a turn below stays below"    },
        {720,    360,   "two turns become one"                  },
        {730,    370,   "more than two turns stay above a turn" },
        {-1e-20, 360,   "a little below zero rounds to one turn"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(survey::AdjustedAzimuth(c.given), c.expected) << c.why;
}

TEST(AdjustedAzimuth, KeepsTheSignOfZeroAndNaN)
{
    EXPECT_TRUE(std::signbit(survey::AdjustedAzimuth(-0.0)));
    EXPECT_FALSE(std::signbit(survey::AdjustedAzimuth(0.0)));
    EXPECT_TRUE(std::isnan(survey::AdjustedAzimuth(kNaN)));
}

TEST(WithinTurn, LeavesOutBothEndsOfTheCircle)
{
    for (const double inside : {2e-9, 90.0, 180.0, 359.0, 360.0 - 2e-9})
        EXPECT_TRUE(survey::IsWithinTurn(inside)) << inside;
    for (const double end : {-90.0, 0.0, 5e-10, 360.0 - 5e-10, 360.0, 361.0, kInfinity, kNaN})
        EXPECT_FALSE(survey::IsWithinTurn(end)) << end;
}

TEST(Wrapped, IsTheNearestOfAllTurns)
{
    EXPECT_EQ(survey::Wrapped(190), -170.0);
    EXPECT_EQ(survey::Wrapped(-190), 170.0);
    EXPECT_EQ(survey::Wrapped(179.5), 179.5);
    EXPECT_EQ(survey::Wrapped(3601), 1.0);
    EXPECT_EQ(std::fabs(survey::Wrapped(-540)), 180.0);
}

TEST(AzimuthOf, CoversEveryQuadrant)
{
    struct
    {
        double dx, dy, expected;
        const char* why;
    } const cases[] = {
        {0,     5,      90,  "along y"                            },
        {0,     -5,     270, "against y"                          },
        {0,     0,      0,   "no direction"                       },
        {9e-7,  -2,     270, "dx too small to count"              },
        {-9e-7, 0,      0,   "nor without dy"                     },
        {1,     1,      45,  "first"                              },
        {-1,    1,      135, "second"                             },
        {-1,    -1,     225, "third"                              },
        {1,     -1,     315, "fourth"                             },
        {3,     0,      0,   "along x"                            },
        {-3,    0,      180, "against x"                          },
        {1e-6,  1e-6,   45,  "the limit itself counts"            },
        {1,     -1e-20, 360, "a little left of x rounds to a turn"},
        {kNaN,  1,      0,   "NaN has no azimuth"                 },
        {1,     kNaN,   0,   "on either axis"                     },
    };
    for (const auto& c : cases)
        EXPECT_NEAR(survey::AzimuthOf(c.dx, c.dy), c.expected, 1e-12) << c.why;
}

TEST(OtherLeg, IsTheCosineOfASine)
{
    EXPECT_EQ(survey::OtherLeg(0), 1.0);
    EXPECT_EQ(survey::OtherLeg(-1), 0.0);
    EXPECT_NEAR(survey::OtherLeg(0.6), 0.8, kTiny);
    EXPECT_TRUE(std::isnan(survey::OtherLeg(1.0000001)));
}

// 1 − x² has lost half of its digits here; √(2·2⁻⁴⁰ − 2⁻⁸⁰) has not.
TEST(OtherLeg, KeepsItsDigitsNearOne)
{
    const double step = 0x1p-40;
    EXPECT_NEAR(survey::OtherLeg(1.0 - step) / (std::sqrt(2 * step) * (1 - step / 4)), 1.0, 4e-16);
}

survey::Rotation Turn(double degrees)
{
    const double angle = survey::Deg2Rad(degrees);
    return {std::cos(angle), std::sin(angle)};
}

TEST(Rotation, AddsAngles)
{
    const survey::Rotation sum = Turn(110) + Turn(-40);
    EXPECT_NEAR(sum.cos, Turn(70).cos, kTiny);
    EXPECT_NEAR(sum.sin, Turn(70).sin, kTiny);
    const survey::Rotation none = Turn(33) + -Turn(33);
    EXPECT_NEAR(none.cos, 1.0, kTiny);
    EXPECT_NEAR(none.sin, 0.0, kTiny);
}

TEST(Rotation, IsNoneByDefault)
{
    const survey::Rotation same = survey::Rotation{} + Turn(25);
    EXPECT_EQ(same.cos, Turn(25).cos);
    EXPECT_EQ(same.sin, Turn(25).sin);
}

TEST(Rotation, MultipliesTheLengthsOfVectors)
{
    const survey::Rotation product = survey::Rotation{3, 4} + survey::Rotation{0, 2};
    EXPECT_EQ(product.cos, -8.0);
    EXPECT_EQ(product.sin, 6.0);
}

} // namespace
