// SPDX-License-Identifier: MIT
#include "field/gate/StepWatch.h"

#include "field/Geodesy.h"

#include <gtest/gtest.h>

namespace {

using tiltpole::field::StepEpoch;
using tiltpole::field::StepVerdict;
using tiltpole::field::StepWatch;
using tiltpole::survey::Point3;

constexpr field::Geodetic kPlace{47.57, 19.0, 193.4};
constexpr double kDatumLimit = 0.3;

// A fixed epoch of a pole that stands still, `east` and `up` of the place [m].
StepEpoch Still(double seconds, double east, double up = 0.0)
{
    StepEpoch epoch;
    epoch.seconds = seconds;
    epoch.antenna = field::Offset(kPlace, 0.0, east, up);
    epoch.sigma = 0.01;
    epoch.fixed = true;
    epoch.lean = Point3{0.0, 0.0, 2.0};
    epoch.still = true;
    return epoch;
}

StepEpoch Moving(double seconds, double east)
{
    StepEpoch epoch = Still(seconds, east);
    epoch.still = false;
    return epoch;
}

// 5·√2·10 mm = 71 mm.
TEST(StepWatch, AllowsFiveSigmasOfAPoleThatStandsStill)
{
    StepWatch watch(kDatumLimit);
    EXPECT_FALSE(watch.Add(Still(0.0, 0.0)).jump);
    EXPECT_FALSE(watch.Add(Still(0.2, 0.070)).jump);
    const StepVerdict beyond = watch.Add(Still(0.4, 0.142));
    EXPECT_TRUE(beyond.jump);
    EXPECT_NEAR(beyond.step, 0.072, 1e-6);
    EXPECT_NEAR(beyond.allowed, 0.0707, 1e-4);
}

TEST(StepWatch, FindsThatADoubtedEpochWasWrong)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Still(0.0, 0.0));
    EXPECT_TRUE(watch.Add(Still(0.2, 3.0)).jump);
    const StepVerdict back = watch.Add(Still(0.4, 0.01));
    EXPECT_FALSE(back.jump);
    EXPECT_TRUE(back.refuted);
    EXPECT_EQ(back.datumStep, 0.0);
    EXPECT_FALSE(watch.Add(Still(0.6, 0.0)).refuted);
}

TEST(StepWatch, FindsAnotherDatumOnceASecondEpochConfirmsIt)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Still(0.0, 0.0));
    EXPECT_EQ(watch.Add(Still(0.2, 0.0, -0.4)).datumStep, 0.0);
    const StepVerdict confirmed = watch.Add(Still(0.4, 0.0, -0.4));
    EXPECT_FALSE(confirmed.jump);
    EXPECT_NEAR(confirmed.datumStep, 0.4, 1e-6);
}

struct NoDatumStep
{
    const char* why;
    StepEpoch before, stepped, confirmed;
};

TEST(StepWatch, TakesOnlyFixedEpochsOfAStandingPoleForAnotherDatum)
{
    NoDatumStep cases[] = {
        {"below the limit", Still(0.0,  0.0), Still(0.2, 0.29), Still(0.4,  0.29)},
        {"float before",    Still(0.0,  0.0), Still(0.2, 9.0),  Still(0.4,  9.0) },
        {"moved",           Moving(0.0, 0.0), Still(0.2, 9.0),  Still(0.4,  9.0) },
        {"long pause",      Still(0.0,  0.0), Still(3.1, 99.0), Still(3.3,  99.0)},
        {"float meanwhile", Still(0.0,  0.0), Still(0.2, 9.0),  Still(0.4,  9.0) },
        {"float after",     Still(0.0,  0.0), Still(0.2, 9.0),  Still(0.4,  9.0) },
        {"moves on",        Still(0.0,  0.0), Still(0.2, 9.0),  Moving(0.4, 9.0) },
    };
    cases[1].before.fixed = false;
    cases[4].stepped.fixed = false;
    cases[5].confirmed.fixed = false;
    for (const NoDatumStep& c : cases) {
        StepWatch watch(kDatumLimit);
        watch.Add(c.before);
        EXPECT_TRUE(watch.Add(c.stepped).jump) << c.why;
        const StepVerdict confirmed = watch.Add(c.confirmed);
        EXPECT_FALSE(confirmed.jump) << c.why;
        EXPECT_EQ(confirmed.datumStep, 0.0) << c.why;
    }
}

TEST(StepWatch, TakesTheChangeOfTheLeanOffTheStep)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Still(0.0, 0.0));
    StepEpoch leaned = Still(1.0, 1.0, -0.268);
    leaned.lean = Point3{0.0, 1.0, 1.732};
    EXPECT_FALSE(watch.Add(leaned).jump);
}

// A car beside the pole turns the heading, not the antenna.
TEST(StepWatch, SeesNoStepInAHeadingThatAloneTurns)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Still(0.0, 0.0));
    StepEpoch turned = Still(0.2, 0.0);
    turned.lean = Point3{0.5, 0.5, 1.9};
    EXPECT_FALSE(watch.Add(turned).jump);
}

TEST(StepWatch, FollowsAPoleThatIsCarried)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Moving(0.0, 0.0));
    EXPECT_FALSE(watch.Add(Moving(1.0, 2.9)).jump) << "3 m/s without a speed";
    EXPECT_TRUE(watch.Add(Moving(1.2, 6.2)).jump);
}

TEST(StepWatch, FollowsTheSpeedOfTheReceiver)
{
    StepWatch watch(kDatumLimit);
    StepEpoch first = Moving(0.0, 0.0);
    StepEpoch next = Moving(1.0, 20.9);
    StepEpoch beyond = Moving(2.0, 70.0);
    first.speed = next.speed = beyond.speed = 20.0;
    watch.Add(first);
    EXPECT_FALSE(watch.Add(next).jump);
    EXPECT_TRUE(watch.Add(beyond).jump);
}

TEST(StepWatch, FollowsAVehicleWithoutASpeedOnceItGoes)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Moving(0.0, 0.0));
    watch.Add(Moving(1.0, 3.0));
    EXPECT_FALSE(watch.Add(Moving(2.0, 8.5)).jump) << "2.5 m/s faster within a second";
    EXPECT_FALSE(watch.Add(Moving(3.0, 14.0)).jump);
    EXPECT_TRUE(watch.Add(Moving(4.0, 30.0)).jump);
}

TEST(StepWatch, KnowsNoVelocityFromTwoEpochsOfOneTime)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Moving(0.0, 0.0));
    EXPECT_FALSE(watch.Add(Moving(0.0, 0.05)).jump);
    EXPECT_FALSE(watch.Add(Moving(1.0, 3.05)).jump) << "3 m/s without a speed";
    EXPECT_FALSE(watch.Add(Moving(2.0, 8.5)).jump) << "now it goes";
}

TEST(StepWatch, DoubtsAPlaceThatIsNotANumber)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Still(0.0, 0.0));
    StepEpoch bad = Still(0.2, 0.0);
    bad.antenna.latitude = 89.95;
    EXPECT_TRUE(watch.Add(bad).jump);
    EXPECT_FALSE(watch.Add(Still(0.4, 0.0)).jump);
}

TEST(StepWatch, BeginsAnewAfterRestart)
{
    StepWatch watch(kDatumLimit);
    watch.Add(Still(0.0, 0.0));
    watch.Restart();
    EXPECT_FALSE(watch.Add(Still(0.2, 900.0)).jump);
}

} // namespace
