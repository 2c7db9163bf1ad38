// SPDX-License-Identifier: MIT
//
// The level frame of both axis conventions, against rotations applied one after the other.
#include "survey/SensorAxes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck/gtest.h>

namespace survey = tiltpole::survey;
using survey::LevelFrame;
using survey::Point3;
using survey::Pose;
using survey::SensorAxes;

namespace {

constexpr double kRoundOff = 1e-15;
constexpr SensorAxes kBoth[] = {SensorAxes::ForwardLeftUp, SensorAxes::RightForwardUp};

double Degrees()
{
    return *rc::gen::inRange(-18000, 18001) / 100.0;
}

void ExpectNear(const Point3& actual, const Point3& expected, const char* what)
{
    EXPECT_NEAR(Length(actual - expected), 0.0, kRoundOff) << what;
}

TEST(SensorAxes, AreTheFirstForTypeOneOnly)
{
    EXPECT_EQ(survey::AxesOf(1), SensorAxes::ForwardLeftUp);
    for (const int type : {0, 2, 3, -1})
        EXPECT_EQ(survey::AxesOf(type), SensorAxes::RightForwardUp) << type;
}

TEST(Pose, HoldsSinesCosinesAndTheirProducts)
{
    const Pose pose = survey::PoseOf(30, -60);
    EXPECT_NEAR(pose.sinPitch, 0.5, kRoundOff);
    EXPECT_NEAR(pose.cosPitch, std::sqrt(0.75), kRoundOff);
    EXPECT_NEAR(pose.sinRoll, -std::sqrt(0.75), kRoundOff);
    EXPECT_NEAR(pose.cosRoll, 0.5, kRoundOff);
    EXPECT_EQ(pose.sinSin, pose.sinPitch * pose.sinRoll);
    EXPECT_EQ(pose.sinCos, pose.sinPitch * pose.cosRoll);
}

RC_GTEST_PROP(Pose, IsThatOfTheOppositeAnglesWhenReversed, ())
{
    const double pitch = Degrees();
    const double roll = Degrees();
    const auto [sp, cp, sr, cr, spsr, spcr] = survey::PoseOf(pitch, roll).Reversed();
    const Pose expected = survey::PoseOf(-pitch, -roll);
    RC_ASSERT(sp == expected.sinPitch && cp == expected.cosPitch);
    RC_ASSERT(sr == expected.sinRoll && cr == expected.cosRoll);
    RC_ASSERT(spsr == expected.sinSin && spcr == expected.sinCos);
}

TEST(LevelFrame, FollowsTheAxesOfAPlumbPole)
{
    const Pose plumb = survey::PoseOf(0, 0);
    const LevelFrame first = survey::LevelFrameOf(plumb, SensorAxes::ForwardLeftUp);
    ExpectNear(first.forward, {1, 0, 0}, "x forward");
    ExpectNear(first.rightward, {0, -1, 0}, "y left");
    ExpectNear(first.up, {0, 0, 1}, "z up");
    const LevelFrame second = survey::LevelFrameOf(plumb, SensorAxes::RightForwardUp);
    ExpectNear(second.forward, {0, 1, 0}, "y forward");
    ExpectNear(second.rightward, {1, 0, 0}, "x right");
    ExpectNear(second.up, {0, 0, 1}, "z up");
}

TEST(LevelFrame, SeesTheForwardAxisRaisedByPitchAndTheRightSideLoweredByRoll)
{
    const double sine = std::sin(survey::Deg2Rad(20));
    const Pose nose = survey::PoseOf(20, 0);
    EXPECT_NEAR(survey::LevelFrameOf(nose, SensorAxes::ForwardLeftUp).up.x, sine, kRoundOff);
    EXPECT_NEAR(survey::LevelFrameOf(nose, SensorAxes::RightForwardUp).up.y, sine, kRoundOff);
    const Pose side = survey::PoseOf(0, 20);
    EXPECT_NEAR(survey::LevelFrameOf(side, SensorAxes::ForwardLeftUp).up.y, sine, kRoundOff);
    EXPECT_NEAR(survey::LevelFrameOf(side, SensorAxes::RightForwardUp).up.x, -sine, kRoundOff);
}

// Right-handed about an axis of the sensor, x or y.
Point3 AboutX(const Point3& m, double angle)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {m.x, c * m.y - s * m.z, s * m.y + c * m.z};
}

Point3 AboutY(const Point3& m, double angle)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {c * m.x + s * m.z, m.y, -s * m.x + c * m.z};
}

// A level vector seen from the leaning sensor: roll turns the sensor about its forward axis after
// pitch has turned it about the rightward one.
Point3 SeenFrom(const Point3& level, double pitch, double roll, SensorAxes axes)
{
    const double p = survey::Deg2Rad(pitch);
    const double r = survey::Deg2Rad(roll);
    return axes == SensorAxes::ForwardLeftUp ? AboutX(AboutY(level, p), -r)
                                             : AboutY(AboutX(level, -p), -r);
}

RC_GTEST_PROP(LevelFrame, IsTheLevelFrameTurnedByRollAndPitch, ())
{
    const double pitch = Degrees();
    const double roll = Degrees();
    for (const SensorAxes axes : kBoth) {
        const LevelFrame plumb = survey::LevelFrameOf(survey::PoseOf(0, 0), axes);
        const LevelFrame frame = survey::LevelFrameOf(survey::PoseOf(pitch, roll), axes);
        for (const auto part : {&LevelFrame::forward, &LevelFrame::rightward, &LevelFrame::up})
            RC_ASSERT(Length(frame.*part - SeenFrom(plumb.*part, pitch, roll, axes)) < kRoundOff);
    }
}

RC_GTEST_PROP(LevelledField, IsTheReadingAlongTheLevelFrame, ())
{
    const Pose pose = survey::PoseOf(Degrees(), Degrees());
    const Point3 m{Degrees(), Degrees(), Degrees()};
    for (const SensorAxes axes : kBoth) {
        const LevelFrame frame = survey::LevelFrameOf(pose, axes);
        const survey::LevelledField field = survey::Levelled(pose, {m.x, m.y, m.z}, axes);
        RC_ASSERT(std::fabs(field.forward - Dot(frame.forward, m)) < 1e-12);
        RC_ASSERT(std::fabs(field.rightward - Dot(frame.rightward, m)) < 1e-12);
    }
}

TEST(LevelledField, KeepsThePartThatDoesNotDependOnAnInfiniteComponent)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const Pose pose = survey::PoseOf(10, 20);
    EXPECT_TRUE(std::isfinite(
        survey::Levelled(pose, {kInfinity, 1, 1}, SensorAxes::ForwardLeftUp).rightward));
    EXPECT_TRUE(std::isfinite(
        survey::Levelled(pose, {1, kInfinity, 1}, SensorAxes::RightForwardUp).rightward));
}

} // namespace
