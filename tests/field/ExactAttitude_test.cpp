// SPDX-License-Identifier: MIT
// The attitude of a pole is built here as a product of rotation matrices; what perfect sensors would
// report of it is read off that product.
#include "field/ExactAttitude.h"

#include "positioning/InclineSensor_Position.h"
#include "survey/Angle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace {

namespace survey = tiltpole::survey;

using field::PitchRoll;
using field::Tilt;

constexpr double kLength = 2.0;
constexpr xyhCoordinate kTip{238540.0, 650135.0, 112.5};

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix Times(const Matrix& a, const Matrix& b)
{
    Matrix c{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                c[i][j] += a[i][k] * b[k][j];
    return c;
}

// Right-handed turns [degrees] in north, west, up.
Matrix AboutUp(double angle)
{
    const double c = std::cos(survey::Deg2Rad(angle));
    const double s = std::sin(survey::Deg2Rad(angle));
    return {
        {{c, -s, 0}, {s, c, 0}, {0, 0, 1}}
    };
}

Matrix AboutWest(double angle)
{
    const double c = std::cos(survey::Deg2Rad(angle));
    const double s = std::sin(survey::Deg2Rad(angle));
    return {
        {{c, 0, s}, {0, 1, 0}, {-s, 0, c}}
    };
}

// A pole that leans by `lean` towards `azimuth`, and is turned about its own axis. Columns: forward,
// left and up of the sensor in north, west, up.
Matrix LeaningPole(double lean, double azimuth, double spin)
{
    return Times(Times(AboutUp(-azimuth), AboutWest(lean)), AboutUp(azimuth - spin));
}

// What a perfect sensor of type 1 reports of the pole.
Tilt TiltOf(const Matrix& pole, PitchRoll meaning)
{
    Tilt tilt;
    tilt.meaning = meaning;
    tilt.pitch = survey::Rad2Deg(std::asin(pole[2][0]));
    tilt.roll = meaning == PitchRoll::Slopes ? survey::Rad2Deg(std::asin(pole[2][1]))
                                             : survey::Rad2Deg(std::atan2(pole[2][1], pole[2][2]));
    return tilt;
}

double HeadingOf(const Matrix& pole)
{
    return survey::Rad2Deg(std::atan2(-pole[1][0], pole[0][0]));
}

xyhCoordinate AntennaOf(const Matrix& pole)
{
    return {kTip.x + kLength * pole[0][2], kTip.y - kLength * pole[1][2],
            kTip.h + kLength * pole[2][2]};
}

// A field of 20 to the north and 45 down, in the axes of the sensor.
field::SensorVector ReadingAt(const Matrix& pole)
{
    return {20.0 * pole[0][0] - 45.0 * pole[2][0], 20.0 * pole[0][1] - 45.0 * pole[2][1],
            20.0 * pole[0][2] - 45.0 * pole[2][2]};
}

double DistanceToTip(const xyhCoordinate& p)
{
    return std::hypot(p.x - kTip.x, p.y - kTip.y, p.h - kTip.h);
}

class ExactAttitude : public testing::TestWithParam<PitchRoll>
{
protected:
    // The largest error over azimuths of the lean and turns about the pole's axis [m].
    static double LargestError(double lean)
    {
        double largest = 0.0;
        for (double azimuth = 0.0; azimuth < 360.0; azimuth += 30.0)
            for (double spin = 0.0; spin < 360.0; spin += 22.5) {
                const Matrix pole = LeaningPole(lean, azimuth, spin);
                const auto tip = field::ExactTip(AntennaOf(pole), kLength, TiltOf(pole, GetParam()),
                                                 HeadingOf(pole));
                largest = std::fmax(largest, DistanceToTip(tip));
            }
        return largest;
    }
};

INSTANTIATE_TEST_SUITE_P(BothMeanings, ExactAttitude,
                         testing::Values(PitchRoll::Slopes, PitchRoll::Turns));

TEST_P(ExactAttitude, FindsTheTipOfAStraightPole)
{
    for (const double lean : {0.0, 0.01, 1.0, 10.0, 20.0, 30.0, 45.0})
        EXPECT_LT(LargestError(lean), 1e-9) << "lean " << lean;
}

TEST_P(ExactAttitude, HeadingOfAFieldToTheNorthIsThatOfTheForwardAxis)
{
    const Matrix pole = LeaningPole(35.0, 80.0, 200.0);
    const field::SensorVector m = ReadingAt(pole);
    const double heading = field::MagneticHeading(TiltOf(pole, GetParam()), m);
    EXPECT_NEAR(survey::Wrapped(heading - HeadingOf(pole)), 0.0, 1e-12);
    EXPECT_GE(heading, 0.0);
    EXPECT_LT(heading, 360.0);
}

TEST_P(ExactAttitude, OtherAxesOfTheSensorLeaveThePoleWhereItIs)
{
    const Matrix pole = LeaningPole(25.0, 310.0, 40.0);
    Tilt tilt = TiltOf(pole, GetParam());
    const auto expected = field::PoleDirection(tilt, 77.0);
    tilt.sensorType = 0;
    const auto direction = field::PoleDirection(tilt, 77.0);
    EXPECT_EQ(direction.x, expected.x);
    EXPECT_EQ(direction.y, expected.y);
    EXPECT_EQ(direction.h, expected.h);
}

TEST(ExactAttitudeAxes, AreNamedByTheSensorType)
{
    Tilt tilt;
    tilt.pitch = 30.0;
    EXPECT_NEAR(field::LevelAxesOf(tilt).up.x, 0.5, 1e-15);
    tilt.sensorType = 0;
    EXPECT_NEAR(field::LevelAxesOf(tilt).up.y, 0.5, 1e-15);
    tilt.pitch = 0.0;
    tilt.roll = 30.0; // lowers the right side
    EXPECT_NEAR(field::LevelAxesOf(tilt).up.x, -0.5, 1e-15);
}

TEST(ExactAttitudeAxes, OfSlopesThatBelongToNoDirectionAreNotNumbers)
{
    Tilt tilt;
    tilt.pitch = 50.0;
    tilt.roll = 50.0;
    EXPECT_TRUE(std::isnan(field::LevelAxesOf(tilt).up.z));
    EXPECT_TRUE(std::isnan(field::MagneticHeading(tilt, {1.0, 2.0, 3.0})));
}

// The largest error of CInclineSensor_Position with perfect sensors, over azimuths of the lean and
// turns about the pole's axis [m].
double LargestErrorOfPosition(double lean, PitchRoll meaning)
{
    double largest = 0.0;
    for (double azimuth = 0.0; azimuth < 360.0; azimuth += 30.0)
        for (double spin = 0.0; spin < 360.0; spin += 5.0) {
            const Matrix pole = LeaningPole(lean, azimuth, spin);
            const Tilt tilt = TiltOf(pole, meaning);
            const field::SensorVector m = ReadingAt(pole);
            PoseSensorData sample;
            sample.dPitch = tilt.pitch;
            sample.dRoll = tilt.roll;
            sample.dMag_x = m.x;
            sample.dMag_y = m.y;
            sample.dMag_z = m.z;
            xyhCoordinate point = AntennaOf(pole);
            EXPECT_EQ(CInclineSensor_Position{}.Position(sample, kLength, point), 1);
            largest = std::fmax(largest, DistanceToTip(point));
        }
    return largest;
}

// The figures in the introduction of the header.
TEST(ExactAttitudeAxes, MatterMoreTheFurtherThePoleLeans)
{
    struct Case
    {
        double lean, slopes, turns;
    };
    constexpr Case cases[] = {
        {10.0, 0.0008, 0.0021},
        {20.0, 0.0139, 0.0174},
        {30.0, 0.0710, 0.0640},
        {35.0, 0.1314, 0.1079},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(LargestErrorOfPosition(c.lean, PitchRoll::Slopes), c.slopes, 1e-4) << c.lean;
        EXPECT_NEAR(LargestErrorOfPosition(c.lean, PitchRoll::Turns), c.turns, 1e-4) << c.lean;
    }
}

} // namespace
