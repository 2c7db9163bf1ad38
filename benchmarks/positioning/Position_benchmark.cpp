// SPDX-License-Identifier: MIT
//
// Position per sample, beside what it is to be compared with in the same run:
//
//   Literal        the formulas written out one by one (tests/reference/LiteralPosition.h)
//   Trigonometry   bare library calls on the arguments that the measurement has: the six that its
//                  formulas name once all that can be shared is shared, or the two pairs of sine
//                  and cosine that Position makes do with (its three arc functions are computed in
//                  lanes, vector/ArcTangent.h; the angle of the projection waits until ConverseYaw
//                  asks for it)
//   OneByOne       CalculateYaw_A and CalculateYaw_B, beside the two compasses of Compass_peers.cpp
//   Fusion         one step of a complementary filter with the same tip arithmetic, on Eigen
//                  (Fusion_peers.cpp)
//
// Read the ratios, by CPU time; a single number depends on the machine.
#include "benchmarks/positioning/PoseSamples.h"
#include "positioning/InclineSensor_Position.h"
#include "positioning/detail/Heading.h"
#include "positioning/detail/Tilt.h"
#include "survey/Correction.h"
#include "tests/reference/LiteralPosition.h"

#include <benchmark/benchmark.h>
#include <cmath>

namespace positioning = tiltpole::positioning;
namespace survey = tiltpole::survey;
using survey::Magnetometer;

namespace {

using namespace poses;

constexpr double kBias = 0.75; // [degrees]

constexpr Incline_MagneticCorrectParameter kCorrection{3.5,   -2.25, 8.0,  0.01,
                                                       -0.02, 0.005, 1.03, 0.98};

void Position(benchmark::State& state)
{
    CInclineSensor_Position sensor;
    sensor.SetSensorType(static_cast<int>(state.range(0)));
    sensor.SetMagneticCorrectPar_A(kCorrection);
    sensor.SetMagneticCorrectPar_B(kCorrection);
    sensor.SetMagneticBiasAngle_A(kBias);
    sensor.SetMagneticBiasAngle_B(kBias);
    auto samples = Samples();
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        xyhCoordinate point{238539.98, 650134.99, 114.51};
        PoseSensorData& sample = samples[i++ % kSamples];
        benchmark::DoNotOptimize(sensor.Position(sample, kPoleLength, point));
        benchmark::DoNotOptimize(point);
    }
}
BENCHMARK(Position)->ArgName("type")->Arg(1)->Arg(2)->Arg(0);

void OneByOne(benchmark::State& state)
{
    CInclineSensor_Position sensor;
    sensor.SetSensorType(static_cast<int>(state.range(0)));
    sensor.SetMagneticCorrectPar_A(kCorrection);
    sensor.SetMagneticCorrectPar_B(kCorrection);
    sensor.SetMagneticBiasAngle_A(kBias);
    sensor.SetMagneticBiasAngle_B(kBias);
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        PoseSensorData sample = Samples()[i++ % kSamples];
        sensor.CalculateYaw_A(sample);
        sensor.CalculateYaw_B(sample);
        benchmark::DoNotOptimize(sample);
    }
}
BENCHMARK(OneByOne)->ArgName("type")->Arg(1)->Arg(2)->Arg(0);

void Literal(benchmark::State& state)
{
    literal::Setup setup;
    setup.sensorType = static_cast<int>(state.range(0));
    setup.parA = kCorrection;
    setup.parB = kCorrection;
    setup.biasA = kBias;
    setup.biasB = kBias;
    literal::State kept;
    auto samples = Samples();
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        xyhCoordinate point{238539.98, 650134.99, 114.51};
        PoseSensorData& sample = samples[i++ % kSamples];
        benchmark::DoNotOptimize(literal::Position(setup, kept, sample, kPoleLength, point));
        benchmark::DoNotOptimize(point);
    }
}
BENCHMARK(Literal)->ArgName("type")->Arg(1)->Arg(2)->Arg(0);

// What the library calls of a measurement are given for one sample.
struct Arguments
{
    double pitch, roll; // [rad]
    survey::LevelledField fieldA, fieldB;
    double tiltCosine, projectionCosine;
};

std::array<Arguments, kSamples> ArgumentsOf(int sensorType)
{
    literal::Setup setup;
    setup.sensorType = sensorType;
    std::array<Arguments, kSamples> arguments;
    for (std::size_t i = 0; i < kSamples; ++i) {
        const PoseSensorData& s = Samples()[i];
        const survey::Pose pose = survey::PoseOf(s.dPitch, s.dRoll);
        const survey::SensorAxes axes = survey::AxesOf(sensorType);
        const survey::Reading a = survey::ReadingOf(s, Magnetometer::A);
        const survey::Reading b = survey::ReadingOf(s, Magnetometer::B);
        const literal::Result written = literal::Measure(setup, s, kPoleLength, {});
        arguments[i] = {
            survey::Deg2Rad(s.dPitch),
            survey::Deg2Rad(s.dRoll),
            survey::Levelled(pose, survey::Corrected(kCorrection, a), axes),
            positioning::LevelledOf(pose, survey::Corrected(kCorrection, b), Magnetometer::B, axes),
            survey::ClampToUnit(written.quotient),
            survey::ClampToUnit(written.cosine[0])};
    }
    return arguments;
}

// Sine and cosine of pitch and roll, two headings, the tilt direction, the projection. The
// arguments lie ready: none waits for the result of another, as those of a measurement do.
void Trigonometry(benchmark::State& state)
{
    const bool asWritten = state.range(0) == 6;
    const auto arguments = ArgumentsOf(static_cast<int>(state.range(1)));
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        const Arguments& s = arguments[i++ % kSamples];
        benchmark::DoNotOptimize(std::sin(s.pitch) + std::cos(s.pitch));
        benchmark::DoNotOptimize(std::sin(s.roll) + std::cos(s.roll));
        if (!asWritten) continue;
        benchmark::DoNotOptimize(std::acos(s.tiltCosine));
        for (const survey::LevelledField& field : {s.fieldA, s.fieldB})
            benchmark::DoNotOptimize(std::atan2(-field.rightward, field.forward));
        benchmark::DoNotOptimize(std::acos(s.projectionCosine));
    }
}
BENCHMARK(Trigonometry)
    ->ArgNames({"calls", "type"})
    ->Args({2, 1})
    ->Args({6, 1})
    ->Args({2, 2})
    ->Args({6, 2});

} // namespace
