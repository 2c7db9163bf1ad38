// SPDX-License-Identifier: MIT
#include "field/Occupation.h"

#include "tests/field/SimulatedPole.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

using field::Occupation;
using field::OccupationAdvice;
using field::OccupationEstimate;
using field::OccupationReason;
using field::OccupationSetup;
using field_tests::Hold;
using field_tests::kTip;
using field_tests::LeanIn;
using field_tests::PoleErrors;
using field_tests::Rock;
using field_tests::SimulatedPole;

double PlanError(const OccupationEstimate& e)
{
    return std::hypot(e.tip.x - kTip.x, e.tip.y - kTip.y);
}

OccupationEstimate EstimateOf(const SimulatedPole::Lean& lean, const PoleErrors& errors,
                              double seconds = 8.0, unsigned seed = 1,
                              const OccupationSetup& setup = {})
{
    Occupation occupation(setup);
    SimulatedPole(lean, 40.0 + 37.0 * seed, errors, seed).Feed(occupation, seconds);
    return occupation.Estimate();
}

TEST(Occupation, FindsTheTipOfAPerfectPole)
{
    PoleErrors errors;
    errors.noise = false;
    errors.heading = 0.0;
    const auto e = EstimateOf(LeanIn(30.0), errors);
    EXPECT_EQ(e.advice, OccupationAdvice::Store) << OccupationText(e);
    EXPECT_LT(PlanError(e), 0.0005);
    EXPECT_NEAR(e.tip.h, kTip.h, 0.0005);
    EXPECT_NEAR(e.lean, 30.0, 0.02);
}

TEST(Occupation, FindsTheTipAfterALeanInWithoutAMagnetometer)
{
    OccupationSetup setup;
    setup.useMagnetometer = false;
    for (unsigned seed = 1; seed <= 8; ++seed) {
        const auto e = EstimateOf(LeanIn(25.0), {}, 8.0, seed, setup);
        EXPECT_NE(e.advice, OccupationAdvice::Refuse) << OccupationText(e);
        EXPECT_LT(PlanError(e), 0.03) << "seed " << seed;
        EXPECT_LT(PlanError(e), 1.3 * e.ellipseMajor) << "seed " << seed;
    }
}

TEST(Occupation, SaysHowFarTheMagnetometerIsOff)
{
    PoleErrors errors;
    errors.heading = 35.0;
    const auto e = EstimateOf(LeanIn(30.0), errors);
    EXPECT_EQ(e.advice, OccupationAdvice::Store) << OccupationText(e);
    EXPECT_NEAR(e.magneticDifference, 35.0, 3.0 * e.headingSigma + 0.5);
    EXPECT_LT(PlanError(e), 0.03);
}

TEST(Occupation, AsksForMotionWhereTheHeadingIsOpen)
{
    const auto e = EstimateOf(Hold(25.0), {});
    EXPECT_EQ(e.advice, OccupationAdvice::Move);
    EXPECT_EQ(e.reason, OccupationReason::HeadingUncertain) << OccupationText(e);
    EXPECT_GT(e.headingSigma, 3.0);
}

TEST(Occupation, NamesATipThatMoved)
{
    PoleErrors errors;
    errors.step = 0.03;
    int named = 0;
    int stored = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        errors.stepAt = 2.0 + 0.2 * seed;
        const auto e = EstimateOf(LeanIn(25.0), errors, 8.0, seed);
        named += e.reason == OccupationReason::TipMoved ? 1 : 0;
        stored += e.advice == OccupationAdvice::Store ? 1 : 0;
    }
    EXPECT_GE(named, 18);
    EXPECT_EQ(stored, 0);
}

TEST(Occupation, NamesAWrongLength)
{
    PoleErrors errors;
    int named = 0;
    int stored = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        errors.length = seed % 2 == 0 ? 2.05 : 1.95;
        const auto e = EstimateOf(Rock(15.0), errors, 8.0, seed);
        named += e.reason == OccupationReason::WrongLength ? 1 : 0;
        stored += e.advice == OccupationAdvice::Store ? 1 : 0;
        if (e.reason == OccupationReason::WrongLength) {
            EXPECT_NEAR(e.lengthError, errors.length - 2.0, 0.03);
        }
    }
    EXPECT_GE(named, 18);
    EXPECT_EQ(stored, 0);
}

TEST(Occupation, StoresNoTipOfAWrongLengthAfterALeanIn)
{
    PoleErrors errors;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        errors.length = seed % 2 == 0 ? 2.05 : 1.95;
        const auto e = EstimateOf(LeanIn(25.0), errors, 8.0, seed);
        EXPECT_NE(e.advice, OccupationAdvice::Store) << seed << ' ' << e.lengthError;
    }
}

TEST(Occupation, AlarmsSeldomWhereNothingIsWrong)
{
    int stored = 0;
    for (unsigned seed = 1; seed <= 20; ++seed)
        stored += EstimateOf(Rock(15.0), {}, 8.0, seed).advice == OccupationAdvice::Store ? 1 : 0;
    EXPECT_GE(stored, 19);
}

TEST(Occupation, FindsABiasOfTheGyros)
{
    OccupationSetup setup;
    setup.gyroBiasSigma = 0.3;
    PoleErrors errors;
    errors.noise = false;
    errors.bias = 0.3;
    const auto e = EstimateOf(Rock(15.0), errors, 8.0, 1, setup);
    EXPECT_NEAR(e.gyroBias.x, 0.3, 0.03);
    EXPECT_LT(PlanError(e), 0.005);
}

TEST(Occupation, NamesAnAntennaWithoutMotion)
{
    PoleErrors errors;
    errors.frozenAntenna = true;
    EXPECT_EQ(EstimateOf(Rock(15.0), errors).reason, OccupationReason::AntennaStill);
}

TEST(Occupation, NamesRatesInRadians)
{
    PoleErrors errors;
    errors.rateFactor = 1.0 / field_tests::kRadian;
    EXPECT_EQ(EstimateOf(Rock(15.0), errors).reason, OccupationReason::GyrosStill);
}

TEST(Occupation, NamesSensorsThatContradictTheTrack)
{
    PoleErrors exchanged;
    exchanged.exchanged = true;
    exchanged.circling = 60.0;
    EXPECT_EQ(EstimateOf(Hold(15.0), exchanged).reason, OccupationReason::SensorsContradict);
    PoleErrors mirrored;
    mirrored.rateFactor = -1.0;
    EXPECT_EQ(EstimateOf(Rock(15.0), mirrored).advice, OccupationAdvice::Refuse);
}

TEST(Occupation, FindsADelay)
{
    for (const double delay : {-0.1, -0.02, 0.02, 0.1}) {
        PoleErrors errors;
        errors.delay = delay;
        const auto e = EstimateOf(Rock(15.0), errors);
        EXPECT_EQ(e.advice, OccupationAdvice::Store) << delay << ' ' << OccupationText(e);
        EXPECT_NEAR(e.delay, delay, 4.0 * e.delaySigma + 0.001);
        EXPECT_LT(PlanError(e), 0.03) << delay;
    }
}

TEST(Occupation, TakesTheSensorsOwnMotionOffWhereItIsThatOfThePole)
{
    const auto e = EstimateOf(Rock(15.0), {});
    EXPECT_NEAR(e.sensorHeight, 1.8, 0.1);
    EXPECT_GT(e.ownMotionFit, 0.9);
}

// No second of it begins or ends with a sample.
TEST(Occupation, TakesOwnMotionOffWhateverTheTimesOfTheSamples)
{
    for (const double interval : {0.0101, 0.0203, 0.0493}) {
        SimulatedPole pole(Rock(15.0), 70.0, {}, 12);
        Occupation occupation({});
        double epochs = 0.0;
        for (double t = 0.0; t < 7.3; t += interval) {
            occupation.Add(pole.Sample(t));
            if (t < epochs) continue;
            occupation.Add(pole.Epoch(t));
            epochs += 0.2;
        }
        const auto estimate = occupation.Estimate();
        EXPECT_NEAR(estimate.sensorHeight, 1.8, 0.05) << interval;
        EXPECT_GT(estimate.ownMotionFit, 0.98) << interval;
    }
}

TEST(Occupation, BridgesAShortPauseOfTheGyrosAndRefusesALongOne)
{
    PoleErrors errors;
    errors.gapFrom = 4.0;
    errors.gapTo = 4.12;
    const auto bridged = EstimateOf(Rock(15.0), errors);
    EXPECT_EQ(bridged.gaps, 1);
    EXPECT_EQ(bridged.advice, OccupationAdvice::Store) << OccupationText(bridged);
    EXPECT_LT(PlanError(bridged), 0.03);
    errors.gapTo = 4.8;
    EXPECT_EQ(EstimateOf(Rock(15.0), errors).reason, OccupationReason::Gap);
}

TEST(Occupation, NamesATimeThatRunsBack)
{
    Occupation occupation({});
    SimulatedPole pole(Rock(15.0), 40.0, {}, 1);
    pole.Feed(occupation, 4.0);
    for (int i = 0; i < 20; ++i)
        EXPECT_FALSE(occupation.Add(pole.Sample(3.0 + 0.01 * i)));
    EXPECT_EQ(occupation.Estimate().reason, OccupationReason::TimeRanBack);
    EXPECT_EQ(occupation.Estimate().rejected, 20);
}

TEST(Occupation, LeavesOutWhatIsNotFiniteOrRepeats)
{
    Occupation occupation({});
    SimulatedPole pole(Rock(15.0), 40.0, {}, 1);
    auto broken = pole.Sample(0.0);
    broken.rate.y = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(occupation.Add(broken));
    pole.Feed(occupation, 8.0);
    EXPECT_FALSE(occupation.Add(pole.Epoch(8.0)));
    EXPECT_EQ(occupation.Estimate().advice, OccupationAdvice::Store);
    EXPECT_EQ(occupation.Estimate().rejected, 2);
}

TEST(Occupation, LeavesOutWhatIsNotFiniteInAnyField)
{
    Occupation occupation({});
    SimulatedPole pole(Rock(15.0), 40.0, {}, 1);
    pole.Feed(occupation, 8.0);
    const OccupationEstimate before = occupation.Estimate();
    int rejected = 0;
    for (const double wrong :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        field::InertialSample sample = pole.Sample(8.1);
        field::AntennaEpoch epoch = pole.Epoch(8.1);
        for (double* const field :
             {&sample.seconds, &sample.rate.x, &sample.rate.y, &sample.rate.z,
              &sample.acceleration.x, &sample.acceleration.y, &sample.acceleration.z,
              &sample.magnetic.x, &sample.magnetic.y, &sample.magnetic.z}) {
            const double kept = std::exchange(*field, wrong);
            EXPECT_FALSE(occupation.Add(sample));
            *field = kept;
            ++rejected;
        }
        for (double* const field :
             {&epoch.seconds, &epoch.position.x, &epoch.position.y, &epoch.position.h}) {
            const double kept = std::exchange(*field, wrong);
            EXPECT_FALSE(occupation.Add(epoch));
            *field = kept;
            ++rejected;
        }
    }
    const OccupationEstimate after = occupation.Estimate();
    EXPECT_EQ(after.rejected, before.rejected + rejected);
    EXPECT_EQ(after.tip.x, before.tip.x);
    EXPECT_EQ(after.tip.y, before.tip.y);
    EXPECT_EQ(after.tip.h, before.tip.h);
}

TEST(Occupation, SaysWhatIsMissing)
{
    Occupation occupation({});
    EXPECT_EQ(occupation.Estimate().reason, OccupationReason::NoInertialSamples);
    SimulatedPole pole(Rock(15.0), 40.0, {}, 1);
    occupation.Add(pole.Sample(0.0));
    EXPECT_EQ(occupation.Estimate().reason, OccupationReason::NoAntennaEpochs);
    occupation.Add(pole.Epoch(0.0));
    EXPECT_EQ(occupation.Estimate().reason, OccupationReason::TooShort);
    EXPECT_EQ(occupation.Estimate().advice, OccupationAdvice::Move);
    EXPECT_FALSE(occupation.Estimate().hasTip);
}

TEST(Occupation, BeginsAnewWhenCleared)
{
    Occupation occupation({});
    SimulatedPole(LeanIn(25.0), 200.0, {}, 3).Feed(occupation, 8.0);
    occupation.Clear();
    SimulatedPole(LeanIn(25.0), 77.0, {}, 1).Feed(occupation, 8.0);
    const auto expected = EstimateOf(LeanIn(25.0), {});
    EXPECT_EQ(occupation.Estimate().tip.x, expected.tip.x);
    EXPECT_EQ(occupation.Estimate().tip.y, expected.tip.y);
}

TEST(Occupation, StaysBoundedOverMinutes)
{
    const auto e = EstimateOf(Rock(15.0), {}, 90.0);
    EXPECT_LE(e.epochs, 128);
    EXPECT_NEAR(e.seconds, 90.0, 0.1);
    EXPECT_LT(PlanError(e), 0.03);
}

TEST(Occupation, OtherAxesOfTheSensorGiveTheSameTip)
{
    OccupationSetup setup;
    setup.sensorType = 0;
    Occupation occupation(setup);
    SimulatedPole pole(LeanIn(25.0), 77.0, {}, 1);
    const auto turned = [](const field::SensorVector& v) {
        return field::SensorVector{-v.y, v.x, v.z};
    };
    for (int i = 0; i <= 800; ++i) {
        auto sample = pole.Sample(0.01 * i);
        sample.rate = turned(sample.rate);
        sample.acceleration = turned(sample.acceleration);
        sample.magnetic = turned(sample.magnetic);
        occupation.Add(sample);
        if (i % 20 == 0) occupation.Add(pole.Epoch(0.01 * i));
    }
    const auto e = occupation.Estimate();
    const auto expected = EstimateOf(LeanIn(25.0), {});
    EXPECT_EQ(e.tip.x, expected.tip.x);
    EXPECT_EQ(e.tip.y, expected.tip.y);
}

TEST(OccupationWithoutGyros, FindsTheTipAfterALeanInAndRefusesARockedPole)
{
    Occupation led({});
    SimulatedPole(LeanIn(25.0), 77.0, {}, 1).Feed(led, 8.0);
    const auto e = led.EstimateWithoutGyros();
    EXPECT_EQ(e.advice, OccupationAdvice::Move) << OccupationText(e);
    EXPECT_LT(PlanError(e), 0.03);
    Occupation rocked({});
    SimulatedPole(Rock(5.0), 77.0, {}, 1).Feed(rocked, 8.0);
    EXPECT_EQ(rocked.EstimateWithoutGyros().reason, OccupationReason::Rocked);
}

TEST(OccupationText, IsASentenceForEveryReason)
{
    OccupationEstimate e;
    for (int i = 0; i <= static_cast<int>(OccupationReason::NoSolution); ++i) {
        e.reason = static_cast<OccupationReason>(i);
        EXPECT_GT(OccupationText(e).size(), 10U) << i;
    }
    e.reason = OccupationReason::HeadingUncertain;
    e.headingSigma = 5.2;
    EXPECT_EQ(OccupationText(e), "rock a little more: the heading is known to 6 degrees only");
}

} // namespace
