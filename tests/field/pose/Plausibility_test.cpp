// SPDX-License-Identifier: MIT
#include "field/pose/Plausibility.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using field::PoseSample;
using tiltpole::field::Plausibility;
using tiltpole::field::PoseFault;
using tiltpole::field::TextOf;

namespace {

PoseSample Good(double x = 150.0)
{
    PoseSample sample;
    sample.data.dMag_x = x;
    sample.data.dMag_y = -20.0;
    sample.data.dMag_z = 380.0;
    return sample;
}

PoseSample GoodAt(double seconds)
{
    PoseSample sample = Good(seconds);
    sample.deviceSeconds = seconds;
    return sample;
}

} // namespace

TEST(Plausibility, FindsNothingInGoodSamples)
{
    Plausibility plausibility;
    PoseSample sample = GoodAt(1.0);
    sample.data.dPitch = -90.0;
    sample.data.dRoll = 180.0;
    sample.heading = 360.0;
    EXPECT_EQ(plausibility.Judge(sample), PoseFault::None);
}

TEST(Plausibility, NamesWhatIsNotANumber)
{
    const double bad[] = {std::nan(""), std::numeric_limits<double>::infinity()};
    for (const double value : bad) {
        PoseSample samples[] = {Good(), Good(), Good(), Good(value), Good(), Good()};
        samples[0].data.dPitch = value;
        samples[1].data.dRoll = value;
        samples[2].heading = value;
        samples[4].deviceSeconds = value;
        samples[5].data.dAcc_z = value;
        for (const PoseSample& sample : samples)
            EXPECT_EQ(Plausibility().Judge(sample), PoseFault::NotFinite);
    }
}

TEST(Plausibility, NamesWhatIsOutOfRange)
{
    PoseSample samples[] = {Good(), Good(), Good(), Good(-1.1e6), Good(), Good()};
    samples[0].data.dPitch = 90.5;
    samples[1].data.dRoll = -180.5;
    samples[2].heading = 361.0;
    samples[4].deviceSeconds = 1e300;
    samples[5].data.dGyro_y = 1e308;
    for (const PoseSample& sample : samples)
        EXPECT_EQ(Plausibility().Judge(sample), PoseFault::OutOfRange);
}

TEST(Plausibility, NamesAMagnetometerThatIsStuckFromThe20thEqualReadingOn)
{
    Plausibility plausibility;
    for (int i = 1; i < 20; ++i)
        EXPECT_EQ(plausibility.Judge(Good()), PoseFault::None) << i;
    for (int i = 20; i < 60; ++i)
        EXPECT_EQ(plausibility.Judge(Good()), PoseFault::Stuck) << i;
    EXPECT_EQ(plausibility.Judge(Good(151.0)), PoseFault::None);
    EXPECT_EQ(plausibility.Judge(Good()), PoseFault::None);
}

// One axis alone may read 0; a magnetometer that is not there reads 0 on all of them.
TEST(Plausibility, NamesAStuckReadingOfAnyAxisWhereTheSensorFormsItsHeading)
{
    for (double PoseSensorData::*axis :
         {&PoseSensorData::dMag_x, &PoseSensorData::dMag_y, &PoseSensorData::dMag_z}) {
        Plausibility plausibility;
        PoseSample sample;
        sample.heading = 12.0;
        sample.data.*axis = 7.0;
        for (int i = 1; i < 20; ++i)
            EXPECT_EQ(plausibility.Judge(sample), PoseFault::None) << i;
        EXPECT_EQ(plausibility.Judge(sample), PoseFault::Stuck);
    }
}

TEST(Plausibility, LetsASensorWithoutMagnetometersFormItsHeading)
{
    Plausibility plausibility;
    PoseSample sample;
    sample.heading = 12.0;
    for (int i = 0; i < 60; ++i)
        EXPECT_EQ(plausibility.Judge(sample), PoseFault::None) << i;
    sample.heading.reset();
    EXPECT_EQ(plausibility.Judge(sample), PoseFault::Stuck);
}

TEST(Plausibility, NamesATimeThatDoesNotAdvance)
{
    Plausibility plausibility;
    EXPECT_EQ(plausibility.Judge(GoodAt(10.0)), PoseFault::None);
    EXPECT_EQ(plausibility.Judge(GoodAt(10.0)), PoseFault::TimeBack);
    EXPECT_EQ(plausibility.Judge(GoodAt(9.5)), PoseFault::TimeBack);
    EXPECT_EQ(plausibility.Judge(GoodAt(9.9)), PoseFault::TimeBack);
    EXPECT_EQ(plausibility.Judge(GoodAt(10.1)), PoseFault::None);
}

TEST(Plausibility, FollowsAClockThatBeginsAnew)
{
    Plausibility plausibility;
    plausibility.Judge(GoodAt(100.0));
    EXPECT_EQ(plausibility.Judge(GoodAt(0.0)), PoseFault::TimeBack);
    EXPECT_EQ(plausibility.Judge(GoodAt(0.1)), PoseFault::TimeBack);
    EXPECT_FALSE(plausibility.ClockRestarted());
    EXPECT_EQ(plausibility.Judge(GoodAt(0.2)), PoseFault::None);
    EXPECT_TRUE(plausibility.ClockRestarted());
    EXPECT_EQ(plausibility.Judge(GoodAt(0.3)), PoseFault::None);
    EXPECT_FALSE(plausibility.ClockRestarted());
}

TEST(Plausibility, TakesOldSamplesThatDoNotAdvanceForNoClock)
{
    Plausibility plausibility;
    plausibility.Judge(GoodAt(100.0));
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(plausibility.Judge(GoodAt(10.0 - i)), PoseFault::TimeBack) << i;
    EXPECT_EQ(plausibility.Judge(GoodAt(1.1)), PoseFault::TimeBack);
    EXPECT_EQ(plausibility.Judge(GoodAt(1.2)), PoseFault::None) << "the third that advances";
}

TEST(Plausibility, TakesSingleOldSamplesForNoClock)
{
    Plausibility plausibility;
    plausibility.Judge(GoodAt(100.0));
    for (int i = 1; i < 10; ++i) {
        EXPECT_EQ(plausibility.Judge(GoodAt(i)), PoseFault::TimeBack);
        EXPECT_EQ(plausibility.Judge(GoodAt(100.0 + i)), PoseFault::None);
    }
}

TEST(Plausibility, HasWordsForEveryFault)
{
    EXPECT_EQ(TextOf(PoseFault::None), "no fault");
    EXPECT_EQ(TextOf(PoseFault::NotFinite), "a value is not a number");
    EXPECT_EQ(TextOf(PoseFault::OutOfRange), "a value is out of range");
    EXPECT_EQ(TextOf(PoseFault::Stuck), "the magnetometer repeats its reading");
    EXPECT_EQ(TextOf(PoseFault::TimeBack), "the clock of the sensor does not advance");
    EXPECT_EQ(TextOf(static_cast<PoseFault>(99)), "");
}
