// SPDX-License-Identifier: MIT
//
// Rates, lengths and orders of samples at the edge of what an occupation takes.
#include "field/Occupation.h"

#include "survey/Angle.h"
#include "tests/field/SimulatedPole.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using field::Occupation;
using field::OccupationAdvice;
using field::OccupationEstimate;
using field::OccupationReason;
using field::OccupationSetup;
using field_tests::Hold;
using field_tests::kTip;
using field_tests::LeanIn;
using field_tests::LedOver;
using field_tests::PoleErrors;
using field_tests::Rock;
using field_tests::SimulatedPole;
using tiltpole::survey::Deg2Rad;

// Samples at `rate` [Hz], from the first to the last second; epochs at 4 Hz of the first `antenna` seconds.
void Feed(Occupation& occupation, SimulatedPole pole, double rate, double seconds, double antenna)
{
    int epochs = 0;
    for (int i = 0; i <= static_cast<int>(rate * seconds); ++i) {
        const double t = i / rate;
        occupation.Add(pole.Sample(t));
        for (; 0.25 * epochs <= t && 0.25 * epochs <= antenna; ++epochs)
            occupation.Add(pole.Epoch(0.25 * epochs));
    }
}

// A pole that is led slowly from one lean to the opposite one.
SimulatedPole::Lean Led()
{
    return [](double t) { return -18.0 + 36.0 * t / 24.0; };
}

TEST(OccupationAtItsEdges, TakesSamplesAtTwentyHertz)
{
    for (const double start : {0.0, 36000.0}) {
        Occupation occupation({});
        SimulatedPole pole(Rock(15.0), 40.0, {}, 3);
        for (int i = 0; i <= 160; ++i) {
            auto sample = pole.Sample(0.05 * i);
            sample.seconds = start + 0.05 * i; // intervals that round to either side of 0.05
            occupation.Add(sample);
            if (i % 4 != 0) continue;
            auto epoch = pole.Epoch(0.05 * i);
            epoch.seconds = start + 0.05 * i;
            occupation.Add(epoch);
        }
        const auto e = occupation.Estimate();
        EXPECT_EQ(e.gaps, 0);
        EXPECT_EQ(e.advice, OccupationAdvice::Store) << OccupationText(e);
    }
}

TEST(OccupationAtItsEdges, CountsPausesOfFastSamplesAsGaps)
{
    PoleErrors errors;
    errors.gapFrom = 3.0;
    errors.gapTo = 3.08;
    Occupation occupation({});
    SimulatedPole(Rock(15.0), 40.0, errors, 3).Feed(occupation, 8.0);
    EXPECT_EQ(occupation.Estimate().gaps, 1);
}

TEST(OccupationAtItsEdges, WithoutGyrosTakesSamplesAtEightHertz)
{
    PoleErrors errors;
    errors.noise = false;
    Occupation occupation({});
    Feed(occupation, SimulatedPole(LedOver(15.0), 40.0, errors, 3), 8.0, 24.0, 24.0);
    const auto e = occupation.EstimateWithoutGyros();
    EXPECT_EQ(e.advice, OccupationAdvice::Store) << OccupationText(e);
    EXPECT_LT(std::hypot(e.tip.x - kTip.x, e.tip.y - kTip.y), 0.03);
    EXPECT_EQ(occupation.Estimate().reason, OccupationReason::Gap) << "gyros need more";
}

TEST(OccupationAtItsEdges, WithoutGyrosDoesNotTrustTheMagnetometerOfAPoleAtRest)
{
    PoleErrors errors;
    errors.heading = 35.0; // a car beside the pole
    Occupation occupation({});
    SimulatedPole(Hold(5.0), 40.0, errors, 3).Feed(occupation, 8.0);
    const auto e = occupation.EstimateWithoutGyros();
    EXPECT_NE(e.advice, OccupationAdvice::Store);
}

TEST(OccupationAtItsEdges, WithoutGyrosStoresNoTipOfAWrongLength)
{
    PoleErrors errors;
    errors.length = 2.2;
    for (unsigned seed = 1; seed <= 10; ++seed) {
        Occupation occupation({});
        Feed(occupation, SimulatedPole(LedOver(18.0), 37.0 * seed, errors, seed), 50.0, 24.0, 24.0);
        EXPECT_NE(occupation.EstimateWithoutGyros().advice, OccupationAdvice::Store);
    }
}

TEST(OccupationAtItsEdges, WithoutGyrosFindsTheHeadingThatTheTrackShows)
{
    PoleErrors errors;
    errors.noise = false;
    errors.heading = 30.0;
    OccupationSetup setup;
    setup.useMagnetometer = false; // no prior of north, only how it turned
    Occupation occupation(setup);
    SimulatedPole pole(Led(), 40.0, errors, 3);
    Feed(occupation, pole, 50.0, 24.0, 24.0);
    const auto e = occupation.EstimateWithoutGyros();
    ASSERT_TRUE(e.hasTip);
    EXPECT_NEAR(e.magneticDifference, 30.0, 0.5);
    // The forward axis of the simulated sensor, levelled.
    const Eigen::Matrix3d r = pole.Attitude(24.0);
    const double heading = std::atan2(-r(1, 0), r(0, 0)) * field_tests::kRadian;
    EXPECT_NEAR(std::remainder(e.heading - heading, 360.0), 0.0, 0.7);
}

TEST(OccupationAtItsEdges, EpochsOfAFewSecondsDoNotGrowWithTheSamplesAfterThem)
{
    OccupationEstimate brief;
    OccupationEstimate longer;
    {
        Occupation occupation({});
        Feed(occupation, SimulatedPole(Hold(20.0), 40.0, {}, 3), 100.0, 4.0, 4.0);
        brief = occupation.Estimate();
    }
    {
        Occupation occupation({});
        Feed(occupation, SimulatedPole(Hold(20.0), 40.0, {}, 3), 100.0, 40.0, 4.0);
        longer = occupation.Estimate();
    }
    ASSERT_TRUE(brief.hasTip && longer.hasTip);
    // The antenna leaves the height open by as much; the vertical does not matter much to it.
    EXPECT_GT(longer.heightHalfInterval, 0.97 * brief.heightHalfInterval);
}

TEST(OccupationAtItsEdges, RefusesAPointThatTookTooLong)
{
    Occupation occupation({});
    Feed(occupation, SimulatedPole(Hold(20.0), 40.0, {}, 3), 20.0, 260.0, 260.0);
    const auto e = occupation.Estimate();
    EXPECT_EQ(e.reason, OccupationReason::TooLong) << OccupationText(e);
    EXPECT_EQ(e.advice, OccupationAdvice::Refuse);
}

TEST(OccupationAtItsEdges, ToleranceBelowTheSharedErrorIsNotBlamedOnTheHeading)
{
    OccupationSetup setup;
    setup.tolerance = 0.02;
    Occupation occupation(setup);
    SimulatedPole(Rock(15.0), 40.0, {}, 3).Feed(occupation, 8.0);
    const auto e = occupation.Estimate();
    ASSERT_LT(e.ellipseMajor, 0.02);
    EXPECT_EQ(e.reason, OccupationReason::AntennaUncertain) << OccupationText(e);
}

TEST(OccupationAtItsEdges, AVerticalThatIsNotKnownIsNotBlamedOnTheHeading)
{
    OccupationSetup setup;
    setup.tolerance = 0.015;
    Occupation occupation(setup);
    SimulatedPole(Rock(15.0), 40.0, {}, 3).Feed(occupation, 8.0);
    const auto e = occupation.Estimate();
    ASSERT_GT(e.ellipseMajor, setup.tolerance);
    // What the heading moves the tip by, at 95 %.
    ASSERT_LT(2.5 * 2.0 * std::sin(Deg2Rad(e.lean)) * Deg2Rad(e.headingSigma),
              0.5 * e.ellipseMajor);
    EXPECT_EQ(e.reason, OccupationReason::VerticalUncertain) << OccupationText(e);
}

TEST(OccupationText, OfAStoredTipCoversItsHeight)
{
    OccupationEstimate e;
    e.advice = OccupationAdvice::Store;
    e.reason = OccupationReason::Sure;
    e.ellipseMajor = 0.012;
    e.heightHalfInterval = 0.023;
    EXPECT_EQ(OccupationText(e), "store: the tip is known to 23 mm");
    e.lengthError = -0.01;
    e.lengthSigma = 0.01;
    EXPECT_EQ(OccupationText(e),
              "store: the tip is known to 23 mm and the length of the pole to 33 mm");
}

TEST(OccupationText, AsksForEveryCauseOfATrackThatDoesNotFitTheLength)
{
    OccupationEstimate e;
    e.reason = OccupationReason::WrongLength;
    e.poleLength = 2.0;
    e.lengthError = -0.0214;
    EXPECT_EQ(OccupationText(e),
              "the track does not fit the length of the pole, as if it were 21 mm shorter: did the "
              "tip slip, is the length right, do the gyros read too much or too little?");
    e.lengthError = 0.199;
    EXPECT_NE(OccupationText(e).find("as if it were 199 mm longer"), std::string::npos);
}

TEST(OccupationText, NamesNoErrorBeyondATenthOfTheLength)
{
    OccupationEstimate e;
    e.reason = OccupationReason::WrongLength;
    e.poleLength = 2.0;
    for (const double error : {-0.201, 0.201, 1.973}) {
        e.lengthError = error;
        EXPECT_EQ(OccupationText(e),
                  "the track does not fit the length of the pole: did the tip slip, is the length "
                  "right, do the gyros read too much or too little?");
    }
}

TEST(OccupationText, SaysWhichErrorOfTheLengthIsExcluded)
{
    OccupationEstimate e;
    e.reason = OccupationReason::LengthUnchecked;
    e.lengthError = -0.014;
    e.lengthSigma = 0.02;
    EXPECT_EQ(OccupationText(e),
              "lean further or the other way: the length of the pole is confirmed to 61 mm only");
    e.lengthSigma = INFINITY;
    EXPECT_EQ(OccupationText(e),
              "lean further or the other way: nothing confirms the length of the pole");
}

TEST(MagneticHeading, OfATinyAngleBelowNorthIsNorth)
{
    EXPECT_EQ(field::MagneticHeading({}, {1.0, -1e-18, 0.0}), 0.0);
    EXPECT_NEAR(field::MagneticHeading({}, {1.0, -1e-9, 0.0}), 360.0, 1e-6);
}

TEST(OccupationAtItsEdges, ADelayThatIsKnownIsTakenOff)
{
    PoleErrors errors;
    errors.delay = 0.15;
    const auto estimateOf = [&errors](double known) {
        OccupationSetup setup;
        setup.delay = known;
        setup.delaySigma = 0.01;
        Occupation occupation(setup);
        SimulatedPole(Rock(15.0), 40.0, errors, 3).Feed(occupation, 8.0);
        return occupation.Estimate();
    };
    EXPECT_NE(estimateOf(0.0).advice, OccupationAdvice::Store);
    const auto e = estimateOf(0.15);
    EXPECT_EQ(e.advice, OccupationAdvice::Store) << OccupationText(e);
    const auto nearly = estimateOf(0.145);
    ASSERT_GT(nearly.delaySigma, 0.0);
    EXPECT_NEAR(nearly.delay, 0.15, 0.002) << "with the part that was known";
}

} // namespace
