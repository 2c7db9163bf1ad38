// SPDX-License-Identifier: MIT
//
// A complementary filter with the tip of the pole, on Eigen.
#include "benchmarks/PeerName.h"
#include "benchmarks/positioning/PoseSamples.h"

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>

namespace {

using namespace poses;

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
BENCHMARK(FusionStep)->Name(TILTPOLE_PEER("FusionStep"));

} // namespace
