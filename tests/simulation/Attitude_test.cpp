// SPDX-License-Identifier: MIT
#include "simulation/Attitude.h"

#include "survey/Angle.h"
#include <cmath>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using namespace simulation;
using tiltpole::survey::Deg2Rad;

constexpr double kRoundOff = 1e-12;

void ExpectNear(const Point3& found, const Point3& expected, double tolerance = kRoundOff)
{
    EXPECT_NEAR(found.x, expected.x, tolerance);
    EXPECT_NEAR(found.y, expected.y, tolerance);
    EXPECT_NEAR(found.z, expected.z, tolerance);
}

// An angle in hundredths of a degree, ends included.
double Angle(int least, int most)
{
    return *rc::gen::inRange(least * 100, most * 100 + 1) / 100.0;
}

TEST(Attitude, HeadingTurnsForwardFromNorthToEast)
{
    ExpectNear(AttitudeOf({90.0, 0.0, 0.0}) * Point3{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
}

TEST(Attitude, PositivePitchLiftsTheNose)
{
    const double rise = std::sin(Deg2Rad(30.0));
    EXPECT_NEAR((AttitudeOf({0.0, 30.0, 0.0}) * Point3{1.0, 0.0, 0.0}).z, -rise, kRoundOff);
}

TEST(Attitude, PositiveRollLowersTheRightSide)
{
    const double fall = std::sin(Deg2Rad(30.0));
    EXPECT_NEAR((AttitudeOf({0.0, 0.0, 30.0}) * Point3{0.0, 1.0, 0.0}).z, fall, kRoundOff);
}

// The product of the three rotations, multiplied out by the matrix class, against the closed form.
RC_GTEST_PROP(Attitude, IsHeadingThenPitchThenRoll, ())
{
    const PoseAngles angles{Angle(0, 360), Angle(-90, 90), Angle(-180, 180)};
    const Matrix product = RotationAbout({0, 0, 1}, angles.heading)
                           * RotationAbout({0, 1, 0}, angles.pitch)
                           * RotationAbout({1, 0, 0}, angles.roll);
    const Matrix attitude = AttitudeOf(angles);
    for (std::size_t i = 0; i < 3; ++i)
        RC_ASSERT(Length(product.rows[i] - attitude.rows[i]) < kRoundOff);
}

RC_GTEST_PROP(Attitude, GivesItsAnglesBack, ())
{
    const PoseAngles angles{Angle(0, 359), Angle(-89, 89), Angle(-179, 179)};
    const PoseAngles found = AnglesOf(AttitudeOf(angles));
    RC_ASSERT(std::fabs(found.pitch - angles.pitch) < 1e-10);
    RC_ASSERT(std::fabs(found.roll - angles.roll) < 1e-10);
    RC_ASSERT(std::fabs(std::remainder(found.heading - angles.heading, 360.0)) < 1e-10);
}

// Up the pole the horizontal part points to the azimuth of the lean, its length is the sine.
RC_GTEST_PROP(Attitude, LeanPutsTheUpperEndWhereItSays, ())
{
    const double heading = Angle(0, 360);
    const double lean = Angle(1, 80);
    const double azimuth = Angle(0, 360);
    const PoseAngles angles = AnglesOfLean(heading, lean, azimuth);
    const Point3 up = -1.0 * AttitudeOf(angles).Column(2);
    const double radians = tiltpole::survey::kPi / 180.0;
    RC_ASSERT(angles.heading == heading);
    RC_ASSERT(std::fabs(up.x - std::sin(lean * radians) * std::cos(azimuth * radians)) < kRoundOff);
    RC_ASSERT(std::fabs(up.y - std::sin(lean * radians) * std::sin(azimuth * radians)) < kRoundOff);
    RC_ASSERT(std::fabs(-up.z - std::cos(lean * radians)) < kRoundOff);
}

TEST(Attitude, SensorAxesFollowTheType)
{
    const Point3 body{1.0, 2.0, 3.0}; // forward, right, down
    ExpectNear(ToSensorAxes(1, body), {1.0, -2.0, -3.0});
    ExpectNear(ToSensorAxesB(1, body), {-1.0, 2.0, -3.0});
    for (const int type : {0, 2, 7}) {
        ExpectNear(ToSensorAxes(type, body), {2.0, 1.0, -3.0});
        ExpectNear(ToSensorAxesB(type, body), {-2.0, -1.0, -3.0});
    }
}

TEST(Attitude, RateIsTheTurnDividedByTheTime)
{
    const Point3 axis{0.6, 0.0, 0.8};
    const Matrix from = AttitudeOf({40.0, 10.0, -20.0});
    for (const double degrees : {0.001, 5.0, 100.0, -60.0})
        ExpectNear(RateBetween(from, from * RotationAbout(axis, degrees), 0.5),
                   (degrees / 0.5) * axis, 1e-9);
    ExpectNear(RateBetween(from, from, 0.5), {0.0, 0.0, 0.0}, 1e-9);
}

} // namespace
