// SPDX-License-Identifier: MIT
#include "quality/calibration/EightValues.h"

#include "tests/quality/TurnMaker.h"
#include <gtest/gtest.h>

using namespace tiltpole::quality;

namespace {

constexpr double kElevation = -0.9;

const std::vector<Pose>& Grid()
{
    static const std::vector<Pose> grid = HeadingGrid(1, Magnetometer::A);
    return grid;
}

FullCorrection Rotated(const FullCorrection& full, double degrees)
{
    const Eigen::Matrix3d turn =
        Eigen::AngleAxisd(degrees * turnmaker::kPerDegree, Eigen::Vector3d::UnitZ())
            .toRotationMatrix();
    return {turn * full.matrix, turn * full.offset};
}

Incline_MagneticCorrectParameter SomeValues()
{
    Incline_MagneticCorrectParameter v;
    v.x0 = 120.0;
    v.y0 = -80.0;
    v.z0 = 45.0;
    v.a = 0.04;
    v.b = 1.05;
    v.c = -0.03;
    v.d = 0.02;
    v.e = 0.95;
    return v;
}

FullCorrection SomeCorrection()
{
    FullCorrection full = FullOf(SomeValues());
    full.matrix /= 500.0;
    full.offset /= 500.0;
    return full;
}

TEST(HeadingGrid, SharesItsWeightEvenlyOverThreeTilts)
{
    double weights[3] = {};
    for (const Pose& pose : Grid())
        weights[pose.tilt] += pose.weight;
    for (const double w : weights)
        EXPECT_NEAR(w, 1.0 / 3.0, 1e-12);
}

TEST(Compare, FindsNoDifferenceToTheSameCorrection)
{
    const HeadingDifference d =
        Compare(FullOf(SomeValues()), 0.0, SomeCorrection(), kElevation, Grid());
    EXPECT_NEAR(d.rms, 0.0, 1e-9);
}

TEST(Compare, SeesARotationAsAConstantAngleThatTheBiasTakesAway)
{
    // A field turned from x towards y reads as a larger heading.
    const FullCorrection turned = Rotated(FullOf(SomeValues()), 4.0);
    const HeadingDifference d = Compare(turned, 0.0, SomeCorrection(), kElevation, Grid());
    EXPECT_NEAR(d.rmsAt[0], 4.0, 1e-9);
    EXPECT_NEAR(Compare(turned, 4.0, SomeCorrection(), kElevation, Grid()).rmsAt[0], 0.0, 1e-9);
}

TEST(Compare, GivesTheClosedFormErrorOfALevelOffset)
{
    // An offset across the level field h shifts the heading by asin(o / h) at most: with o << h the
    // RMS over a circle is o / (h·√2).
    FullCorrection judged = SomeCorrection();
    judged.offset.x() += 0.001;
    const HeadingDifference d = Compare(judged, 0.0, SomeCorrection(), kElevation, Grid());
    const double level = std::sqrt(1.0 - kElevation * kElevation);
    EXPECT_NEAR(d.rmsAt[0], 0.001 / level / std::sqrt(2.0) * kDegreesPerRadian, 1e-4);
}

TEST(Reduced, FindsEightValuesAgain)
{
    const auto reduced = Reduced(SomeCorrection(), kElevation, Grid());
    ASSERT_TRUE(reduced);
    const Incline_MagneticCorrectParameter v = SomeValues();
    EXPECT_NEAR(reduced->values.x0, v.x0, 1e-4);
    EXPECT_NEAR(reduced->values.y0, v.y0, 1e-4);
    EXPECT_NEAR(reduced->values.z0, v.z0, 1e-4);
    EXPECT_NEAR(reduced->values.a, v.a, 1e-6);
    EXPECT_NEAR(reduced->values.b, v.b, 1e-6);
    EXPECT_NEAR(reduced->values.c, v.c, 1e-6);
    EXPECT_NEAR(reduced->values.d, v.d, 1e-6);
    EXPECT_NEAR(reduced->values.e, v.e, 1e-6);
    EXPECT_NEAR(reduced->biasAngle, 0.0, 1e-4);
}

TEST(Reduced, BringsARotationAboutZIntoTheBiasAngle)
{
    // On a plumb pole the bias angle would undo it all; a lean tells the two apart, so the best
    // angle for all tilts is a little less.
    FullCorrection full;
    full.matrix /= 500.0;
    const FullCorrection turned = Rotated(full, -3.0);
    const auto reduced = Reduced(turned, kElevation, Grid());
    ASSERT_TRUE(reduced);
    EXPECT_GT(reduced->biasAngle, 1.5);
    EXPECT_LT(reduced->biasAngle, 3.0);
    const auto error = [&](double bias) {
        return Compare(FullOf(reduced->values), bias, turned, kElevation, Grid()).rms;
    };
    EXPECT_LT(error(reduced->biasAngle), 0.6 * error(0.0));
}

TEST(Reduced, ComesCloserThanDroppingTheRotation)
{
    // Lower triangular by an exact rotation: full = rotation·triangle, the rotation thrown away.
    const turnmaker::World world = turnmaker::DistortedWorld();
    FullCorrection full;
    full.matrix = world.a.gain.inverse() / world.strength;
    full.offset = full.matrix * world.a.offset;
    const Eigen::Matrix3d lower = (full.matrix.transpose() * full.matrix).reverse().llt().matrixU();
    FullCorrection triangle;
    triangle.matrix = lower.reverse();
    triangle.offset = triangle.matrix * full.matrix.inverse() * full.offset;
    const auto reduced = Reduced(full, kElevation, Grid());
    ASSERT_TRUE(reduced);
    const auto error = [&](const FullCorrection& judged, double bias) {
        return Compare(judged, bias, full, kElevation, Grid()).rms;
    };
    const double mean = Compare(triangle, 0.0, full, kElevation, Grid()).mean;
    const double dropped = error(triangle, mean);
    EXPECT_LT(error(FullOf(reduced->values), reduced->biasAngle), 0.7 * dropped);
}

} // namespace
