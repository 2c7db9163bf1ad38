// SPDX-License-Identifier: MIT
//
// Readings of a sample and their correction.
#include "survey/Reading.h"

#include "survey/Correction.h"

#include <gtest/gtest.h>

namespace survey = tiltpole::survey;
using survey::Magnetometer;
using survey::Reading;

namespace {

void ExpectEqual(const Reading& actual, const Reading& expected)
{
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

PoseSensorData BothReadings()
{
    PoseSensorData sample;
    sample.dMag_x = 1;
    sample.dMag_y = 2;
    sample.dMag_z = 3;
    sample.dMag_x_2 = 4;
    sample.dMag_y_2 = 5;
    sample.dMag_z_2 = 6;
    return sample;
}

TEST(Reading, IsThatOfTheMagnetometerAskedFor)
{
    const PoseSensorData sample = BothReadings();
    ExpectEqual(ReadingOf(sample, Magnetometer::A), {1, 2, 3});
    ExpectEqual(ReadingOf(sample, Magnetometer::B), {4, 5, 6});
}

TEST(Reading, ReplacesThatOfOneMagnetometerOnly)
{
    PoseSensorData sample = BothReadings();
    SetReading(sample, Magnetometer::A, {7, 8, 9});
    ExpectEqual(ReadingOf(sample, Magnetometer::A), {7, 8, 9});
    ExpectEqual(ReadingOf(sample, Magnetometer::B), {4, 5, 6});
    SetReading(sample, Magnetometer::A, {1, 2, 3});
    SetReading(sample, Magnetometer::B, {7, 8, 9});
    ExpectEqual(ReadingOf(sample, Magnetometer::B), {7, 8, 9});
    SetReading(sample, Magnetometer::B, {4, 5, 6});
    const PoseSensorData untouched = BothReadings();
    EXPECT_STREQ(sample.ToText(), untouched.ToText());
    EXPECT_EQ(sample.dAzimuth, untouched.dAzimuth);
}

TEST(Reading, DiffersByTheSumOverItsAxes)
{
    EXPECT_EQ(survey::SumOfDifferences({1, 2, 3}, {11, -18, 33}), 60.0);
    EXPECT_EQ(survey::SumOfDifferences({11, -18, 33}, {1, 2, 3}), 60.0);
    EXPECT_EQ(survey::SumOfDifferences({1, 2, 3}, {1, 2, 3}), 0.0);
}

TEST(Correction, ChangesNothingByDefault)
{
    ExpectEqual(survey::Corrected({}, {0.1, -310.7, 44.3}), {0.1, -310.7, 44.3});
}

TEST(Correction, ShiftsScalesAndMixesTheRawReading)
{
    Incline_MagneticCorrectParameter par;
    par.x0 = 1;
    par.y0 = 2;
    par.z0 = 3;
    ExpectEqual(survey::Corrected(par, {10, 20, 40}), {9, 18, 37});
    par.b = 4;
    par.e = 8;
    ExpectEqual(survey::Corrected(par, {10, 20, 40}), {9, 78, 317});
    par.a = 0.5;
    ExpectEqual(survey::Corrected(par, {10, 20, 40}), {9, 83, 317});
    par.c = 0.25;
    ExpectEqual(survey::Corrected(par, {10, 20, 40}), {9, 83, 319.5});
    par.d = 2;
    ExpectEqual(survey::Corrected(par, {10, 20, 40}), {9, 83, 359.5});
}

} // namespace
