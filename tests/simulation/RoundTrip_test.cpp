// SPDX-License-Identifier: MIT
//
// Simulated samples through the positioning itself.
#include "positioning/InclineSensor_Position.h"
#include "simulation/Turn.h"
#include "simulation/Walk.h"
#include "tests/simulation/TestSensors.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace simulation;
using test::DistortedSensor;

constexpr AntennaNoise kSilent{0.0, 0.0, 0.0, 0.0, 30.0};

CInclineSensor_Position PositionFor(const PoseSensor& sensor, const EarthField& field)
{
    CInclineSensor_Position position;
    position.SetSensorType(sensor.type);
    position.SetMagneticCorrectPar_A(*CorrectionOf(sensor.a));
    position.SetMagneticCorrectPar_B(*CorrectionOf(sensor.b));
    position.SetMagneticBiasAngle_A(BiasAngleOf(field));
    position.SetMagneticBiasAngle_B(BiasAngleOf(field));
    return position;
}

double Between(double heading, double other)
{
    return std::fabs(std::remainder(heading - other, 360.0));
}

double Distance(const xyhCoordinate& p, const Point3& q)
{
    return std::hypot(p.x - q.x, p.y - q.y, p.h - q.z);
}

// With the true parameters the headings, the agreement of both magnetometers and the tip are true.
void CheckWalk(int type, const PoseSensor& sensor, PoleGeometry geometry)
{
    const EarthField field{534.0, 66.0, 3.5};
    const WalkPlan plan{
        .points = 20, .start = {100.0, 200.0, 10.0},
             .geometry = geometry, .noise = kSilent
    };
    const Walk walk = SimulateWalk(sensor, field, plan, 9);
    CInclineSensor_Position position = PositionFor(sensor, field);
    for (std::size_t i = 0; i < walk.samples.size(); ++i) {
        PoseSensorData sample = walk.samples[i];
        xyhCoordinate point{walk.antenna[i].x, walk.antenna[i].y, walk.antenna[i].z};
        ASSERT_EQ(position.Position(sample, plan.poleLength, point), 1);
        const double heading = walk.truth[i].pose.angles.heading;
        ASSERT_LT(Between(sample.dYaw, heading), 1e-9) << "type " << type << ", sample " << i;
        ASSERT_LT(Between(sample.dYaw_2, heading + 180.0), 1e-9) << "B looks backwards";
        ASSERT_EQ(position.IsMagneticInterference(), 0);
        ASSERT_LT(Distance(point, walk.truth[i].tip), 1e-9) << "type " << type << ", sample " << i;
    }
}

TEST(RoundTrip, NoiseFreeWalkGivesTrueHeadingsAndTips)
{
    for (const int type : {0, 1, 2, 3})
        CheckWalk(type, DistortedSensor(type), PoleGeometry::ByFormula);
}

// Type 2 is solved as the straight pole that it is.
TEST(RoundTrip, StraightPoleOfTypeTwoGivesTrueTips)
{
    CheckWalk(2, DistortedSensor(2), PoleGeometry::Rigid);
}

// Errors on the points of a walk without any noise.
struct Misses
{
    std::vector<double> plan; // [mm], ascending
    double height = 0.0;      // [mm], the largest
    double heading = 0.0;     // [degrees], the largest
};

Misses MissesOf(RollReport roll, double mostLean)
{
    PoseSensor sensor;
    sensor.rollReport = roll;
    WalkPlan walking;
    walking.points = 200;
    walking.leastLean = 0.0;
    walking.mostLean = mostLean;
    walking.noise = kSilent;
    const Walk walk = SimulateWalk(sensor, {}, walking, 5);
    CInclineSensor_Position position = PositionFor(sensor, {});
    Misses misses;
    for (std::size_t i = 0; i < walk.samples.size(); ++i) {
        const WalkTruth& truth = walk.truth[i];
        if (truth.point == 0) continue;
        PoseSensorData sample = walk.samples[i];
        xyhCoordinate point{walk.antenna[i].x, walk.antenna[i].y, walk.antenna[i].z};
        position.Position(sample, walking.poleLength, point);
        misses.plan.push_back(1e3 * std::hypot(point.x - truth.tip.x, point.y - truth.tip.y));
        misses.height = std::max(misses.height, 1e3 * std::fabs(point.h - truth.tip.z));
        misses.heading = std::max(misses.heading, Between(sample.dYaw, truth.pose.angles.heading));
    }
    std::ranges::sort(misses.plan);
    return misses;
}

// docs/simulation.md shows these figures.
TEST(RoundTrip, FormulaOfTypeOneMissesAStraightPoleThatLeansFar)
{
    struct Case
    {
        RollReport roll;
        double mostLean;           // [degrees]
        double half, mostly, plan; // p50, p90 and the largest [mm]
        double height, heading;
    };
    constexpr Case cases[] = {
        {RollReport::Leveling,    15.0, 0.24, 2.91,  6.23,  1.01,  0.0  },
        {RollReport::Leveling,    30.0, 2.01, 24.47, 53.35, 17.56, 0.0  },
        {RollReport::Inclination, 15.0, 0.03, 0.97,  2.35,  0.0,   0.283},
        {RollReport::Inclination, 30.0, 0.37, 13.25, 41.47, 0.0,   2.51 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.plan);
        const Misses misses = MissesOf(c.roll, c.mostLean);
        ASSERT_EQ(misses.plan.size(), 12000U);
        EXPECT_NEAR(misses.plan[6000], c.half, 0.01);
        EXPECT_NEAR(misses.plan[10800], c.mostly, 0.01);
        EXPECT_NEAR(misses.plan.back(), c.plan, 0.01);
        EXPECT_NEAR(misses.height, c.height, 0.01);
        EXPECT_NEAR(misses.heading, c.heading, 0.001);
    }
}

// The tip from magnetometer B, whose x axis looks backwards, is the same.
TEST(RoundTrip, TipFromMagnetometerBIsTrueToo)
{
    const PoseSensor sensor = DistortedSensor(1);
    const EarthField field{534.0, 66.0, 3.5};
    const WalkPlan plan{
        .start = {100.0, 200.0, 10.0},
          .geometry = PoleGeometry::ByFormula, .noise = kSilent
    };
    const Walk walk = SimulateWalk(sensor, field, plan, 9);
    CInclineSensor_Position position = PositionFor(sensor, field);
    for (std::size_t i = 0; i < walk.samples.size(); ++i) {
        PoseSensorData sample = walk.samples[i];
        position.CalculateYaw_A(sample);
        position.CalculateYaw_B(sample);
        xyhCoordinate tip;
        position.Position_Geometry_B({walk.antenna[i].x, walk.antenna[i].y, walk.antenna[i].z},
                                     sample, plan.poleLength, tip);
        ASSERT_LT(Distance(tip, walk.truth[i].tip), 1e-9);
    }
}

TEST(RoundTrip, UncorrectedIronSpoilsTheHeading)
{
    const PoseSensor sensor = DistortedSensor(1);
    const Recording turn = SimulateTurn(sensor, {}, {}, 1);
    CInclineSensor_Position position;
    double most = 0.0;
    for (std::size_t i = 0; i < turn.samples.size(); ++i) {
        PoseSensorData sample = turn.samples[i];
        position.CalculateYaw_A(sample);
        most = std::max(most, Between(sample.dYaw, turn.truth[i].angles.heading));
    }
    EXPECT_GT(most, 5.0);
}

// A magnet of 400 counts at A and a tenth of it at B parts them by more than the 300 let.
TEST(RoundTrip, MagnetShowsAsInterference)
{
    const EarthField field;
    const Magnet magnet{4.0, 8.0, 400.0, 0.1, 20.0, 30.0, false};
    const PoseSensor sensor = DistortedSensor(1);
    const Recording turn = SimulateTurn(sensor, field, {.magnets = {magnet}}, 1);
    CInclineSensor_Position position = PositionFor(sensor, field);
    for (std::size_t i = 0; i < turn.samples.size(); ++i) {
        PoseSensorData sample = turn.samples[i];
        position.CalculateYaw_A(sample);
        position.CalculateYaw_B(sample);
        const double seconds = turn.truth[i].seconds;
        const bool near = 4.5 <= seconds && seconds <= 7.5;
        if (!near && turn.truth[i].disturbed) continue; // rising and falling
        ASSERT_EQ(position.IsMagneticInterference(), near ? 1 : 0) << seconds;
    }
}

TEST(RoundTrip, PoleStandsStillOnThePointsOnly)
{
    const EarthField field;
    const PoseSensor sensor = DistortedSensor(1);
    const Walk walk = SimulateWalk(sensor, field, {}, 2);
    CInclineSensor_Position position = PositionFor(sensor, field);
    int stillOnPoints = 0;
    int onPoints = 0;
    int movedOnTheWay = 0;
    for (std::size_t i = 0; i < walk.samples.size(); ++i) {
        PoseSensorData sample = walk.samples[i];
        position.CalculateYaw_A(sample);
        if (walk.truth[i].point > 0) {
            ++onPoints;
            stillOnPoints += position.IsStationary();
        } else {
            movedOnTheWay += 1 - position.IsStationary();
        }
    }
    EXPECT_GT(stillOnPoints, 0.95 * onPoints);
    EXPECT_GT(movedOnTheWay, 100);
}

} // namespace
