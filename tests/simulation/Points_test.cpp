// SPDX-License-Identifier: MIT
#include "simulation/Points.h"

#include "survey/Angle.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace simulation;
using tiltpole::survey::Deg2Rad;
using tiltpole::survey::Rad2Deg;

constexpr double kSurveyRoundOff = 3e-9; // meters, of northings of 4 500 000 m

using Positions = std::vector<AntennaPosition>;

TEST(Points, LieOnTheSphereAboutTheTip)
{
    const PointsPlan plan{.points = 200, .poleLength = 1.8, .planNoise = 0.0, .heightNoise = 0.0};
    const Positions positions = SimulatePoints(plan, 1);
    ASSERT_EQ(positions.size(), 200U);
    for (const AntennaPosition& p : positions) {
        const Point3 d = p.antenna - plan.tip;
        EXPECT_NEAR(std::hypot(d.x, d.y, d.z), 1.8, kSurveyRoundOff);
        EXPECT_NEAR(Rad2Deg(std::acos(d.z / 1.8)), p.lean, 1e-6);
        EXPECT_NEAR(std::remainder(Rad2Deg(std::atan2(d.y, d.x)) - p.azimuth, 360.0), 0.0, 1e-6);
    }
}

TEST(Points, StayInTheirZone)
{
    const PointsPlan plan{
        .points = 500, .leastLean = 10.0, .mostLean = 15.0, .azimuth = 350.0, .width = 60.0};
    const Positions positions = SimulatePoints(plan, 2);
    const auto [least, most] = std::ranges::minmax(positions, {}, &AntennaPosition::lean);
    EXPECT_GE(least.lean, 10.0 - 1e-9);
    EXPECT_LE(most.lean, 15.0 + 1e-9);
    EXPECT_GT(most.lean - least.lean, 4.5);
    for (const AntennaPosition& p : positions)
        EXPECT_LE(std::fabs(std::remainder(p.azimuth - 350.0, 360.0)), 30.0 + 1e-9);
}

// Over a zone of the sphere the cosine of the lean is even: half of the points on either side of
// the middle cosine.
TEST(Points, FillTheZoneEvenly)
{
    const PointsPlan plan{.points = 10'000, .leastLean = 0.0, .mostLean = 60.0};
    const auto flat = std::ranges::count_if(SimulatePoints(plan, 3), [](const AntennaPosition& p) {
        return std::cos(Deg2Rad(p.lean)) > 0.75;
    });
    EXPECT_NEAR(static_cast<double>(flat), 5000.0, 4.0 * 50.0);
}

TEST(Points, NoiseHasItsStandardDeviation)
{
    const PointsPlan plan{
        .points = 10'000, .planNoise = 0.008, .heightNoise = 0.015, .inclineNoise = 0.2};
    double plane = 0.0;
    double height = 0.0;
    double incline = 0.0;
    for (const AntennaPosition& p : SimulatePoints(plan, 4)) {
        const Point3 error = p.antenna - p.truth;
        plane += error.x * error.x + error.y * error.y;
        height += error.z * error.z;
        incline += (p.incline - p.lean) * (p.incline - p.lean);
    }
    EXPECT_NEAR(std::sqrt(plane / 20'000) / 0.008, 1.0, 4.0 / std::sqrt(40'000.0));
    EXPECT_NEAR(std::sqrt(height / 10'000) / 0.015, 1.0, 4.0 / std::sqrt(20'000.0));
    EXPECT_NEAR(std::sqrt(incline / 10'000) / 0.2, 1.0, 4.0 / std::sqrt(20'000.0));
}

TEST(Points, KeepTheirSpacingInThePlane)
{
    const Positions positions = SimulatePoints({.points = 20, .spacing = 0.3}, 5);
    ASSERT_EQ(positions.size(), 20U);
    for (std::size_t i = 0; i < positions.size(); ++i)
        for (std::size_t j = 0; j < i; ++j) {
            const Point3 d = positions[i].antenna - positions[j].antenna;
            EXPECT_GE(std::hypot(d.x, d.y), 0.3);
        }
}

// On a disc 0.35 m in radius no more than seven points stand 0.35 m apart; noise adds a little
// room.
TEST(Points, AreFewerWhereTheZoneHasNoRoom)
{
    const PointsPlan plan{
        .points = 20, .leastLean = 0.0, .mostLean = 10.0, .spacing = 0.347, .planNoise = 0.0};
    const Positions positions = SimulatePoints(plan, 6);
    EXPECT_GE(positions.size(), 3U);
    EXPECT_LE(positions.size(), 7U);
}

TEST(Points, OutliersAreOffByTheirSize)
{
    const PointsPlan plan{
        .points = 20, .planNoise = 0.0, .heightNoise = 0.0, .outliers = 3, .outlierSize = 0.1};
    const Positions positions = SimulatePoints(plan, 7);
    EXPECT_EQ(std::ranges::count(positions, true, &AntennaPosition::outlier), 3);
    for (const AntennaPosition& p : positions) {
        const Point3 error = p.antenna - p.truth;
        EXPECT_NEAR(std::hypot(error.x, error.y, error.z), p.outlier ? 0.1 : 0.0, kSurveyRoundOff);
    }
}

TEST(Points, ImpossiblePlansAreNamedAndGiveNothing)
{
    const PointsPlan plans[] = {
        {.points = 0       },
        {.points = 1000001 },
        {.leastLean = -1.0 },
        {.width = -1.0     },
        {.outliers = -1    },
        {.poleLength = -1.0},
        {.leastLean = 30.0,  .mostLean = 20.0},
        {.mostLean = 90.0                 },
        {.width = 361.0},
        {.outliers = 21                 },
    };
    for (const PointsPlan& plan : plans) {
        EXPECT_FALSE(ProblemOf(plan).empty());
        EXPECT_TRUE(SimulatePoints(plan, 1).empty()) << ProblemOf(plan);
    }
    EXPECT_EQ(ProblemOf(PointsPlan{}), "");
}

} // namespace
