// SPDX-License-Identifier: MIT
#include "quality/calibration/SphereFit.h"

#include "quality/calibration/EightValues.h"
#include "quality/calibration/JointModel.h"
#include "tests/quality/TurnMaker.h"
#include <gtest/gtest.h>

using namespace tiltpole::quality;
using turnmaker::DistortedWorld;
using turnmaker::Plan;
using turnmaker::World;

namespace {

std::optional<SphereFit> Fit(const World& world, const Plan& horizontal, const Plan& vertical,
                             Magnetometer which = Magnetometer::A)
{
    const auto turns = turnmaker::MakeTurns(world, horizontal, vertical);
    return FitSphere(TurnOf(turns.horizontal, world.sensorType, which),
                     TurnOf(turns.vertical, world.sensorType, which));
}

// What undoes the distortion exactly.
FullCorrection TruthOf(const turnmaker::Distortion& d, double strength)
{
    FullCorrection truth;
    truth.matrix = d.gain.inverse() / strength;
    truth.offset = truth.matrix * d.offset;
    return truth;
}

// RMS heading error of a fit over all headings and tilts [degrees].
double ErrorOf(const SphereFit& fit, const World& world, Magnetometer which = Magnetometer::A)
{
    const auto& distortion = which == Magnetometer::A ? world.a : world.b;
    return Compare(fit.correction, 0.0, TruthOf(distortion, world.strength),
                   -std::sin(world.dip * turnmaker::kPerDegree),
                   HeadingGrid(world.sensorType, which))
        .rms;
}

// Noise free, all that is left is the pull of the prior on the rotation.
constexpr double kPriorPull = 0.05;

TEST(SphereFit, FindsTheFullDistortionOfBothMagnetometersForEverySensorType)
{
    for (const int type : {0, 1}) {
        World world = DistortedWorld();
        world.sensorType = type;
        for (const Magnetometer which : {Magnetometer::A, Magnetometer::B}) {
            const auto fit =
                Fit(world, turnmaker::HorizontalPlan(), turnmaker::VerticalPlan(), which);
            ASSERT_TRUE(fit);
            EXPECT_LT(ErrorOf(*fit, world, which), kPriorPull) << "type " << type;
        }
    }
}

TEST(SphereFit, FindsTheElevationOfTheField)
{
    const auto fit = Fit(DistortedWorld(), turnmaker::HorizontalPlan(), turnmaker::VerticalPlan());
    ASSERT_TRUE(fit);
    const double expected = -std::sin(65.0 * turnmaker::kPerDegree);
    EXPECT_NEAR(fit->elevationHorizontal, expected, 1e-3);
    EXPECT_NEAR(fit->elevationVertical, expected, 1e-3);
}

// Iron in a building: the vertical turn was made a few steps aside.
TEST(SphereFit, AllowsEachTurnAFieldOfItsOwn)
{
    for (const double longer : {0.94, 1.06}) {
        const World world = DistortedWorld();
        World aside = world;
        aside.strength *= longer;
        aside.dip += 3.0;
        const Turn horizontal =
            TurnOf(turnmaker::MakeTurn(world, turnmaker::HorizontalPlan()), 1, Magnetometer::A);
        const Turn vertical =
            TurnOf(turnmaker::MakeTurn(aside, turnmaker::VerticalPlan()), 1, Magnetometer::A);
        const auto fit = FitSphere(horizontal, vertical);
        ASSERT_TRUE(fit);
        EXPECT_LT(ErrorOf(*fit, world), kPriorPull);
        EXPECT_NEAR(fit->lengthRatio, longer, 1e-3);
        EXPECT_NEAR(fit->elevationHorizontal, -std::sin(65.0 * turnmaker::kPerDegree), 1e-3);
        EXPECT_NEAR(fit->elevationVertical, -std::sin(68.0 * turnmaker::kPerDegree), 1e-3);
    }
}

TEST(SphereFit, DoesNotMindSlantingAxes)
{
    Plan horizontal = turnmaker::HorizontalPlan();
    horizontal.axis = Eigen::Vector3d(0.1, -0.06, 1.0).normalized();
    horizontal.space = Eigen::Vector3d(0.05, 0.08, 1.0).normalized();
    Plan vertical = turnmaker::VerticalPlan();
    vertical.axis = Eigen::Vector3d(0.1, 1.0, 0.12).normalized();
    vertical.space = (vertical.space + Eigen::Vector3d(0.0, 0.0, 0.1)).normalized();
    const auto fit = Fit(DistortedWorld(), horizontal, vertical);
    ASSERT_TRUE(fit);
    EXPECT_LT(ErrorOf(*fit, DistortedWorld()), kPriorPull);
}

TEST(SphereFit, LeavesReadingsNearAMagnetOut)
{
    Plan horizontal = turnmaker::HorizontalPlan();
    horizontal.magnet = 150.0;
    Plan vertical = turnmaker::VerticalPlan();
    vertical.magnet = 150.0;
    World world = DistortedWorld();
    world.noise = 1.0;
    world.tiltNoise = 0.1;
    const auto fit = Fit(world, horizontal, vertical);
    ASSERT_TRUE(fit);
    EXPECT_LT(ErrorOf(*fit, world), 0.5);
    EXPECT_NEAR(fit->disturbed, 40.0 / 360.0, 0.02);
}

TEST(SphereFit, TakesTheSmallerRotationWhereTheTurnsTellNone)
{
    // With the axis to the east a rotation about z only shows in second order.
    World world = DistortedWorld();
    world.noise = 2.0;
    world.tiltNoise = 0.2;
    const auto fit = Fit(world, turnmaker::HorizontalPlan(), turnmaker::VerticalPlan(90.0));
    ASSERT_TRUE(fit);
    const Eigen::Matrix3d& m = fit->correction.matrix;
    EXPECT_LT(std::fabs(m(1, 0) - m(0, 1)) / m(0, 0), 0.02);
}

HeadingUncertainty Known(const World& world, double verticalHeading, int samples)
{
    Plan horizontal = turnmaker::HorizontalPlan();
    Plan vertical = turnmaker::VerticalPlan(verticalHeading);
    horizontal.samples = vertical.samples = samples;
    const auto fit = Fit(world, horizontal, vertical);
    if (!fit) return {std::nan(""), std::nan("")};
    return UncertaintyOf(fit->correction, fit->covariance, fit->elevationHorizontal,
                         HeadingGrid(world.sensorType, Magnetometer::A));
}

World NoisyWorld(double size)
{
    World world = DistortedWorld();
    world.noise = 2.0 * size;
    world.tiltNoise = 0.2 * size;
    return world;
}

// Of independent errors: in proportion to their size, and to the root of their number. A factor of
// 1.6 allows for the chance in one set of 400 readings.
TEST(SphereFit, KnowsItsUncertaintyBySizeAndNumberOfErrors)
{
    const double usual = Known(NoisyWorld(1.0), 20.0, 400).varying;
    EXPECT_GT(usual, 0.0);
    EXPECT_NEAR(std::log(Known(NoisyWorld(4.0), 20.0, 400).varying / usual), std::log(4.0),
                std::log(1.6));
    EXPECT_NEAR(std::log(Known(NoisyWorld(1.0), 20.0, 6400).varying / usual), std::log(0.25),
                std::log(1.6));
    EXPECT_LT(Known(NoisyWorld(0.0), 20.0, 400).varying, 0.02);
}

// An axis to the east leaves the rotation about z to the prior, which stands at 0.05 / 2 for the
// difference of two weights: half of it is the rotation, 0.72 degrees.
TEST(SphereFit, KnowsThatTheAxisToTheEastTellsNoRotation)
{
    const double toTheEast = Known(NoisyWorld(3.0), 90.0, 200).constant;
    EXPECT_NEAR(toTheEast, 0.72, 0.3);
    EXPECT_LT(Known(NoisyWorld(3.0), 0.0, 200).constant, toTheEast / 2.0);
}

TEST(SphereFit, RefusesTurnsOfFewerThanTenReadings)
{
    Plan few = turnmaker::HorizontalPlan();
    few.samples = 9;
    EXPECT_FALSE(Fit(DistortedWorld(), few, turnmaker::VerticalPlan()));
}

TEST(SphereFit, RefusesReadingsThatAreNoNumbers)
{
    auto turns = turnmaker::MakeTurns(DistortedWorld());
    Turn horizontal = TurnOf(turns.horizontal, 1, Magnetometer::A);
    const Turn vertical = TurnOf(turns.vertical, 1, Magnetometer::A);
    horizontal[3].reading.y() = std::nan("");
    EXPECT_FALSE(FitSphere(horizontal, vertical));
}

TEST(SphereFit, RefusesReadingsThatDoNotMove)
{
    auto turns = turnmaker::MakeTurns(DistortedWorld());
    Turn horizontal = TurnOf(turns.horizontal, 1, Magnetometer::A);
    for (Observation& o : horizontal)
        o.reading = {1, 2, 3};
    EXPECT_FALSE(FitSphere(horizontal, horizontal));
}

} // namespace
