// SPDX-License-Identifier: MIT
//
// What the form without gyros reaches, on simulated poles whose sensor has the errors that a calibration
// leaves and forms pitch and roll by a filter of 2 s, and which motions it refuses.
#include "field/Occupation.h"

#include "tests/field/OccupationFigures.h"
#include "tests/field/SimulatedOccupations.h"
#include "tests/field/SimulatedPole.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using field::Occupation;
using field::OccupationAdvice;
using field::OccupationEstimate;
using field::OccupationReason;
using field_tests::Covers;
using field_tests::PlanError;
using field_tests::Quantile;
using simulation::OccupationMotion;
using simulation::PlantedMotion;

struct Tally
{
    int points = 0;
    int rocked = 0; // refused as such
    int stored = 0;
    int covered = 0;                  // tips of those stored within their ellipse
    std::vector<double> planErrors{}; // of those not refused [mm]

    void Take(const OccupationEstimate& e, const xyhCoordinate& truth)
    {
        ++points;
        const bool isStored = e.advice == OccupationAdvice::Store;
        rocked += e.reason == OccupationReason::Rocked ? 1 : 0;
        stored += isStored ? 1 : 0;
        covered += isStored && Covers(e, truth) ? 1 : 0;
        if (e.advice != OccupationAdvice::Refuse)
            planErrors.push_back(1000.0 * PlanError(e, truth));
    }
};

Tally TallyOf(const PlantedMotion& motion, std::uint64_t seed)
{
    simulation::OccupationPlan plan;
    plan.points = 30;
    plan.motion = motion;
    Tally tally;
    field_tests::OccupyEach(plan, seed, [&tally](Occupation& occupation, const xyhCoordinate& tip) {
        tally.Take(occupation.EstimateWithoutGyros(), tip);
    });
    return tally;
}

TEST(OccupationWithoutGyros, FindsTipsAfterALeanIn)
{
    const Tally tally = TallyOf(simulation::UsualMotion(OccupationMotion::LeanIn), 1);
    EXPECT_EQ(tally.rocked, 0);
    ASSERT_EQ(tally.planErrors.size(), 30U);
    EXPECT_LT(Quantile(tally.planErrors, 0.5), 15.0);
    EXPECT_LT(Quantile(tally.planErrors, 0.9), 30.0);
    EXPECT_GE(tally.covered, 0.9 * tally.stored) << tally.stored;
}

TEST(OccupationWithoutGyros, FindsTipsAfterTwoOppositeLeans)
{
    const Tally tally = TallyOf(simulation::UsualMotion(OccupationMotion::OppositeLeans), 1);
    EXPECT_EQ(tally.rocked, 0);
    ASSERT_EQ(tally.planErrors.size(), 30U);
    EXPECT_LT(Quantile(tally.planErrors, 0.5), 12.0);
    EXPECT_LT(Quantile(tally.planErrors, 0.9), 25.0);
    EXPECT_GE(tally.covered, 0.9 * tally.stored) << tally.stored;
}

TEST(OccupationWithoutGyros, TakesSensorsOfTenReadingsASecond)
{
    field_tests::PoleErrors errors;
    errors.noise = false;
    const field_tests::PoleLog log(
        field_tests::SimulatedPole(field_tests::LedOver(15.0), 77.0, errors, 1), 24.0, 10.0, 2);
    Occupation occupation({});
    for (std::size_t i = 0; i < log.samples.size(); ++i)
        log.Give(occupation, i);
    EXPECT_EQ(occupation.EstimateWithoutGyros().advice, OccupationAdvice::Store);
    EXPECT_EQ(occupation.Estimate().reason, OccupationReason::Gap);
}

TEST(OccupationWithoutGyros, RefusesRockedPoles)
{
    for (const double amplitude : {3.0, 5.0, 15.0})
        for (std::uint64_t seed = 1; seed <= 3; ++seed) {
            PlantedMotion motion = simulation::UsualMotion(OccupationMotion::Rock);
            motion.amplitude = amplitude;
            const Tally tally = TallyOf(motion, seed);
            EXPECT_EQ(tally.rocked, tally.points) << amplitude << " degrees, seed " << seed;
        }
}

// Leans of 15 degrees to either side, held for 7 s each, by a sensor whose pitch and roll do not lag.
Tally TallyOfLedPoles(simulation::PoseSensor sensor, simulation::OccupationPlan plan,
                      std::uint64_t seed)
{
    plan.motion.motion = OccupationMotion::OppositeLeans;
    plan.motion.leanTo = 15.0;
    plan.motion.duration = 20.0;
    plan.motion.moveTime = 6.0;
    sensor.filterTime = 0.0;
    Tally tally;
    const auto take = [&tally](Occupation& occupation, const xyhCoordinate& tip) {
        tally.Take(occupation.EstimateWithoutGyros(), tip);
    };
    field_tests::OccupyEach(plan, seed, take, sensor);
    return tally;
}

TEST(OccupationWithoutGyros, StoredTipsKeepTheirEllipseWherePitchAndRollAreOff)
{
    for (const double offset : {0.0, 0.5, -1.0}) {
        simulation::PoseSensor sensor = field_tests::UsualSensor();
        sensor.pitchOffset = offset;
        simulation::OccupationPlan plan;
        plan.points = 30;
        const Tally tally = TallyOfLedPoles(sensor, plan, 4);
        EXPECT_GE(tally.stored, 6) << offset;
        EXPECT_GE(tally.covered, 0.9 * tally.stored) << offset << ", stored " << tally.stored;
    }
}

TEST(OccupationWithoutGyros, StoresNoTipThatSlipped)
{
    for (const double size : {0.03, 0.05})
        for (int i = 0; i < 6; ++i) {
            simulation::OccupationPlan plan;
            plan.points = 3;
            simulation::Slip slip;
            slip.at = 1.5 + 17.0 * i / 5.0;
            slip.by = {size * std::cos(1.1 * i), size * std::sin(1.1 * i), 0.0};
            plan.motion.slips = {slip};
            const Tally tally = TallyOfLedPoles(field_tests::UsualSensor(), plan,
                                                static_cast<std::uint64_t>(30 + i));
            EXPECT_EQ(tally.stored, 0) << size << " m at " << slip.at << " s";
        }
}

TEST(OccupationWithoutGyros, StoresNoTipOfAPoleThatIsFiftyMillimetersLongerOrShorter)
{
    for (const double error : {-0.05, 0.05}) {
        simulation::OccupationPlan plan;
        plan.points = 20;
        plan.poleError = error;
        EXPECT_EQ(TallyOfLedPoles(field_tests::UsualSensor(), plan, 5).stored, 0) << error;
    }
}

// An error of pitch is fixed in the sensor, the tip in the world.
TEST(OccupationWithoutGyros, ATurnOfThePoleTakesAnErrorOfPitchOut)
{
    field_tests::PoleErrors errors;
    errors.noise = false;
    errors.pitch = 0.7;
    const auto errorOf = [&errors](double circling) {
        errors.circling = circling;
        Occupation occupation({});
        field_tests::SimulatedPole(field_tests::LedOver(15.0), 77.0, errors, 1)
            .Feed(occupation, 24.0);
        return PlanError(occupation.EstimateWithoutGyros(), field_tests::kTip);
    };
    EXPECT_GT(errorOf(0.0), 0.012);
    EXPECT_LT(errorOf(15.0), 0.004);
}

TEST(OccupationWithoutGyros, BetterPitchAndRollMakeASmallerEllipse)
{
    const field_tests::PoleLog log(
        field_tests::SimulatedPole(field_tests::LedOver(18.0), 77.0, {}, 1), 24.0, 10.0, 2);
    const auto majorOf = [&log](double sigma) {
        field::OccupationSetup setup;
        setup.tiltSigma = sigma;
        Occupation occupation(setup);
        for (std::size_t i = 0; i < log.samples.size(); ++i)
            log.Give(occupation, i);
        return occupation.EstimateWithoutGyros().ellipseMajor;
    };
    EXPECT_GT(majorOf(0.5), 0.04);
    EXPECT_LT(majorOf(0.1), 0.025);
}

} // namespace
