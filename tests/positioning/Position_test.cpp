// SPDX-License-Identifier: MIT
//
// The measurement as a host calls it: from pose and antenna to headings and tip.
#include "tests/positioning/Reach.h"
#include "tests/reference/LiteralPosition.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <utility>

namespace {

constexpr double kRoundOff = 1e-12;   // [m], of coordinates near 0
constexpr Field kNorth{200, 0, -430}; // level pole heading north [counts]

double PlaneDistance(const xyhCoordinate& a, const xyhCoordinate& b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

TEST(Position, PutsThePlumbTipStraightBelowTheAntenna)
{
    for (const int type : kSensorTypes) {
        Reach sensor(type);
        PoseSensorData sample = Sample(0, 0, {120, -310, 44});
        xyhCoordinate point{1000.25, 2000.5, 50.75};
        EXPECT_EQ(sensor.Position(sample, 2.5, point), 1);
        EXPECT_EQ(point.x, 1000.25) << "type " << type;
        EXPECT_EQ(point.y, 2000.5) << "type " << type;
        EXPECT_EQ(point.h, 48.25) << "type " << type;
    }
}

TEST(Position, ReturnsTheRawReadingsAndTheHeadings)
{
    for (const int type : kSensorTypes) {
        Reach sensor(type);
        Incline_MagneticCorrectParameter par;
        par.x0 = 12.5;
        par.a = 0.25;
        par.e = 1.5;
        sensor.SetMagneticCorrectPar_A(par);
        sensor.SetMagneticCorrectPar_B(par);
        PoseSensorData sample = Sample(3, -8, {150, 80, -400}, {-140, -90, -410});
        const PoseSensorData given = sample;
        xyhCoordinate point;
        EXPECT_EQ(sensor.Position(sample, 2.0, point), 1);
        EXPECT_EQ(sample.dMag_x, given.dMag_x);
        EXPECT_EQ(sample.dMag_y, given.dMag_y);
        EXPECT_EQ(sample.dMag_z, given.dMag_z);
        EXPECT_EQ(sample.dMag_x_2, given.dMag_x_2);
        EXPECT_EQ(sample.dMag_y_2, given.dMag_y_2);
        EXPECT_EQ(sample.dMag_z_2, given.dMag_z_2);
        EXPECT_NE(sample.dYaw, 0.0);
        EXPECT_NE(sample.dYaw_2, 0.0);
        EXPECT_NE(sample.dYaw_Y, 0.0);
    }
}

TEST(Position, GivesTheSameAgainForTheSameSample)
{
    Reach sensor;
    Incline_MagneticCorrectParameter par;
    par.x0 = 30;
    sensor.SetMagneticCorrectPar_A(par);
    PoseSensorData sample = Sample(5, 12, {150, 80, -400});
    xyhCoordinate first{1, 2, 3};
    xyhCoordinate second = first;
    sensor.Position(sample, 2.0, first);
    const double yaw = sample.dYaw;
    sensor.Position(sample, 2.0, second);
    EXPECT_EQ(sample.dYaw, yaw);
    EXPECT_EQ(second.x, first.x);
    EXPECT_EQ(second.y, first.y);
    EXPECT_EQ(second.h, first.h);
}

// Ten degrees of roll: cos 80° = 0.17364817766693, sin 80° = 0.98480775301221.
TEST(Position, StepsDownALeaningPoleByItsLength)
{
    Reach sensor;
    PoseSensorData sample = Sample(0, 10, kNorth);
    xyhCoordinate point;
    sensor.Position(sample, 2.0, point);
    EXPECT_NEAR(PlaneDistance(point, {}), 0.34729635533386, 1e-13);
    EXPECT_NEAR(point.h, -1.96961550602442, 1e-13);
}

TEST(Position, LiesOnePoleLengthFromTheAntenna)
{
    std::mt19937 random(20);
    std::uniform_real_distribution<double> angle(-60, 60);
    std::uniform_real_distribution<double> field(-500, 500);
    for (int i = 0; i < 2000; ++i) {
        Reach sensor(kSensorTypes[i % 5]);
        PoseSensorData sample =
            Sample(angle(random), angle(random), {field(random), field(random), field(random)});
        xyhCoordinate point;
        sensor.Position(sample, 2.0, point);
        EXPECT_NEAR(std::hypot(point.x, point.y, point.h), 2.0, kRoundOff);
    }
}

TEST(Position, CallsAPolePlumbBelowAMicroradian)
{
    const double below = 0.99e-6 * 180 / kPi;
    const double above = 1.01e-6 * 180 / kPi;
    const auto offset = [](int type, double pitch, double roll) {
        Reach sensor(type);
        PoseSensorData sample = Sample(pitch, roll, kNorth);
        xyhCoordinate point;
        sensor.Position(sample, 2, point);
        return PlaneDistance(point, {});
    };
    for (const int type : kSensorTypes) {
        EXPECT_EQ(offset(type, below, -below), 0.0) << "type " << type;
        EXPECT_GT(offset(type, above, 0), 1e-6) << "type " << type;
        EXPECT_GT(offset(type, 0, above), 1e-6) << "type " << type;
    }
}

TEST(Position, KeepsTheProjectionAngleUnlessThePoleIsPlumb)
{
    Reach sensor;
    double yaw = 0;
    double opposite = 0;
    xyhCoordinate point;
    PoseSensorData leaning = Sample(0.5, 10, kNorth);
    sensor.Position(leaning, 2, point);
    sensor.ConverseYaw(1, 0, yaw, opposite);
    const double kept = yaw;
    Reach other;
    other.GetAngleofPoleProject(0.5, 10, 0, 1);
    other.ConverseYaw(1, 0, yaw, opposite);
    EXPECT_EQ(kept, yaw);

    PoseSensorData plumb = Sample(0, 0, kNorth);
    sensor.Position(plumb, 2, point);
    sensor.ConverseYaw(1, 0, yaw, opposite);
    EXPECT_EQ(yaw, kept);
}

// Position stores a pose and GetAngleofPoleProject an angle; the one stored last counts. Half of
// the poles are nearly plumb, where the last digit of the elevation turns the projection. A vector
// along the projection gives 0 or just below 360, depending on the last digit of the angle.
TEST(Position, KeepsTheProjectionAngleOfItsFormulas)
{
    std::mt19937 random(21);
    std::uniform_real_distribution<double> lean(-1, 1);
    for (int i = 0; i < 10000; ++i) {
        const double steepest = i % 2 ? 70.0 : 0.03;
        const double pitch = steepest * lean(random);
        const double roll = steepest * lean(random);
        Reach sensor(kSensorTypes[i % 5]);
        Reach other(kSensorTypes[i % 5]);
        PoseSensorData sample = Sample(pitch, roll, kNorth);
        xyhCoordinate point;
        double kept = 0;
        double yaw = 0;
        double opposite = 0;
        sensor.Position(sample, 2, point);
        sensor.ConverseYaw(1, 0, kept, opposite);
        other.GetAngleofPoleProject(pitch, roll, 0, 1);
        other.ConverseYaw(1, 0, yaw, opposite);
        EXPECT_EQ(kept, yaw) << pitch << ' ' << roll;
        const double along = -yaw * kPi / 180.0;
        sensor.ConverseYaw(std::cos(along), std::sin(along), kept, opposite);
        other.ConverseYaw(std::cos(along), std::sin(along), yaw, opposite);
        EXPECT_EQ(kept, yaw) << pitch << ' ' << roll;

        sensor.GetAngleofPoleProject(roll, pitch, 0, 1);
        other.GetAngleofPoleProject(roll, pitch, 0, 1);
        sensor.ConverseYaw(1, 0, kept, opposite);
        other.ConverseYaw(1, 0, yaw, opposite);
        EXPECT_EQ(kept, yaw) << pitch << ' ' << roll;
    }
}

TEST(Position, KeepsTheProjectionAngleOfTheSensorTypeItMeasuredWith)
{
    Reach sensor(2);
    Reach other(2);
    PoseSensorData sample = Sample(12, 17, kNorth);
    xyhCoordinate point;
    sensor.Position(sample, 2, point);
    other.GetAngleofPoleProject(12, 17, 0, 1);
    sensor.SetSensorType(1);
    double kept = 0;
    double yaw = 0;
    double opposite = 0;
    sensor.ConverseYaw(1, 0, kept, opposite);
    other.ConverseYaw(1, 0, yaw, opposite);
    EXPECT_EQ(kept, yaw);
}

// The state that an object has taken from samples is copied and assigned with it.
void ExpectSameMemory(const CInclineSensor_Position& copy, const CInclineSensor_Position& original)
{
    EXPECT_EQ(copy.IsStationary(), original.IsStationary());
    EXPECT_EQ(copy.IsMagneticInterference(), original.IsMagneticInterference());
    double kept[2];
    double expected[2];
    copy.ConverseYaw(1, 0, kept[0], kept[1]);
    original.ConverseYaw(1, 0, expected[0], expected[1]);
    EXPECT_EQ(kept[0], expected[0]);
    EXPECT_NE(kept[0], 0.0) << "a projection angle is kept";
}

// Samples just within the limits of a still period that began at 10 and 5 degrees and a reading of
// (2000, 300, -430).
void ExpectSameStillPeriod(const CInclineSensor_Position& copied)
{
    const PoseSensorData limits[] = {
        Sample(10.4, 5, {2000, 300, -430}), Sample(10, 4.6, {2000, 300, -430}),
        Sample(10, 5, {2999, 300, -430}),   Sample(10, 5, {2000, 1299, -430}),
        Sample(10, 5, {2000, 300, -1429}),
    };
    for (PoseSensorData sample : limits) {
        CInclineSensor_Position sensor = copied;
        sensor.CalculateYaw_A(sample);
        EXPECT_EQ(sensor.IsStationary(), 1);
    }
}

TEST(Position, IsRememberedByACopy)
{
    for (const bool byPose : {true, false}) {
        CInclineSensor_Position original;
        PoseSensorData sample = Sample(10, 5, {2000, 300, -430}, {900, 0, 0});
        xyhCoordinate point;
        original.Position(sample, 2, point);
        original.Position(sample, 2, point);
        if (!byPose) original.GetAngleofPoleProject(7, 20, 0, 1);
        ASSERT_EQ(original.IsStationary(), 1);
        ASSERT_EQ(original.IsMagneticInterference(), 1);

        const CInclineSensor_Position copy = original;
        ExpectSameMemory(copy, original);
        ExpectSameStillPeriod(copy);
        CInclineSensor_Position assigned;
        assigned = original;
        ExpectSameMemory(assigned, original);
        ExpectSameStillPeriod(assigned);
    }
}

TEST(Position, ChangesNoFieldOfTheSampleButTheHeadings)
{
    for (const int type : kSensorTypes)
        for (const double pitch : {0.0, 12.0}) {
            PoseSensorData sample;
            sample.nHour = 7;
            sample.nMinute = 8;
            sample.nSecond = 9;
            double value = 1.0;
            for (double* field = &sample.dPitch; field <= &sample.dSpare; ++field)
                *field = value++;
            sample.dPitch = pitch;
            const PoseSensorData given = sample;
            xyhCoordinate point;
            Reach(type).Position(sample, 2, point);
            EXPECT_NE(sample.dYaw, given.dYaw);
            EXPECT_NE(sample.dYaw_2, given.dYaw_2);
            EXPECT_NE(sample.dYaw_Y, given.dYaw_Y);
            sample.dYaw = given.dYaw;
            sample.dYaw_2 = given.dYaw_2;
            sample.dYaw_Y = given.dYaw_Y;
            EXPECT_EQ(std::memcmp(&sample, &given, sizeof sample), 0) << "type " << type;
        }
}

TEST(Position, UsesTheLengthAsGiven)
{
    PoseSensorData sample = Sample(0, 0, kNorth);
    xyhCoordinate point{0, 0, 10};
    Reach{}.Position(sample, -2, point);
    EXPECT_EQ(point.h, 12.0);
}

TEST(Position, RefreshesBothFlags)
{
    Reach sensor;
    xyhCoordinate point;
    PoseSensorData sample = Sample(10, 5, {200, 0, -430}, {900, 0, 0});
    sensor.Position(sample, 2, point);
    EXPECT_EQ(sensor.IsStationary(), 0);
    EXPECT_EQ(sensor.IsMagneticInterference(), 1);
    sample = Sample(10, 5, {200, 0, -430});
    sensor.Position(sample, 2, point);
    EXPECT_EQ(sensor.IsStationary(), 1);
    EXPECT_EQ(sensor.IsMagneticInterference(), 0);
}

// NaN, infinities and extreme values in every field of the sample, for every sensor type.
TEST(Position, SurvivesWhatIsNotFinite)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double PoseSensorData::*fields[] = {
        &PoseSensorData::dPitch,   &PoseSensorData::dRoll,   &PoseSensorData::dMag_x,
        &PoseSensorData::dMag_y,   &PoseSensorData::dMag_z,  &PoseSensorData::dMag_x_2,
        &PoseSensorData::dMag_y_2, &PoseSensorData::dMag_z_2};
    for (const int type : kSensorTypes)
        for (const auto field : fields)
            for (const double value :
                 {std::numeric_limits<double>::quiet_NaN(), kInfinity, -kInfinity, 1e308, -1e308,
                  std::numeric_limits<double>::denorm_min()}) {
                PoseSensorData sample = Sample(3, 4, {200, 20, -430});
                sample.*field = value;
                xyhCoordinate point{1, 2, 3};
                EXPECT_EQ(Reach(type).Position(sample, 2, point), 1);
                EXPECT_TRUE(std::isnan(value) || sample.*field == value) << "raw values stay";
            }
}

// A field that vanishes or overflows when squared, or a bias so large that headings lose digits.
TEST(Position, FollowsItsFormulasInExtremeFields)
{
    constexpr Field fields[] = {
        {0,      0,      0    },
        {1e-200, 2e-200, 0    },
        {1e200,  -2e200, 1e199},
        {-0.0,   0,      0    },
        {1e-320, 0,      0    },
        {210,    35,     -430 }
    };
    for (const int type : kSensorTypes)
        for (const Field& field : fields)
            for (const double bias : {0.0, 30.0, 1e3, 1e9, -1e12}) {
                literal::Setup setup;
                setup.sensorType = type;
                setup.biasA = bias;
                setup.biasB = -bias;
                CInclineSensor_Position sensor;
                sensor.SetSensorType(type);
                sensor.SetMagneticBiasAngle_A(bias);
                sensor.SetMagneticBiasAngle_B(-bias);
                PoseSensorData sample = Sample(12, -7, field);
                const auto expected = literal::Measure(setup, sample, 2.0, {1, 2, 3});
                xyhCoordinate point{1, 2, 3};
                sensor.Position(sample, 2.0, point);
                EXPECT_NEAR(point.x, expected.tip.x, kRoundOff) << type << ' ' << bias;
                EXPECT_NEAR(point.y, expected.tip.y, kRoundOff) << type << ' ' << bias;
                EXPECT_NEAR(sample.dYaw, expected.yaw, 1e-13) << type << ' ' << bias;
                EXPECT_NEAR(sample.dYaw_2, expected.yaw2, 1e-13) << type << ' ' << bias;
            }
}

// Poses where the last digit of an arc cosine's argument matters: along one axis, nearly plumb,
// nearly horizontal. Both computations must use the same digit.
TEST(Position, FollowsItsFormulasAlongTheAxes)
{
    constexpr double angles[] = {0,  1e-5, -1e-5, 3e-4, 0.002, -0.01, 7,    -7.3,
                                 10, -10,  12.34, 33.3, -45,   60,    89.9, 90};
    for (const int type : kSensorTypes)
        for (const double pitch : angles)
            for (const double roll : angles) {
                literal::Setup setup;
                setup.sensorType = type;
                PoseSensorData sample = Sample(pitch, roll, {210, 35, -430});
                const auto expected = literal::Measure(setup, sample, 2.0, {1, 2, 3});
                xyhCoordinate point{1, 2, 3};
                Reach(type).Position(sample, 2.0, point);
                EXPECT_NEAR(point.x, expected.tip.x, 1e-11) << type << ' ' << pitch << ' ' << roll;
                EXPECT_NEAR(point.y, expected.tip.y, 1e-11) << type << ' ' << pitch << ' ' << roll;
                EXPECT_NEAR(point.h, expected.tip.h, 1e-11) << type << ' ' << pitch << ' ' << roll;
            }
}

// Leans of all orders of magnitude, down to a tenth of the microradian that counts as plumb.
TEST(Position, FollowsItsFormulasNearThePlumbLineAndTheAxes)
{
    // [m]; the formulas lose so much by tan t and an arc cosine, Position does not.
    constexpr double kAmplified = 4e-12;
    std::mt19937 random(23);
    std::uniform_real_distribution<double> exponent(-5.3, 1.6);
    std::uniform_real_distribution<double> side(-1, 1);
    const auto lean = [&] { return std::copysign(std::pow(10.0, exponent(random)), side(random)); };
    for (const int type : kSensorTypes)
        for (int i = 0; i < 20000; ++i) {
            literal::Setup setup;
            setup.sensorType = type;
            PoseSensorData sample = Sample(lean(), lean(), {210, 35, -430});
            const auto expected = literal::Measure(setup, sample, 2.0, {});
            xyhCoordinate point;
            Reach(type).Position(sample, 2.0, point);
            EXPECT_NEAR(point.x, expected.tip.x, kAmplified)
                << sample.dPitch << ' ' << sample.dRoll;
            EXPECT_NEAR(point.y, expected.tip.y, kAmplified)
                << sample.dPitch << ' ' << sample.dRoll;
            EXPECT_NEAR(point.h, expected.tip.h, kAmplified)
                << sample.dPitch << ' ' << sample.dRoll;
        }
}

struct Worst
{
    double heading = 0.0; // [degrees]
    double tip = 0.0;     // [m]
    double tiltDirection = 0.0;
};

literal::Setup RandomSetup(std::mt19937& random, int type)
{
    std::uniform_real_distribution<double> small(-0.2, 0.2);
    std::uniform_real_distribution<double> bias(-720, 720);
    literal::Setup setup;
    setup.sensorType = type;
    for (auto* par : {&setup.parA, &setup.parB})
        *par = {90 * small(random), 90 * small(random), 90 * small(random), small(random),
                small(random),      small(random),      1 + small(random),  1 + small(random)};
    setup.translation = {90 * small(random), 90 * small(random), 90 * small(random)};
    setup.biasA = bias(random);
    setup.biasB = bias(random);
    return setup;
}

void Configure(CInclineSensor_Position& sensor, const literal::Setup& setup)
{
    sensor.SetSensorType(setup.sensorType);
    sensor.SetMagneticCorrectPar_A(setup.parA);
    sensor.SetMagneticCorrectPar_B(setup.parB);
    sensor.SetMagneticTranslationPar(setup.translation);
    sensor.SetMagneticBiasAngle_A(setup.biasA);
    sensor.SetMagneticBiasAngle_B(setup.biasB);
}

void Raise(double& worst, double difference)
{
    if (!(difference <= worst)) worst = difference;
}

// Largest differences from the literal formulas over random samples.
Worst CompareWithFormulas(int type, double steepest, int samples, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> angle(-steepest, steepest);
    std::uniform_real_distribution<double> field(-500, 500);
    Worst worst;
    CInclineSensor_Position sensor;
    literal::Setup setup;
    for (int i = 0; i < samples; ++i) {
        if (i % 64 == 0) {
            setup = RandomSetup(random, type);
            Configure(sensor, setup);
        }
        PoseSensorData sample =
            Sample(angle(random), angle(random), {field(random), field(random), field(random)},
                   {field(random), field(random), field(random)});
        const xyhCoordinate antenna{field(random), field(random), field(random)};
        const literal::Result expected = literal::Measure(setup, sample, 2.0, antenna);
        xyhCoordinate point = antenna;
        sensor.Position(sample, 2.0, point);

        Raise(worst.heading, std::fabs(sample.dYaw - expected.yaw));
        Raise(worst.heading, std::fabs(sample.dYaw_2 - expected.yaw2));
        Raise(worst.tip, std::hypot(point.x - expected.tip.x, point.y - expected.tip.y,
                                    point.h - expected.tip.h));
        Raise(worst.tiltDirection, std::fabs(sample.dYaw_Y - expected.yawY));
    }
    return worst;
}

TEST(Position, FollowsItsFormulasForEverySensorType)
{
    for (const int type : kSensorTypes)
        for (const double steepest : {2.0, 45.0, 89.0, 180.0}) {
            const Worst worst = CompareWithFormulas(type, steepest, 20000, 31);
            EXPECT_LE(worst.heading, 1.2e-13) << "type " << type << ", up to " << steepest;
            EXPECT_LE(worst.tip, 1e-11) << "type " << type << ", up to " << steepest;
            EXPECT_LE(worst.tiltDirection, 1.3e-11) << "type " << type << ", up to " << steepest;
        }
}

} // namespace
