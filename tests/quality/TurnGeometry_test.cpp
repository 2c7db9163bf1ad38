// SPDX-License-Identifier: MIT
#include "quality/calibration/TurnGeometry.h"

#include <Eigen/Geometry>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace tiltpole::quality;

namespace {

constexpr double kPerDegree = 0.017453292519943295769;

std::vector<Eigen::Vector2d> Arc(double from, double to, double step)
{
    std::vector<Eigen::Vector2d> points;
    for (double azimuth = from; azimuth <= to; azimuth += step) {
        points.emplace_back(30.0 + 200.0 * std::sin(azimuth * kPerDegree),
                            -70.0 + 200.0 * std::cos(azimuth * kPerDegree));
    }
    return points;
}

TEST(Plane, OfNoVectorsIsLevel)
{
    for (const Plane& plane : {PlaneThrough({}), PlaneThroughOrigin({})}) {
        EXPECT_EQ(plane.normal, Eigen::Vector3d::UnitZ());
        EXPECT_EQ(plane.distance, 0.0);
        EXPECT_EQ(plane.spread, 0.0);
    }
}

TEST(Gaps, CountFromFifteenDegreesOn)
{
    std::vector<double> angles;
    for (double a = 0.0; a < 360.0; a += 15.0)
        angles.push_back(a);
    EXPECT_TRUE(GapsOf(angles).empty());

    angles.erase(angles.begin() + 4); // 60
    const std::vector<Gap> gaps = GapsOf(angles);
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_DOUBLE_EQ(gaps[0].from, 45.0);
    EXPECT_DOUBLE_EQ(gaps[0].to, 75.0);
    EXPECT_DOUBLE_EQ(CoveredBy(gaps), 330.0);
}

// 2.5 samples a second of a turn in ten seconds: 14 degrees on average, 20 where the hand was fast.
TEST(Gaps, AreToldFromTheStepsOfASparseLog)
{
    std::vector<double> angles;
    for (const double a :
         {0.0,   12.0,  25.0,  45.0,  58.0,  71.0,  84.0,  104.0, 116.0, 130.0, 143.0, 156.0, 170.0,
          190.0, 203.0, 216.0, 229.0, 242.0, 262.0, 275.0, 288.0, 301.0, 314.0, 334.0, 347.0})
        angles.push_back(a);
    EXPECT_TRUE(GapsOf(angles).empty());

    angles.erase(angles.begin() + 8, angles.begin() + 10); // 116 and 130
    const std::vector<Gap> gaps = GapsOf(angles);
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_DOUBLE_EQ(gaps[0].Width(), 39.0);
}

TEST(Gaps, NeverReachHalfAQuadrantUnnoticed)
{
    EXPECT_DOUBLE_EQ(CoveredBy(GapsOf({0.0, 60.0, 120.0, 180.0, 240.0, 300.0})), 0.0);
}

TEST(Gaps, ReachOverZero)
{
    std::vector<double> angles;
    for (double a = 20.0; a <= 330.0; a += 10.0)
        angles.push_back(a);
    const std::vector<Gap> gaps = GapsOf(angles);
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_DOUBLE_EQ(gaps[0].from, 330.0);
    EXPECT_DOUBLE_EQ(gaps[0].to, 20.0);
    EXPECT_DOUBLE_EQ(CoveredBy(gaps), 310.0);
}

TEST(Gaps, AreTheWholeTurnWithoutAnyAngleOrWithOne)
{
    EXPECT_DOUBLE_EQ(CoveredBy(GapsOf({})), 0.0);
    EXPECT_DOUBLE_EQ(CoveredBy(GapsOf({77.0})), 0.0);
}

// Their widths are rounded: without a limit three gaps may cover -3e-14 degrees.
TEST(Gaps, NeverCoverLessThanNothing)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> angle(0.0, 360.0);
    for (int round = 0; round < 1000; ++round)
        EXPECT_GE(CoveredBy(GapsOf({angle(random), angle(random), angle(random)})), 0.0);
}

TEST(Circle, IsFoundFromAPartOfIt)
{
    for (const double end : {360.0, 270.0, 180.0, 120.0}) {
        const Circle circle = CircleThrough(Arc(0.0, end, 5.0));
        EXPECT_NEAR(circle.u, 30.0, 1e-6) << end;
        EXPECT_NEAR(circle.v, -70.0, 1e-6) << end;
        EXPECT_NEAR(circle.radius, 200.0, 1e-6) << end;
    }
}

TEST(Azimuths, CountFromTheSecondCoordinateTowardsTheFirst)
{
    const Circle circle{30.0, -70.0, 200.0};
    const std::vector<double> azimuths =
        AzimuthsAbout(circle, {
                                  {30.0, 0.0  },
                                  {90.0, -70.0},
                                  {30.0, -90.0},
                                  {0.0,  -70.0}
    });
    EXPECT_NEAR(azimuths[0], 0.0, 1e-12);
    EXPECT_NEAR(azimuths[1], 90.0, 1e-12);
    EXPECT_NEAR(azimuths[2], 180.0, 1e-12);
    EXPECT_NEAR(azimuths[3], 270.0, 1e-12);
}

TEST(Plane, IsFoundWithItsDistance)
{
    std::vector<Eigen::Vector3d> points;
    for (const Eigen::Vector2d& p : Arc(0.0, 350.0, 10.0))
        points.emplace_back(p.x(), p.y(), 12.0);
    const Plane plane = PlaneThrough(points);
    EXPECT_NEAR(std::fabs(plane.normal.z()), 1.0, 1e-12);
    EXPECT_NEAR(std::fabs(plane.distance), 12.0, 1e-9);
    EXPECT_NEAR(plane.spread, 0.0, 1e-6);
}

TEST(Angles, GoOnceRoundTheAxis)
{
    const Eigen::Vector3d axis = Eigen::Vector3d(0.2, 1.0, -0.3).normalized();
    std::vector<Eigen::Vector3d> vectors;
    for (int i = 0; i < 36; ++i) {
        const Eigen::AngleAxisd turn(i * 10.0 * kPerDegree, axis);
        vectors.push_back(turn * axis.unitOrthogonal() + 0.4 * axis);
    }
    const std::vector<double> angles = AnglesAbout(axis, vectors);
    EXPECT_TRUE(GapsOf(angles).empty());
    for (std::size_t i = 1; i < angles.size(); ++i) {
        EXPECT_NEAR(std::remainder(angles[i] - angles[i - 1], 360.0), 10.0, 1e-9) << i;
    }
}

} // namespace
