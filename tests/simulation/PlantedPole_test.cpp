// SPDX-License-Identifier: MIT
#include "simulation/PlantedPole.h"

#include "survey/Angle.h"
#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace simulation;
using tiltpole::survey::Rad2Deg;

constexpr OccupationMotion kAllMotions[] = {OccupationMotion::LeanIn,
                                            OccupationMotion::OppositeLeans, OccupationMotion::Rock,
                                            OccupationMotion::Hold, OccupationMotion::Free};

// With a heading, an azimuth, a turn, a tremor and a slip, so that nothing cancels.
PlantedMotion Busy(OccupationMotion kind)
{
    PlantedMotion motion = UsualMotion(kind);
    motion.duration = 5.0;
    motion.azimuth = 130.0;
    motion.heading = 250.0;
    motion.turn = 90.0;
    motion.tremor = 0.3;
    motion.slips = {
        {2.0, 0.5, {0.01, -0.02, 0.03}}
    };
    return motion;
}

double LeanOf(const PoleInstant& pole)
{
    return Rad2Deg(std::acos(-pole.up.z));
}

double FarthestElement(const Matrix& a, const Matrix& b)
{
    double most = 0.0;
    for (int column = 0; column < 3; ++column)
        most = std::max(most, Length(a.Column(column) - b.Column(column)));
    return most;
}

// Midpoint rule with steps of 1 ms: the error is of the order of the step's square.
TEST(PlantedPole, RatesIntegrateToTheAttitude)
{
    constexpr double kStep = 0.001;
    for (const OccupationMotion kind : kAllMotions) {
        const PlantedPole pole(Busy(kind), 3, 1);
        Matrix attitude = pole.At(0.0).attitude;
        for (int i = 0; i < 5000; ++i) {
            const Point3 rate = pole.At((i + 0.5) * kStep).rate;
            const double speed = Length(rate);
            attitude = attitude * RotationAbout(1.0 / speed * rate, speed * kStep);
        }
        EXPECT_LT(FarthestElement(attitude, pole.At(5.0).attitude), 2e-7) << NameOf(kind);
    }
}

TEST(PlantedPole, AccelerationIsTheSecondDifferenceOfThePosition)
{
    constexpr double kStep = 1e-3;
    for (const OccupationMotion kind : kAllMotions) {
        const PlantedPole pole(Busy(kind), 3, 1);
        for (double t = -1.0; t < 6.0; t += 0.0371) {
            const Point3 bend =
                pole.At(t - kStep).sensor + pole.At(t + kStep).sensor - 2.0 * pole.At(t).sensor;
            const Point3 difference = 1.0 / (kStep * kStep) * bend - pole.At(t).acceleration;
            // Jumps of the third derivative at the ends of a move cost a step each.
            EXPECT_LT(Length(difference), 0.03) << NameOf(kind) << " at " << t;
        }
        const Point3 still =
            1e6 * (pole.At(1.369).sensor + pole.At(1.371).sensor - 2.0 * pole.At(1.37).sensor)
            - pole.At(1.37).acceleration;
        EXPECT_LT(Length(still), 1e-3) << NameOf(kind);
    }
}

TEST(PlantedPole, AntennaAndSensorStandOnTheAxisOfTheAttitude)
{
    for (const OccupationMotion kind : kAllMotions) {
        const PlantedMotion motion = Busy(kind);
        const PlantedPole pole(motion, 3, 1);
        for (double t = 0.0; t < 5.0; t += 0.31) {
            const PoleInstant now = pole.At(t);
            EXPECT_LT(Length(now.up + now.attitude.Column(2)), 1e-14);
            EXPECT_LT(Length(now.sensor - now.tip - motion.sensorHeight * now.up), 1e-14);
        }
    }
}

TEST(PlantedPole, LeansTowardsItsAzimuthByTheDegreesOfTheMotion)
{
    struct Case
    {
        OccupationMotion motion;
        double seconds;
        double lean;
        double azimuth;
    };
    constexpr Case cases[] = {
        {OccupationMotion::LeanIn,        0.0,    5.0,  130.0},
        {OccupationMotion::LeanIn,        1.0,    12.5, 130.0},
        {OccupationMotion::LeanIn,        2.0,    20.0, 130.0},
        {OccupationMotion::LeanIn,        5.0,    20.0, 130.0},
        {OccupationMotion::OppositeLeans, 1.5,    15.0, 130.0},
        {OccupationMotion::OppositeLeans, 3.5,    15.0, 310.0},
        {OccupationMotion::Rock,          0.0,    10.0, 130.0},
        {OccupationMotion::Rock,          1.5625, 15.0, 130.0}, // 1 1/4 periods of 0.8 Hz
        {OccupationMotion::Rock,          2.1875, 5.0,  130.0},
        {OccupationMotion::Hold,          3.0,    20.0, 130.0},
    };
    for (const Case& c : cases) {
        PlantedMotion motion = UsualMotion(c.motion);
        motion.azimuth = 130.0;
        motion.tremor = 0.0;
        const PoleInstant now = PlantedPole(motion, 3, 1).At(c.seconds);
        EXPECT_NEAR(LeanOf(now), c.lean, 1e-6) << NameOf(c.motion) << " at " << c.seconds;
        const double azimuth = Rad2Deg(std::atan2(now.up.y, now.up.x));
        EXPECT_NEAR(std::remainder(azimuth - c.azimuth, 360.0), 0.0, 1e-6) << NameOf(c.motion);
    }
}

TEST(PlantedPole, FreeMotionTurnsOnceAndLeansInAllDirections)
{
    PlantedMotion motion = UsualMotion(OccupationMotion::Free);
    motion.tremor = 0.0;
    const PlantedPole pole(motion, 3, 1);
    double turned = 0.0;
    double northmost = 0.0, southmost = 0.0, eastmost = 0.0, westmost = 0.0;
    for (int i = 0; i < 20000; ++i) {
        const PoleInstant now = pole.At((i + 0.5) * 0.001);
        turned += 0.001 * Dot(now.rate, {0.0, 0.0, 1.0});
        northmost = std::max(northmost, now.up.x);
        southmost = std::min(southmost, now.up.x);
        eastmost = std::max(eastmost, now.up.y);
        westmost = std::min(westmost, now.up.y);
    }
    EXPECT_NEAR(turned, 360.0, 40.0); // leaning adds to the turn about the axis
    EXPECT_GT(northmost, 0.4);
    EXPECT_LT(southmost, -0.05);
    EXPECT_GT(eastmost, 0.2);
    EXPECT_LT(westmost, -0.2);
}

TEST(PlantedPole, SlipMovesTheTipOnceAndUpwardIsUp)
{
    const PlantedPole pole(Busy(OccupationMotion::Hold), 3, 1);
    EXPECT_EQ(Length(pole.At(2.0).tip), 0.0);
    EXPECT_LT(Length(pole.At(2.25).tip - Point3{0.005, -0.01, -0.015}), 1e-15);
    EXPECT_LT(Length(pole.At(2.5).tip - Point3{0.01, -0.02, -0.03}), 1e-15);
    EXPECT_LT(Length(pole.At(9.0).tip - Point3{0.01, -0.02, -0.03}), 1e-15);
}

TEST(PlantedPole, ImpossibleMotionsAreNamed)
{
    const PlantedMotion motions[] = {
        {.duration = 0.0                 },
        {.moveTime = 0.0                 },
        {.duration = 1.0,                  .moveTime = 2.0},
        {.leanTo = 61.0                               },
        {.leanFrom = -1.0},
        {.leanTo = -1.0                               },
        {.amplitude = -1.0},
        {.motion = OccupationMotion::Rock,                                .amplitude = 56.0},
        {.motion = OccupationMotion::Free,.amplitude = 360.0},
        {.motion = OccupationMotion::Free, .leanFrom = 0.0, .amplitude = 50.0},
        {.frequency = -1.0                               },
        {.sensorHeight = -0.1                },
        {.slips = {{.at = 1.0, .duration = 0.0}}                               },
    };
    for (const PlantedMotion& motion : motions)
        EXPECT_FALSE(ProblemOf(motion).empty());
    for (const OccupationMotion kind : kAllMotions)
        EXPECT_EQ(ProblemOf(UsualMotion(kind)), "") << NameOf(kind);
}

} // namespace
