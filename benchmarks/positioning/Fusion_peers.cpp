// SPDX-License-Identifier: MIT
//
// A complementary filter with the tip of the pole, on Eigen, in doubles and in floats.
#include "benchmarks/PeerName.h"
#include "benchmarks/positioning/PoseSamples.h"

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>

namespace {

using namespace poses;

// One step of a complementary filter on a quaternion (Mahony, Hamel, Pflimlin, IEEE Trans. Autom.
// Control 53 (2008) 1203): the rate is corrected by how far the measured gravity and field lie from
// the expected, then integrated; the pole's end follows from the turned axis.
template <class T>
class Fusion
{
    using Vector = Eigen::Matrix<T, 3, 1>;

public:
    Eigen::Vector3d Step(const PoseSensorData& s, const Eigen::Vector3d& antenna)
    {
        const Vector up = Of(s.dAcc_x, s.dAcc_y, s.dAcc_z).normalized();
        const Vector field = Of(s.dMag_x, s.dMag_y, s.dMag_z).normalized();
        const Eigen::Matrix<T, 3, 3> toWorld = m_turn.toRotationMatrix();
        const Vector h = toWorld * field;
        const Vector reference(std::hypot(h.x(), h.y()), T(0), h.z());
        const Vector error =
            up.cross(toWorld.transpose().col(2)) + field.cross(toWorld.transpose() * reference);
        m_drift += kIntegral * kStep * error;
        const Vector rate = Of(s.dGyro_x, s.dGyro_y, s.dGyro_z) + kProportional * error + m_drift;
        const Eigen::Quaternion<T> change =
            m_turn * Eigen::Quaternion<T>(T(0), rate.x(), rate.y(), rate.z());
        m_turn.coeffs() += T(0.5) * kStep * change.coeffs();
        m_turn.normalize();
        const T heading = std::atan2(h.y(), h.x());
        benchmark::DoNotOptimize(heading);
        return antenna - (m_turn * Vector(T(0), T(0), T(kPoleLength))).template cast<double>();
    }

private:
    static Vector Of(double x, double y, double z) { return Eigen::Vector3d(x, y, z).cast<T>(); }

    static constexpr T kStep = T(0.02); // [s]
    static constexpr T kProportional = T(1);
    static constexpr T kIntegral = T(0.01);
    Eigen::Quaternion<T> m_turn = Eigen::Quaternion<T>::Identity();
    Vector m_drift = Vector::Zero();
};

template <class T>
void FusionStep(benchmark::State& state)
{
    Fusion<T> fusion;
    const auto& samples = Samples();
    const Eigen::Vector3d antenna(238539.98, 650134.99, 114.51);
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        const Eigen::Vector3d tip = fusion.Step(samples[i++ % kSamples], antenna);
        benchmark::DoNotOptimize(tip.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK_TEMPLATE(FusionStep, double)->Name(TILTPOLE_PEER("FusionStep"));
BENCHMARK_TEMPLATE(FusionStep, float)->Name(TILTPOLE_PEER("FusionStepFloat"));

} // namespace
