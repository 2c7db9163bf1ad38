// SPDX-License-Identifier: MIT
//
// Rates, lengths and orders of samples at the edge of what an occupation takes.
#include "field/Occupation.h"

#include "field/occupation/AdviceName.h"
#include "field/occupation/Region.h"
#include "field/occupation/Report.h"
#include "field/occupation/Rotations.h"
#include "survey/Angle.h"
#include "tests/field/SimulatedPole.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

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

// Without gyros, as the tests beside it lead it; what spoils a sample, does it before it is given.
OccupationEstimate LedWithoutGyros(const std::function<void(field::InertialSample&)>& spoil,
                                   double planSigma = 0.0, double heightSigma = 0.0)
{
    PoleErrors errors;
    errors.noise = false;
    SimulatedPole pole(LedOver(15.0), 40.0, errors, 3);
    Occupation occupation({});
    for (int i = 0; i <= 485; ++i) {
        auto sample = pole.Sample(0.05 * i);
        spoil(sample);
        occupation.Add(sample);
        if (i % 10 != 0) continue;
        auto epoch = pole.Epoch(0.05 * i);
        epoch.planSigma = planSigma;
        epoch.heightSigma = heightSigma;
        occupation.Add(epoch);
    }
    return occupation.EstimateWithoutGyros();
}

TEST(OccupationAtItsEdges, WithoutGyrosTakesTheSigmasOfAnEpochForThoseOfTheSetup)
{
    const auto none = [](field::InertialSample&) {};
    const OccupationSetup setup;
    const auto usual = LedWithoutGyros(none);
    const auto stated = LedWithoutGyros(none, setup.planSigma, setup.heightSigma);
    ASSERT_TRUE(usual.hasTip);
    EXPECT_EQ(stated.tip.x, usual.tip.x);
    EXPECT_EQ(stated.ellipseMajor, usual.ellipseMajor);
    const auto coarse = LedWithoutGyros(none, 10.0 * setup.planSigma, setup.heightSigma);
    EXPECT_GT(coarse.ellipseMajor, usual.ellipseMajor);
}

// Half way, at 12 s: a field along one axis is one, no field is none.
TEST(OccupationAtItsEdges, WithoutGyrosLeavesOutAnEpochWithoutAField)
{
    const auto at = [](double x, double y, double z) {
        return LedWithoutGyros([x, y, z](field::InertialSample& sample) {
            if (std::fabs(sample.seconds - 12.0) < 0.01) sample.magnetic = {x, y, z};
        });
    };
    const int all = LedWithoutGyros([](field::InertialSample&) {}).epochs;
    EXPECT_EQ(at(300.0, 0.0, 0.0).epochs, all);
    EXPECT_EQ(at(0.0, 300.0, 0.0).epochs, all);
    EXPECT_EQ(at(0.0, 0.0, 300.0).epochs, all);
    EXPECT_EQ(at(0.0, 0.0, 0.0).epochs, all - 1);
}

TEST(OccupationAtItsEdges, WithoutGyrosHasTheHeadingOfItsLastField)
{
    const auto at = [](const field::SensorVector& m, field::Tilt& tilt) {
        return LedWithoutGyros([&](field::InertialSample& sample) {
            if (sample.seconds < 24.2) return; // behind the last epoch
            sample.magnetic = m;
            tilt = sample.tilt;
        });
    };
    field::Tilt tilt;
    const auto forward = at({300.0, 0.0, 0.0}, tilt);
    for (const field::SensorVector& m : {
             field::SensorVector{0.0, 300.0, 0.0  },
             {0.0, 0.0,   300.0}
    }) {
        const auto e = at(m, tilt);
        const double turned = MagneticHeading(tilt, m) - MagneticHeading(tilt, {300.0, 0.0, 0.0});
        EXPECT_NEAR(std::remainder(e.heading - forward.heading - turned, 360.0), 0.0, 1e-9);
    }
    EXPECT_TRUE(std::isnan(at({}, tilt).heading));
}

TEST(OccupationAtItsEdges, HasNoTipOfPositionsBeyondAllNumbers)
{
    for (const double size : {1e154, 1e200, 1e307}) {
        Occupation occupation({});
        SimulatedPole pole(Rock(15.0), 40.0, {}, 3);
        for (int i = 0; i <= 800; ++i) {
            occupation.Add(pole.Sample(0.01 * i));
            if (i % 20 != 0) continue;
            auto epoch = pole.Epoch(0.01 * i);
            epoch.position.x = i % 40 == 0 ? size : -size;
            occupation.Add(epoch);
        }
        const auto e = occupation.Estimate();
        EXPECT_NE(e.advice, OccupationAdvice::Store) << OccupationText(e);
        const auto without = occupation.EstimateWithoutGyros();
        EXPECT_NE(without.advice, OccupationAdvice::Store) << OccupationText(without);
    }
}

// A rocked pole whose samples and epochs a test spoils.
OccupationEstimate RockedWith(const std::function<void(field::InertialSample&)>& sample,
                              const std::function<void(field::AntennaEpoch&, int)>& epoch,
                              const OccupationSetup& setup = {})
{
    Occupation occupation(setup);
    SimulatedPole pole(Rock(15.0), 40.0, {}, 3);
    for (int i = 0; i <= 800; ++i) {
        auto reading = pole.Sample(0.01 * i);
        sample(reading);
        occupation.Add(reading);
        if (i % 20 != 0) continue;
        auto antenna = pole.Epoch(0.01 * i);
        epoch(antenna, i / 20);
        occupation.Add(antenna);
    }
    return occupation.Estimate();
}

TEST(OccupationAtItsEdges, RefusesATrackOfWhichAThirdIsDoubtful)
{
    for (const double up : {0.1, 0.3, 1.0}) {
        for (const int of : {2, 3}) {
            const auto e = RockedWith([](field::InertialSample&) {},
                                      [&](field::AntennaEpoch& epoch, int i) {
                                          if (i % of == 0)
                                              epoch.position.h += i % (2 * of) == 0 ? up : -up;
                                      });
            EXPECT_GT(3 * e.doubtful, e.epochs) << up << ' ' << of;
            EXPECT_EQ(e.reason, OccupationReason::SensorsContradict) << OccupationText(e);
        }
    }
}

TEST(OccupationAtItsEdges, HasNoSolutionOfRatesBeyondAllNumbers)
{
    const auto e = RockedWith(
        [](field::InertialSample& sample) {
            if (sample.seconds > 4.0 && sample.seconds < 4.05) sample.rate.x = 1e200;
        },
        [](field::AntennaEpoch&, int) {});
    EXPECT_FALSE(e.hasTip);
    EXPECT_EQ(e.advice, OccupationAdvice::Refuse);
    EXPECT_EQ(e.reason, OccupationReason::NoSolution);
}

TEST(OccupationAtItsEdges, HasNoSolutionWithoutAnythingKnown)
{
    OccupationSetup setup;
    setup.planSigma = setup.heightSigma = setup.poleSigma = 1e100;
    setup.gyroBiasSigma = setup.axisSigma = setup.accelerometerSigma = 1e100;
    const auto e =
        RockedWith([](field::InertialSample&) {}, [](field::AntennaEpoch&, int) {}, setup);
    EXPECT_FALSE(e.hasTip);
    EXPECT_EQ(e.reason, OccupationReason::NoSolution);
}

TEST(OccupationText, TellsNoLengthThatNothingConfirms)
{
    OccupationEstimate e;
    e.advice = OccupationAdvice::Store;
    e.reason = OccupationReason::Sure;
    e.ellipseMajor = 0.012;
    e.lengthSigma = INFINITY;
    EXPECT_EQ(OccupationText(e), "store: the tip is known to 12 mm");
}

TEST(OccupationText, OfNoKnownReasonTellsOfNoTip)
{
    OccupationEstimate e;
    for (const auto reason : {OccupationReason::NoSolution, static_cast<OccupationReason>(99)}) {
        e.reason = reason;
        EXPECT_EQ(OccupationText(e), "no tip could be computed");
    }
}

TEST(AdviceName, RefusesWhatIsNoAdvice)
{
    using tiltpole::field::AdviceName;
    EXPECT_EQ(AdviceName(OccupationAdvice::Store), "store");
    EXPECT_EQ(AdviceName(OccupationAdvice::Move), "move");
    EXPECT_EQ(AdviceName(OccupationAdvice::Refuse), "refuse");
    EXPECT_EQ(AdviceName(static_cast<OccupationAdvice>(99)), "refuse");
}

TEST(Leveling, TurnsAnyDirectionUp)
{
    using Eigen::Vector3d;
    for (const Vector3d& up :
         {Vector3d(0.0, 0.0, 1.0), Vector3d(0.0, 0.0, -1.0), Vector3d(3.0, 4.0, 0.0),
          Vector3d(-1.0, 2.0, -2.0), Vector3d(1e-9, 0.0, -1.0)}) {
        const Vector3d turned = tiltpole::field::Leveling(up) * up.normalized();
        EXPECT_NEAR((turned - Vector3d::UnitZ()).norm(), 0.0, 1e-7) << up.transpose();
    }
}

// A rotation has two quaternions.
TEST(Log, IsTheSameOfBothQuaternionsOfARotation)
{
    const Eigen::Quaterniond q(Eigen::AngleAxisd(0.4, Eigen::Vector3d::UnitX()));
    const Eigen::Quaterniond other(-q.w(), -q.x(), -q.y(), -q.z());
    EXPECT_NEAR(tiltpole::field::Log(q).x(), 0.4, 1e-15);
    EXPECT_NEAR(tiltpole::field::Log(other).x(), 0.4, 1e-15);
}

TEST(InCircle, EndsBelowAFullTurn)
{
    using tiltpole::field::InCircle;
    EXPECT_EQ(InCircle(-1e-18), 0.0);
    EXPECT_EQ(InCircle(360.0), 0.0);
    EXPECT_EQ(InCircle(-90.0), 270.0);
    EXPECT_EQ(InCircle(1085.0), 5.0);
}

TEST(Region, HasAnAzimuthBelowHalfATurn)
{
    for (const double mixed : {0.0, 1e-300, -1e-300, 1e-25, -1e-25, 1e-22, -1e-22}) {
        Eigen::Matrix3d own = Eigen::Vector3d(4e-4, 1e-4, 1e-4).asDiagonal();
        own(0, 1) = own(1, 0) = mixed;
        OccupationEstimate e;
        tiltpole::field::SetRegion(e, own, 1.0, {});
        EXPECT_GE(e.ellipseAzimuth, 0.0) << mixed;
        EXPECT_LT(e.ellipseAzimuth, 180.0) << mixed;
        EXPECT_NEAR(std::remainder(e.ellipseAzimuth, 180.0), 0.0, 1e-9) << mixed;
    }
}

} // namespace
