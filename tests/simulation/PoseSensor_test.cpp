// SPDX-License-Identifier: MIT
#include "simulation/PoseSensor.h"

#include "survey/Angle.h"
#include "survey/Correction.h"
#include <cmath>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using namespace simulation;
using tiltpole::survey::Deg2Rad;
using tiltpole::survey::Rad2Deg;

constexpr double kRoundOff = 1e-9; // counts, of fields of some hundred counts
constexpr double kInterval = 0.05;

// A sample of a pole at rest.
PoseSensorData ReadAtRest(const PoseSensor& sensor, const PoseAngles& angles,
                          const EarthField& field = {}, const std::vector<Magnet>& magnets = {},
                          double secondOfDay = 0.0, double seconds = 0.0)
{
    const Motion motion{AttitudeOf(angles), {}};
    PoseTruth truth;
    return SensorReadings(sensor, field, magnets, 1, 0)
        .Read(motion, motion, motion, kInterval, secondOfDay, seconds, truth);
}

void ExpectA(const PoseSensorData& s, const Point3& expected, double tolerance = kRoundOff)
{
    EXPECT_NEAR(s.dMag_x, expected.x, tolerance);
    EXPECT_NEAR(s.dMag_y, expected.y, tolerance);
    EXPECT_NEAR(s.dMag_z, expected.z, tolerance);
}

void ExpectB(const PoseSensorData& s, const Point3& expected, double tolerance = kRoundOff)
{
    EXPECT_NEAR(s.dMag_x_2, expected.x, tolerance);
    EXPECT_NEAR(s.dMag_y_2, expected.y, tolerance);
    EXPECT_NEAR(s.dMag_z_2, expected.z, tolerance);
}

// A field of 500 counts at a dip whose sine is 0.8: 300 counts north, 400 down.
const EarthField kField{500.0, Rad2Deg(std::atan2(4.0, 3.0)), 0.0};

TEST(PoseSensor, LevelPoleHeadingNorthReadsForwardAndUp)
{
    const PoseSensorData sample = ReadAtRest({}, {}, kField);
    ExpectA(sample, {300.0, 0.0, -400.0});
    ExpectB(sample, {-300.0, 0.0, -400.0});
    EXPECT_DOUBLE_EQ(sample.dAcc_z, 1.0);
}

// Heading east, north lies to the left: y of type 1, minus x of the others.
TEST(PoseSensor, HeadingEastReadsNorthOnTheLeft)
{
    ExpectA(ReadAtRest({}, {90.0, 0.0, 0.0}, kField), {0.0, 300.0, -400.0});
    ExpectA(ReadAtRest({.type = 2}, {90.0, 0.0, 0.0}, kField), {-300.0, 0.0, -400.0});
    ExpectB(ReadAtRest({.type = 2}, {90.0, 0.0, 0.0}, kField), {300.0, 0.0, -400.0});
}

TEST(PoseSensor, DeclinationTurnsTheFieldEast)
{
    EarthField field = kField;
    field.declination = 90.0;
    ExpectA(ReadAtRest({}, {}, field), {0.0, -300.0, -400.0});
    EXPECT_EQ(BiasAngleOf(field), -90.0);
}

// Nose straight up, forward looks up and the body's lower end looks to where the nose came from.
TEST(PoseSensor, NoseUpReadsTheDownFieldBackwards)
{
    const PoseSensorData sample = ReadAtRest({}, {0.0, 90.0, 0.0}, kField);
    ExpectA(sample, {-400.0, 0.0, -300.0});
    EXPECT_NEAR(sample.dPitch, 90.0, 1e-12);
    EXPECT_NEAR(sample.dAcc_x, 1.0, 1e-15);
}

TEST(PoseSensor, SoftAndHardIronDistortEachMagnetometerAlone)
{
    PoseSensor sensor;
    sensor.a.softIron.rows = {
        Point3{1.1, 0.2, 0.3},
        {0.4, 0.9, 0.5},
        {0.6, 0.7, 1.2}
    };
    sensor.a.hardIron = {10.0, 20.0, 30.0};
    sensor.b.hardIron = {-5.0, 6.0, -7.0};
    const PoseSensorData sample = ReadAtRest(sensor, {}, kField);
    ExpectA(sample,
            {1.1 * 300 - 0.3 * 400 + 10, 0.4 * 300 - 0.5 * 400 + 20, 0.6 * 300 - 1.2 * 400 + 30});
    ExpectB(sample, {-305.0, 6.0, -407.0});
}

// Undone, a distorted field is the field again, scaled by the first element.
RC_GTEST_PROP(PoseSensor, CorrectionUndoesLowerTriangularSoftIron, ())
{
    const auto share = [] { return *rc::gen::inRange(-300, 301) / 1000.0; };
    MagnetometerModel m;
    m.softIron.rows = {
        Point3{1.0 + share(), 0.0,           0.0          },
        {share(),       1.0 + share(), 0.0          },
        {share(),       share(),       1.0 + share()}
    };
    m.hardIron = {1000 * share(), 1000 * share(), 1000 * share()};
    const Point3 field{1000 * share(), 1000 * share(), 1000 * share()};

    const auto correction = CorrectionOf(m);
    RC_ASSERT(correction.has_value());
    const Point3 raw = m.softIron * field + m.hardIron;
    const auto [x, y, z] = tiltpole::survey::Corrected(*correction, {raw.x, raw.y, raw.z});
    const Point3 back{x, y, z};
    RC_ASSERT(Length(back - m.softIron.rows[0].x * field) < kRoundOff);
}

TEST(PoseSensor, NoEightValuesUndoAnyOtherSoftIron)
{
    MagnetometerModel m;
    m.softIron.rows[0].y = 0.01;
    EXPECT_FALSE(CorrectionOf(m));
    m.softIron.rows[0] = {1.0, 0.0, 0.0};
    EXPECT_TRUE(CorrectionOf(m));
    m.softIron.rows[2].z = 0.0;
    EXPECT_FALSE(CorrectionOf(m));
}

TEST(PoseSensor, InverseTimesTheMatrixIsTheIdentity)
{
    const Matrix m{
        {Point3{2.0, 1.0, 0.5}, {-0.3, 1.5, 0.2}, {0.1, -0.4, 0.8}}
    };
    const auto inverse = InverseOf(m);
    ASSERT_TRUE(inverse);
    const Matrix product = *inverse * m;
    const Matrix identity;
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_LT(Length(product.rows[i] - identity.rows[i]), 1e-15);
    EXPECT_FALSE(InverseOf({
        {Point3{1, 2, 3}, {2, 4, 6}, {0, 0, 1}}
    }));
}

TEST(PoseSensor, ReadingsAreMultiplesOfTheStep)
{
    PoseSensor sensor;
    sensor.magneticStep = 7.0;
    ExpectA(ReadAtRest(sensor, {}, kField), {301.0, 0.0, -399.0}, 0.0);
}

TEST(PoseSensor, InclinationIsTheSlopeOfTheRightAxis)
{
    PoseSensor sensor;
    sensor.rollReport = RollReport::Inclination;
    const PoseAngles angles{0.0, 60.0, 30.0};
    const double slope = Rad2Deg(std::asin(std::cos(Deg2Rad(60.0)) * std::sin(Deg2Rad(30.0))));
    EXPECT_NEAR(ReadAtRest(sensor, angles).dRoll, slope, 1e-12);
    EXPECT_NEAR(ReadAtRest({}, angles).dRoll, 30.0, 1e-12);
}

TEST(PoseSensor, TimeOfDayStartsAgainAtMidnight)
{
    struct Case
    {
        double second;
        int hour, minute, whole;
    };
    constexpr Case cases[] = {
        {0.0,       0,  0,  0 },
        {25509.0,   7,  5,  9 },
        {86399.95,  23, 59, 59},
        {86400.0,   0,  0,  0 },
        {172861.95, 0,  1,  1 },
    };
    for (const Case& c : cases) {
        const PoseSensorData s = ReadAtRest({}, {}, {}, {}, c.second);
        EXPECT_EQ(s.nHour, c.hour) << c.second;
        EXPECT_EQ(s.nMinute, c.minute) << c.second;
        EXPECT_EQ(s.nSecond, c.whole) << c.second;
    }
}

// From 10 to 20 s, 100 counts straight up: over A in full, over B by half.
const Magnet kMagnet{10.0, 20.0, 100.0, 0.5, 0.0, 90.0, false};

TEST(PoseSensor, MagnetReachesBothMagnetometersInItsShares)
{
    const PoseSensorData s = ReadAtRest({}, {}, kField, {kMagnet}, 0.0, 15.0);
    ExpectA(s, {300.0, 0.0, -300.0});
    ExpectB(s, {-300.0, 0.0, -350.0});
}

TEST(PoseSensor, MagnetIsThereInItsTimeOnly)
{
    for (const double seconds : {0.0, 10.0, 20.0, 25.0})
        ExpectA(ReadAtRest({}, {}, kField, {kMagnet}, 0.0, seconds), {300.0, 0.0, -400.0});
    ExpectA(ReadAtRest({}, {}, kField, {kMagnet}, 0.0, 10.25), {300.0, 0.0, -350.0});
}

// Fixed in space its field turns against the pole, fixed to the pole it does not.
TEST(PoseSensor, MagnetIsFixedInSpaceOrToThePole)
{
    Magnet magnet{0.0, 10.0, 100.0, 0.5, 0.0, 0.0, false};
    const PoseAngles east{90.0, 0.0, 0.0};
    ExpectA(ReadAtRest({}, east, kField, {magnet}, 0.0, 5.0), {0.0, 400.0, -400.0});
    magnet.onPole = true;
    ExpectA(ReadAtRest({}, east, kField, {magnet}, 0.0, 5.0), {100.0, 300.0, -400.0});
}

TEST(PoseSensor, AccelerationAddsTheMotionToGravity)
{
    const auto at = [](double north) {
        return Motion{
            Matrix{   },
            { north, 0.0, 0.0}
        };
    };
    const double third = 9.80665 * kInterval * kInterval; // 1 g northwards
    PoseTruth truth;
    const PoseSensor sensor;
    const PoseSensorData s = SensorReadings(sensor, {}, {}, 1, 0)
                                 .Read(at(0.0), at(0.0), at(third), kInterval, 0.0, 0.0, truth);
    EXPECT_NEAR(s.dAcc_x, 1.0, 1e-12);
    EXPECT_NEAR(s.dAcc_y, 0.0, 1e-12);
    EXPECT_NEAR(s.dAcc_z, 1.0, 1e-12);
}

struct Spread
{
    double mean = 0.0;
    double deviation = 0.0;
};

template <class Value>
Spread SpreadOver(const PoseSensor& sensor, Value value)
{
    constexpr int kCount = 20'000;
    const Motion motion{AttitudeOf({}), {}};
    SensorReadings readings(sensor, kField, {}, 5, 0);
    double sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < kCount; ++i) {
        PoseTruth truth;
        const double v = value(readings.Read(motion, motion, motion, kInterval, 0.0, 0.0, truth));
        sum += v;
        squares += v * v;
    }
    const double mean = sum / kCount;
    return {mean, std::sqrt(squares / kCount - mean * mean)};
}

// Of 20 000 numbers the mean strays by sd/141 and the deviation by sd/200; four times that is let.
void CheckNoise(const PoseSensor& sensor, double PoseSensorData::*field, double mean,
                double deviation)
{
    const Spread found = SpreadOver(sensor, [field](const PoseSensorData& s) { return s.*field; });
    EXPECT_NEAR(found.mean, mean, deviation * 4.0 / 141.0);
    EXPECT_NEAR(found.deviation, deviation, deviation * 4.0 / 200.0);
}

TEST(PoseSensor, NoiseHasItsStandardDeviation)
{
    PoseSensor sensor;
    sensor.a.noise = 2.0;
    sensor.b.noise = 3.0;
    sensor.tiltNoise = 0.1;
    sensor.pitchOffset = 0.5;
    sensor.gyroNoise = 0.2;
    sensor.gyroBias = {1.0, 0.0, 0.0};
    sensor.accelerationNoise = 0.01;
    CheckNoise(sensor, &PoseSensorData::dMag_x, 300.0, 2.0);
    CheckNoise(sensor, &PoseSensorData::dMag_z, -400.0, 2.0);
    CheckNoise(sensor, &PoseSensorData::dMag_y_2, 0.0, 3.0);
    CheckNoise(sensor, &PoseSensorData::dPitch, 0.5, 0.1);
    CheckNoise(sensor, &PoseSensorData::dRoll, 0.0, 0.1);
    CheckNoise(sensor, &PoseSensorData::dGyro_x, 1.0, 0.2);
    CheckNoise(sensor, &PoseSensorData::dAcc_z, 1.0, 0.01);
}

TEST(CorrectionOf, NeedsATriangleWithoutAZeroOnItsDiagonal)
{
    const MagnetometerModel model;
    EXPECT_TRUE(CorrectionOf(model));
    for (double Point3::*axis : {&Point3::y, &Point3::z}) {
        MagnetometerModel beyond = model;
        beyond.softIron.rows[0].*axis = 0.1;
        EXPECT_FALSE(CorrectionOf(beyond));
    }
    MagnetometerModel beyond = model;
    beyond.softIron.rows[1].z = 0.1;
    EXPECT_FALSE(CorrectionOf(beyond));
    constexpr double Point3::*kDiagonal[] = {&Point3::x, &Point3::y, &Point3::z};
    for (std::size_t i = 0; i < 3; ++i) {
        MagnetometerModel flat = model;
        flat.softIron.rows[i].*kDiagonal[i] = 0.0;
        EXPECT_FALSE(CorrectionOf(flat)) << i;
    }
}

} // namespace
