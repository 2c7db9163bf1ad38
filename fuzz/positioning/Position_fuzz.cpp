// SPDX-License-Identifier: MIT
//
// Position against its operations called one by one, within the documented figures, for setups and
// samples of any numbers; the readings come back unchanged, and a pole is as long as stated.
#include "fuzz/Input.h"
#include "tests/positioning/Reach.h"

namespace {

using fuzz::Input;
using fuzz::Require;

constexpr double kTip = 1e-11;             // [m], pole of 2 m
constexpr double kHeading = 1.2e-13;       // [degrees]
constexpr double kTiltDirection = 1.3e-11; // [degrees]
constexpr double kPoleLength = 2.0;        // [m]

bool AreClose(double actual, double expected, double tolerance)
{
    if (std::isnan(actual) || std::isnan(expected))
        return std::isnan(actual) && std::isnan(expected);
    return actual == expected || std::fabs(actual - expected) <= tolerance;
}

Incline_MagneticCorrectParameter CorrectionOf(Input& input)
{
    return {input.Between(-20, 20),   input.Between(-20, 20),   input.Between(-20, 20),
            input.Between(-0.2, 0.2), input.Between(-0.2, 0.2), input.Between(-0.2, 0.2),
            input.Between(0.8, 1.2),  input.Between(0.8, 1.2)};
}

double BiasOf(Input& input)
{
    const int kind = input.Below(4);
    return kind == 0 ? 0.0 : kind == 1 ? input.Number() : input.Between(-2000, 2000);
}

double LeanOf(Input& input)
{
    const int kind = input.Below(8);
    if (kind == 0) return input.Number();
    if (kind == 1) return 5.0 * input.Below(73) - 180.0;
    if (kind == 2) return input.Between(85, 95);
    return input.Between(-60, 60);
}

double ReadingOf(Input& input)
{
    return input.Below(16) == 0 ? input.Number() : input.Between(-500, 500);
}

PoseSensorData SampleOf(Input& input)
{
    PoseSensorData s;
    s.nHour = input.Below(24);
    s.dGyro_x = input.Number();
    s.dPitch = LeanOf(input);
    s.dRoll = LeanOf(input);
    for (double* reading : {&s.dMag_x, &s.dMag_y, &s.dMag_z, &s.dMag_x_2, &s.dMag_y_2, &s.dMag_z_2})
        *reading = ReadingOf(input);
    return s;
}

void MeasureStepByStep(CInclineSensor_Position& sensor, PoseSensorData& sample,
                       xyhCoordinate& point)
{
    const PoseSensorData raw = sample;
    sensor.CalculateYaw_A(sample);
    sensor.CalculateYaw_B(sample);
    double u = sample.dPitch;
    double v = sample.dRoll;
    Reach(sensor.GetSensorType()).GetTiltAngle(u, v);
    if (std::fabs(u) < 1e-6 && std::fabs(v) < 1e-6)
        point.h -= kPoleLength;
    else
        sensor.Position_Geometry_A(point, sample, kPoleLength, point);
    const PoseSensorData measured = sample;
    sample = raw;
    sample.dYaw = measured.dYaw;
    sample.dYaw_2 = measured.dYaw_2;
    sample.dYaw_Y = measured.dYaw_Y;
}

void CheckSample(CInclineSensor_Position& sensor, CInclineSensor_Position& literal,
                 const PoseSensorData& given, const xyhCoordinate& antenna)
{
    PoseSensorData sample = given;
    PoseSensorData expected = given;
    xyhCoordinate tip = antenna;
    xyhCoordinate expectedTip = antenna;
    Require(sensor.Position(sample, kPoleLength, tip) == 1);
    MeasureStepByStep(literal, expected, expectedTip);
    Require(AreClose(tip.x, expectedTip.x, kTip) && AreClose(tip.y, expectedTip.y, kTip)
            && AreClose(tip.h, expectedTip.h, kTip));
    Require(AreClose(sample.dYaw, expected.dYaw, kHeading)
            && AreClose(sample.dYaw_2, expected.dYaw_2, kHeading)
            && AreClose(sample.dYaw_Y, expected.dYaw_Y, kTiltDirection));
    Require(sensor.IsStationary() == literal.IsStationary()
            && sensor.IsMagneticInterference() == literal.IsMagneticInterference());
    const double length = std::hypot(tip.x - antenna.x, tip.y - antenna.y, tip.h - antenna.h);
    Require(std::isnan(length) || std::fabs(length - kPoleLength) < 1e-9);
    sample.dYaw = given.dYaw;
    sample.dYaw_2 = given.dYaw_2;
    sample.dYaw_Y = given.dYaw_Y;
    Require(std::memcmp(&sample, &given, sizeof sample) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    CInclineSensor_Position sensor;
    sensor.SetSensorType(kSensorTypes[input.Below(5)]);
    sensor.SetMagneticCorrectPar_A(CorrectionOf(input));
    sensor.SetMagneticCorrectPar_B(CorrectionOf(input));
    sensor.SetMagneticTranslationPar(
        {input.Between(-9, 9), input.Between(-9, 9), input.Between(-9, 9)});
    sensor.SetMagneticBiasAngle_A(BiasOf(input));
    sensor.SetMagneticBiasAngle_B(BiasOf(input));
    CInclineSensor_Position literal = sensor;
    const xyhCoordinate antenna{input.Between(-500, 500), input.Between(-500, 500),
                                input.Between(-500, 500)};
    do
        CheckSample(sensor, literal, SampleOf(input), antenna);
    while (!input.Ended());
    return 0;
}
