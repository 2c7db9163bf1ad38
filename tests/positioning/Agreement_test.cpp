// SPDX-License-Identifier: MIT
//
// The accuracy documented in InclineSensor_Position.h: Position compared with separate calls of the
// operations it combines, for usual poses, poses where the last digit matters, and hostile values.
#include "tests/positioning/Reach.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

// The figures documented in the header.
constexpr double kTip = 1e-11;             // [m], pole of 2 m
constexpr double kHeading = 1.2e-13;       // [degrees], dYaw and dYaw_2
constexpr double kTiltDirection = 1.3e-11; // [degrees], dYaw_Y

constexpr double kPoleLength = 2.0; // [m]
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kHostile[] = {
    0.0,   -0.0,   1e-320, 1e-151, 1e150,     -1e200,     1e308, kNaN,
    90.0,  -90.0,  180.0,  360.0,  kInfinity, -kInfinity, 1e-9,  5.7295779513082321e-05,
    -45.0, 1000.0, 1e-6,   0.5,
};

bool AreClose(double actual, double expected, double tolerance)
{
    if (std::isnan(actual) || std::isnan(expected))
        return std::isnan(actual) && std::isnan(expected);
    return actual == expected || std::fabs(actual - expected) <= tolerance;
}

bool AreSameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool IsNearATurn(double heading)
{
    return !(heading > 9e-10 && heading < 360.0 - 9e-10);
}

class Samples
{
public:
    explicit Samples(unsigned seed) : m_random(seed) {}

    double Between(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(m_random);
    }

    int Below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }

    double Hostile() { return kHostile[Below(static_cast<int>(std::size(kHostile)))]; }

    CInclineSensor_Position Sensor(int type)
    {
        CInclineSensor_Position sensor;
        sensor.SetSensorType(type);
        sensor.SetMagneticCorrectPar_A(Correction());
        sensor.SetMagneticCorrectPar_B(Correction());
        sensor.SetMagneticTranslationPar({Between(-9, 9), Between(-9, 9), Between(-9, 9)});
        sensor.SetMagneticBiasAngle_A(Bias());
        sensor.SetMagneticBiasAngle_B(Bias());
        return sensor;
    }

    // Every field is filled, to show that Position leaves alone what it does not document.
    PoseSensorData Sample()
    {
        PoseSensorData s;
        s.nHour = Below(24);
        s.nMinute = Below(60);
        s.nSecond = Below(60);
        for (double* field = &s.dPitch; field <= &s.dSpare; ++field)
            *field = Between(-9, 9);
        const int kind = Below(6);
        s.dPitch = Lean(kind);
        s.dRoll = Lean(kind);
        for (double* reading : {&s.dMag_x, &s.dMag_y, &s.dMag_z})
            *reading = Between(-500, 500);
        s.dMag_x_2 = -s.dMag_x + Between(-99, 99);
        s.dMag_y_2 = -s.dMag_y + Between(-99, 99);
        s.dMag_z_2 = s.dMag_z + Between(-99, 99);
        if (Below(8) == 0) (&s.dMag_x)[Below(6)] = Hostile();
        return s;
    }

private:
    Incline_MagneticCorrectParameter Correction()
    {
        return {Between(-20, 20),   Between(-20, 20),   Between(-20, 20),  Between(-0.2, 0.2),
                Between(-0.2, 0.2), Between(-0.2, 0.2), Between(0.8, 1.2), Between(0.8, 1.2)};
    }

    double Bias()
    {
        switch (Below(4)) {
        case 0:
            return 0.0;
        case 1:
            return Between(-1000, 1000);
        case 2:
            return Below(4) == 0 ? Hostile() : Between(-3000, 3000);
        default:
            return Between(-2, 2);
        }
    }

    double Lean(int kind)
    {
        switch (kind) {
        case 0:
            return Between(-45, 45);
        case 1:
            return Between(-180, 180);
        case 2:
            return std::copysign(std::pow(10.0, Between(-6, 2)), Between(-1, 1));
        case 3:
            return 5.0 * Below(73) - 180.0;
        case 4:
            return Below(2) ? Between(85, 95) : Between(-3, 3);
        default:
            return Below(2) ? Hostile() : Between(-60, 60);
        }
    }

    std::mt19937 m_random;
};

// Subtracts the heading of magnetometer A, or dYaw_Y, so that the result is near 0 or 360.
void TurnToAnEnd(CInclineSensor_Position& sensor, PoseSensorData sample, bool tiltDirection)
{
    CInclineSensor_Position probe = sensor;
    probe.SetMagneticBiasAngle_A(0);
    probe.CalculateYaw_A(sample);
    sensor.SetMagneticBiasAngle_A(tiltDirection ? sample.dYaw_Y : sample.dYaw);
}

// Calls the operations one by one.
void MeasureStepByStep(CInclineSensor_Position& sensor, PoseSensorData& sample,
                       xyhCoordinate& point)
{
    constexpr double kPlumb = 1e-6; // [rad]
    const PoseSensorData raw = sample;
    sensor.CalculateYaw_A(sample);
    sensor.CalculateYaw_B(sample);
    Reach tilt(sensor.GetSensorType());
    double u = sample.dPitch;
    double v = sample.dRoll;
    tilt.GetTiltAngle(u, v);
    if (std::fabs(u) < kPlumb && std::fabs(v) < kPlumb)
        point.h -= kPoleLength;
    else
        sensor.Position_Geometry_A(point, sample, kPoleLength, point);
    const PoseSensorData measured = sample;
    sample = raw;
    sample.dYaw = measured.dYaw;
    sample.dYaw_2 = measured.dYaw_2;
    sample.dYaw_Y = measured.dYaw_Y;
}

struct Outcome
{
    CInclineSensor_Position sensor;
    PoseSensorData sample;
    xyhCoordinate point;
};

void ExpectAgreement(const Outcome& actual, const Outcome& expected)
{
    const PoseSensorData& s = actual.sample;
    const PoseSensorData& e = expected.sample;
    EXPECT_TRUE(AreClose(actual.point.x, expected.point.x, kTip)) << actual.point.x;
    EXPECT_TRUE(AreClose(actual.point.y, expected.point.y, kTip)) << actual.point.y;
    EXPECT_TRUE(AreClose(actual.point.h, expected.point.h, kTip)) << actual.point.h;
    EXPECT_TRUE(AreClose(s.dYaw, e.dYaw, kHeading)) << s.dYaw << ' ' << e.dYaw;
    EXPECT_TRUE(AreClose(s.dYaw_2, e.dYaw_2, kHeading)) << s.dYaw_2 << ' ' << e.dYaw_2;
    EXPECT_TRUE(AreClose(s.dYaw_Y, e.dYaw_Y, kTiltDirection)) << s.dYaw_Y << ' ' << e.dYaw_Y;
    for (const auto heading :
         {&PoseSensorData::dYaw, &PoseSensorData::dYaw_2, &PoseSensorData::dYaw_Y}) {
        const bool isEnd = IsNearATurn(e.*heading) && !std::isnan(e.*heading);
        EXPECT_TRUE(!isEnd || AreSameBits(s.*heading, e.*heading)) << s.*heading;
    }
    EXPECT_EQ(actual.sensor.IsStationary(), expected.sensor.IsStationary());
    EXPECT_EQ(actual.sensor.IsMagneticInterference(), expected.sensor.IsMagneticInterference());
    double kept[2];
    double wanted[2];
    actual.sensor.ConverseYaw(3, 1, kept[0], kept[1]);
    expected.sensor.ConverseYaw(3, 1, wanted[0], wanted[1]);
    EXPECT_TRUE(AreSameBits(kept[0], wanted[0]) || std::isnan(wanted[0])) << kept[0];

    PoseSensorData others = s;
    others.dYaw = e.dYaw;
    others.dYaw_2 = e.dYaw_2;
    others.dYaw_Y = e.dYaw_Y;
    EXPECT_EQ(std::memcmp(&others, &e, sizeof e), 0) << "a field that is not a heading changed";
}

TEST(Position, AgreesWithItsFormulasAsDocumented)
{
    constexpr int kSetups = 400;
    constexpr int kSamplesEach = 40;
    Samples samples(31);
    for (const int type : kSensorTypes)
        for (int i = 0; i < kSetups && !::testing::Test::HasFailure(); ++i) {
            Outcome actual{samples.Sensor(type), {}, {}};
            Outcome expected = actual;
            for (int k = 0; k < kSamplesEach; ++k) {
                if (samples.Below(4) != 0) actual.sample = samples.Sample();
                if (k % 16 == 0) TurnToAnEnd(actual.sensor, actual.sample, samples.Below(2) == 0);
                expected.sensor.SetMagneticBiasAngle_A(actual.sensor.GetMagneticBiasAngle_A());
                expected.sample = actual.sample;
                actual.point = {samples.Between(-500, 500), samples.Between(-500, 500),
                                samples.Between(-500, 500)};
                expected.point = actual.point;
                actual.sensor.Position(actual.sample, kPoleLength, actual.point);
                MeasureStepByStep(expected.sensor, expected.sample, expected.point);
                SCOPED_TRACE(testing::Message()
                             << "type " << type << ", setup " << i << ", sample " << k << ": pitch "
                             << actual.sample.dPitch << ", roll " << actual.sample.dRoll);
                ExpectAgreement(actual, expected);
            }
        }
}

} // namespace
