// SPDX-License-Identifier: MIT
//
// Two tilt-compensated compasses on Eigen: corrections as matrices, the readings turned level by a
// rotation of pitch and roll, each for itself. They know no stillness, interference or tilt
// direction.
#include "benchmarks/PeerName.h"
#include "benchmarks/positioning/PoseSamples.h"

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>

namespace {

using namespace poses;

constexpr double kDegree = 3.141592653589793 / 180.0;

class Compass
{
public:
    Compass()
    {
        m_scale << 1, 0, 0, 0.01, 1.03, 0, -0.02, 0.005, 0.98;
        m_offset << 3.5, -2.25, 8.0;
    }

    double Heading(double pitch, double roll, const Eigen::Vector3d& raw) const
    {
        const Eigen::Vector3d corrected = m_scale * raw - m_offset;
        const Eigen::Matrix3d level =
            (Eigen::AngleAxisd(pitch * kDegree, Eigen::Vector3d::UnitY())
             * Eigen::AngleAxisd(roll * kDegree, Eigen::Vector3d::UnitX()))
                .toRotationMatrix();
        const Eigen::Vector3d field = level * corrected;
        const double heading = std::atan2(field.y(), field.x()) / kDegree - 0.75;
        return heading < 0.0 ? heading + 360.0 : heading;
    }

private:
    Eigen::Matrix3d m_scale;
    Eigen::Vector3d m_offset;
};

void TwoCompasses(benchmark::State& state)
{
    const Compass compass;
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        PoseSensorData s = Samples()[i++ % kSamples];
        s.dYaw = compass.Heading(s.dPitch, s.dRoll, {s.dMag_x, s.dMag_y, s.dMag_z});
        s.dYaw_2 = compass.Heading(-s.dPitch, -s.dRoll, {s.dMag_x_2, s.dMag_y_2, s.dMag_z_2});
        benchmark::DoNotOptimize(s);
    }
}
BENCHMARK(TwoCompasses)->Name(TILTPOLE_PEER("TwoCompasses"));

} // namespace
