// SPDX-License-Identifier: MIT
#include "quality/calibration/TurnSense.h"

#include "quality/calibration/LevelFrame.h"

#include <Eigen/Geometry>

#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr std::size_t kReach = 2;     // samples to either side, over which a change is taken
constexpr double kUsableSense = 0.5;  // correlation
constexpr double kGreatestStep = 1.0; // of a unit vector: beyond, the way between is not known

// B sees x and y of the sensor's axes negated.
Eigen::Vector3d RateOf(const PoseSensorData& s, survey::Magnetometer axes)
{
    const double sign = axes == survey::Magnetometer::A ? 1.0 : -1.0;
    return {sign * s.dGyro_x, sign * s.dGyro_y, s.dGyro_z};
}

} // namespace

double SenseOf(const std::vector<PoseSensorData>& samples,
               const std::vector<Eigen::Vector3d>& vectors, survey::Magnetometer axes)
{
    double both = 0.0;
    double seen = 0.0;
    double expected = 0.0;
    for (std::size_t i = kReach; i + kReach < samples.size(); ++i) {
        const Eigen::Vector3d change = vectors[i + kReach] - vectors[i - kReach];
        if (!(change.norm() < kGreatestStep * vectors[i].norm())) continue;
        const Eigen::Vector3d turned = vectors[i].cross(RateOf(samples[i], axes));
        if (!turned.allFinite()) continue;
        both += change.dot(turned);
        seen += change.squaredNorm();
        expected += turned.squaredNorm();
    }
    return seen > 0.0 && expected > 0.0 ? both / std::sqrt(seen * expected) : 0.0;
}

bool RateIsUsable(const std::vector<PoseSensorData>& vertical, int sensorType)
{
    std::vector<Eigen::Vector3d> ups;
    ups.reserve(vertical.size());
    for (const PoseSensorData& s : vertical)
        ups.push_back(FrameOf(s.dPitch, s.dRoll, sensorType, Magnetometer::A).up);
    return SenseOf(vertical, ups, Magnetometer::A) > kUsableSense;
}

} // namespace tiltpole::quality
