// SPDX-License-Identifier: MIT
#include "simulation/Pole.h"

#include "survey/Angle.h"
#include <cmath>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <vector>

namespace {

using namespace simulation;
using tiltpole::survey::Deg2Rad;

double Distance(const Point3& p, const Point3& q)
{
    return std::hypot(p.x - q.x, p.y - q.y, p.z - q.z);
}

double Angle(int least, int most)
{
    return *rc::gen::inRange(least * 100, most * 100 + 1) / 100.0;
}

TEST(Pole, PlumbPoleHasItsTipBelow)
{
    for (const int type : {0, 1, 2})
        EXPECT_LT(Distance(SolvedStep(type, {123.0, 0.0, 0.0}), {0.0, 0.0, -1.0}), 1e-15);
    EXPECT_LT(Distance(RigidStep({123.0, 0.0, 0.0}), {0.0, 0.0, -1.0}), 1e-15);
}

// Rolled 10 degrees to the right the lower end goes left: west, when heading north.
TEST(Pole, RollToTheRightSwingsTheTipLeft)
{
    const double radians = Deg2Rad(10.0);
    const Point3 expected{0.0, -std::sin(radians), -std::cos(radians)};
    EXPECT_LT(Distance(RigidStep({0.0, 0.0, 10.0}), expected), 1e-14);
    EXPECT_LT(Distance(SolvedStep(1, {0.0, 0.0, 10.0}), expected), 1e-14);
}

TEST(Pole, NoseUpSwingsTheTipForward)
{
    const double radians = Deg2Rad(10.0);
    const Point3 expected{0.0, std::sin(radians), -std::cos(radians)};
    EXPECT_LT(Distance(RigidStep({90.0, 10.0, 0.0}), expected), 1e-14);
    EXPECT_LT(Distance(SolvedStep(1, {90.0, 10.0, 0.0}), expected), 1e-14);
}

// The square root near a right angle costs half of the digits.
constexpr double kRootOfRoundOff = 1e-7;

RC_GTEST_PROP(Pole, SolvedStepOfTypeTwoIsTheRigidOne, ())
{
    const PoseAngles angles{Angle(0, 360), Angle(-44, 44), Angle(-44, 44)};
    RC_ASSERT(Distance(SolvedStep(2, angles), RigidStep(angles)) < kRootOfRoundOff);
}

RC_GTEST_PROP(Pole, SolvedStepOfTypeOneIsTheRigidOneInOnePlane, ())
{
    const PoseAngles pitched{Angle(0, 360), Angle(-60, 60), 0.0};
    const PoseAngles rolled{pitched.heading, 0.0, pitched.pitch};
    RC_ASSERT(Distance(SolvedStep(1, pitched), RigidStep(pitched)) < kRootOfRoundOff);
    RC_ASSERT(Distance(SolvedStep(1, rolled), RigidStep(rolled)) < kRootOfRoundOff);
}

// With slopes of both axes for pitch and roll, type 1 is a straight pole too.
RC_GTEST_PROP(Pole, SolvedStepOfTypeOneTakesSlopes, ())
{
    const PoseAngles angles{Angle(0, 360), Angle(-40, 40), Angle(-40, 40)};
    const double radians = tiltpole::survey::kPi / 180.0;
    const double slope =
        std::asin(std::cos(angles.pitch * radians) * std::sin(angles.roll * radians)) / radians;
    const Point3 step = SolvedStep(1, {angles.heading, angles.pitch, slope});
    RC_ASSERT(Distance(step, RigidStep(angles)) < kRootOfRoundOff);
}

// Of the other types the heading is that of the right axis, a quarter turn on when rolled alone.
TEST(Pole, SolvedStepOfOtherTypesCountsFromTheRightAxis)
{
    const Point3 step = SolvedStep(0, {90.0, 0.0, 10.0});
    EXPECT_LT(Distance(step, RigidStep({0.0, 0.0, 10.0})), 1e-14);
}

std::vector<Point3> ErrorsOf(const AntennaNoise& noise, double interval, int count)
{
    AntennaErrors errors(noise, interval, 11);
    std::vector<Point3> all;
    for (int i = 0; i < count; ++i)
        all.push_back(errors.Next());
    return all;
}

double MeanProduct(const std::vector<Point3>& errors, double Point3::*axis, std::size_t lag)
{
    double sum = 0.0;
    for (std::size_t i = lag; i < errors.size(); ++i)
        sum += errors[i].*axis * (errors[i - lag].*axis);
    return sum / static_cast<double>(errors.size() - lag);
}

TEST(AntennaErrors, AreNothingWithoutNoise)
{
    for (const Point3& e : ErrorsOf({0.0, 0.0, 0.0, 0.0, 30.0}, 0.1, 10))
        EXPECT_EQ(Distance(e, {}), 0.0);
}

// The squares of 200 000 independent numbers average to 1 with a deviation of sqrt(2/200000).
TEST(AntennaErrors, WhiteShareHasItsDeviationAndNoMemory)
{
    const auto errors = ErrorsOf({0.002, 0.005, 0.0, 0.0, 30.0}, 0.1, 200'000);
    const double allowed = 4.0 * std::sqrt(2.0 / 200'000);
    EXPECT_NEAR(MeanProduct(errors, &Point3::x, 0) / 4e-6, 1.0, allowed);
    EXPECT_NEAR(MeanProduct(errors, &Point3::z, 0) / 25e-6, 1.0, allowed);
    EXPECT_NEAR(MeanProduct(errors, &Point3::y, 1) / 4e-6, 0.0, allowed);
}

// With a correlation time of 2 s at 10 Hz, 20 000 s hold some 10 000 independent numbers.
TEST(AntennaErrors, SlowShareForgetsWithItsCorrelationTime)
{
    const auto errors = ErrorsOf({0.0, 0.0, 0.003, 0.010, 2.0}, 0.1, 200'000);
    const double allowed = 4.0 * std::sqrt(2.0 / 10'000);
    EXPECT_NEAR(MeanProduct(errors, &Point3::x, 0) / 9e-6, 1.0, allowed);
    EXPECT_NEAR(MeanProduct(errors, &Point3::z, 0) / 1e-4, 1.0, allowed);
    EXPECT_NEAR(MeanProduct(errors, &Point3::z, 20) / 1e-4, std::exp(-1.0), allowed);
    EXPECT_NEAR(MeanProduct(errors, &Point3::y, 10) / 9e-6, std::exp(-0.5), allowed);
}

TEST(AntennaErrors, SlowShareWithoutACorrelationTimeHasNoMemory)
{
    const auto errors = ErrorsOf({0.0, 0.0, 0.003, 0.010, 0.0}, 0.1, 200'000);
    const double allowed = 4.0 * std::sqrt(2.0 / 200'000);
    EXPECT_NEAR(MeanProduct(errors, &Point3::x, 0) / 9e-6, 1.0, allowed);
    EXPECT_NEAR(MeanProduct(errors, &Point3::x, 1) / 9e-6, 0.0, allowed);
}

} // namespace
