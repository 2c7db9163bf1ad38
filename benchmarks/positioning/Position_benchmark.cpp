// SPDX-License-Identifier: MIT
//
// Position per sample, beside what it is to be compared with in the same run:
//
//   Literal        the formulas written out one by one (tests/reference/LiteralPosition.h)
//   Trigonometry   bare library calls on the arguments that the measurement has: the six that its
//                  formulas name once all that can be shared is shared, or the five that Position
//                  makes do with (arc tangents of a quotient; the angle of the projection waits
//                  until ConverseYaw asks for it)
//   Fusion         one step of a complementary filter with the same tip arithmetic, on Eigen
//
// Read the ratios, by CPU time; a single number depends on the machine.
#include "positioning/InclineSensor_Position.h"
#include "positioning/detail/Heading.h"
#include "positioning/detail/Tilt.h"
#include "survey/Correction.h"
#include "tests/reference/LiteralPosition.h"

#include <Eigen/Geometry>
#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <random>

namespace positioning = tiltpole::positioning;
namespace survey = tiltpole::survey;
using survey::Magnetometer;

namespace {

constexpr std::size_t kSamples = 1024; // a power of two
constexpr double kPoleLength = 2.0;    // [m]
constexpr double kBias = 0.75;         // [degrees]

// A pole that leans up to 45 degrees in a field of 45 000 nT, read in counts of 100 nT.
std::array<PoseSensorData, kSamples> MakeSamples()
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> lean(-45, 45);
    std::uniform_real_distribution<double> field(-450, 450);
    std::array<PoseSensorData, kSamples> samples;
    for (PoseSensorData& s : samples) {
        s.dPitch = lean(random);
        s.dRoll = lean(random);
        s.dGyro_x = field(random) / 450;
        s.dGyro_y = field(random) / 450;
        s.dGyro_z = field(random) / 450;
        s.dAcc_x = std::sin(s.dPitch / 57.3);
        s.dAcc_y = std::sin(s.dRoll / 57.3);
        s.dAcc_z = std::cos(s.dRoll / 57.3);
        s.dMag_x = field(random);
        s.dMag_y = field(random);
        s.dMag_z = field(random);
        s.dMag_x_2 = -s.dMag_x + 0.1 * field(random);
        s.dMag_y_2 = -s.dMag_y + 0.1 * field(random);
        s.dMag_z_2 = s.dMag_z + 0.1 * field(random);
    }
    return samples;
}

const std::array<PoseSensorData, kSamples>& Samples()
{
    static const auto samples = MakeSamples();
    return samples;
}

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
        benchmark::DoNotOptimize(std::acos(s.tiltCosine));
        for (const survey::LevelledField& field : {s.fieldA, s.fieldB}) {
            const double right = -field.rightward;
            benchmark::DoNotOptimize(asWritten ? std::atan2(right, field.forward)
                                               : std::atan(right / field.forward));
        }
        if (asWritten) benchmark::DoNotOptimize(std::acos(s.projectionCosine));
    }
}
BENCHMARK(Trigonometry)
    ->ArgNames({"calls", "type"})
    ->Args({5, 1})
    ->Args({6, 1})
    ->Args({5, 2})
    ->Args({6, 2});

// One step of a complementary filter on a quaternion (Mahony, Hamel, Pflimlin, IEEE Trans. Autom.
// Control 53 (2008) 1203): the rate is corrected by how far the measured gravity and field lie from
// the expected, then integrated; the pole's end follows from the turned axis.
class Fusion
{
public:
    Eigen::Vector3d Step(const PoseSensorData& s, const Eigen::Vector3d& antenna)
    {
        const Eigen::Vector3d up = Eigen::Vector3d(s.dAcc_x, s.dAcc_y, s.dAcc_z).normalized();
        const Eigen::Vector3d field = Eigen::Vector3d(s.dMag_x, s.dMag_y, s.dMag_z).normalized();
        const Eigen::Matrix3d toWorld = m_turn.toRotationMatrix();
        const Eigen::Vector3d h = toWorld * field;
        const Eigen::Vector3d reference(std::hypot(h.x(), h.y()), 0.0, h.z());
        const Eigen::Vector3d error =
            up.cross(toWorld.transpose().col(2)) + field.cross(toWorld.transpose() * reference);
        m_drift += kIntegral * kStep * error;
        const Eigen::Vector3d rate =
            Eigen::Vector3d(s.dGyro_x, s.dGyro_y, s.dGyro_z) + kProportional * error + m_drift;
        const Eigen::Quaterniond change =
            m_turn * Eigen::Quaterniond(0.0, rate.x(), rate.y(), rate.z());
        m_turn.coeffs() += 0.5 * kStep * change.coeffs();
        m_turn.normalize();
        const double heading = std::atan2(h.y(), h.x());
        benchmark::DoNotOptimize(heading);
        return antenna - m_turn * Eigen::Vector3d(0.0, 0.0, kPoleLength);
    }

private:
    static constexpr double kStep = 0.02; // [s]
    static constexpr double kProportional = 1.0;
    static constexpr double kIntegral = 0.01;
    Eigen::Quaterniond m_turn = Eigen::Quaterniond::Identity();
    Eigen::Vector3d m_drift = Eigen::Vector3d::Zero();
};

void FusionStep(benchmark::State& state)
{
    Fusion fusion;
    const auto& samples = Samples();
    const Eigen::Vector3d antenna(238539.98, 650134.99, 114.51);
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        const Eigen::Vector3d tip = fusion.Step(samples[i++ % kSamples], antenna);
        benchmark::DoNotOptimize(tip.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FusionStep);

} // namespace
