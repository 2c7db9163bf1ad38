// SPDX-License-Identifier: MIT
#include "quality/calibration/Swing.h"

#include "quality/calibration/FieldModel.h"
#include "quality/calibration/TurnGeometry.h"
#include "quality/statistics/Statistics.h"
#include "survey/Angle.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr double kLeastTurning = 3.0; // RMS of the gyros; less are none [degrees/s]
constexpr double kLeastAlongAxis =
    0.85; // cosine of the gyros' axis from the turn's: else the gyros
          // are not in the sensor's axes

using Samples = std::vector<PoseSensorData>;

Eigen::Vector3d AccelerationAt(const PoseSensorData& s)
{
    return {s.dAcc_x, s.dAcc_y, s.dAcc_z};
}

bool HasAccelerations(const Samples& samples)
{
    bool any = false;
    for (const PoseSensorData& s : samples) {
        const Eigen::Vector3d a = AccelerationAt(s);
        if (!a.allFinite()) return false;
        any = any || !a.isZero(0.0);
    }
    return any;
}

bool IsOff(const PoseSensorData& s)
{
    return std::fabs(AccelerationAt(s).norm() - 1.0) > kMostOff;
}

// The direction of the turn as a whole: what a wobble turns comes back.
std::optional<Eigen::Vector3d> GyroAxis(const Samples& samples, TurnAxis axis)
{
    Eigen::Vector3d mean = Eigen::Vector3d::Zero();
    for (const PoseSensorData& s : samples)
        mean += Eigen::Vector3d(s.dGyro_x, s.dGyro_y, s.dGyro_z);
    mean /= static_cast<double>(samples.size());
    if (!mean.allFinite() || !(mean.norm() > kLeastTurning)) return {};
    const Eigen::Vector3d direction = mean.normalized();
    const double along = axis == TurnAxis::Vertical ? direction.y() : direction.z();
    if (std::fabs(along) < kLeastAlongAxis) return {};
    return direction;
}

// The part of the accelerations that does not go round with the angle turned, the angle by the raw
// readings of A in the plane of the turn.
Eigen::Vector3d ConstantPart(const Samples& samples, TurnAxis axis)
{
    std::vector<Eigen::Vector2d> points;
    points.reserve(samples.size());
    for (const PoseSensorData& s : samples)
        points.emplace_back(s.dMag_x, axis == TurnAxis::Vertical ? s.dMag_z : s.dMag_y);
    const Circle circle = CircleThrough(points);
    Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
    Eigen::Matrix3d right = Eigen::Matrix3d::Zero(); // a column for each axis of the acceleration
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Eigen::Vector2d out = (points[i] - Eigen::Vector2d(circle.u, circle.v)).normalized();
        const Eigen::Vector3d row(1.0, out.x(), out.y());
        normal += row * row.transpose();
        right += row * AccelerationAt(samples[i]).transpose();
    }
    return normal.ldlt().solve(right).row(0).transpose();
}

} // namespace

std::optional<TurnAcceleration> AccelerationOf(const Samples& samples, TurnAxis axis)
{
    if (!HasAccelerations(samples)) return {};
    TurnAcceleration acceleration;
    std::vector<double> lengths;
    lengths.reserve(samples.size());
    for (const PoseSensorData& s : samples)
        lengths.push_back(AccelerationAt(s).norm());
    acceleration.length = Median(std::move(lengths));
    acceleration.leftOut = static_cast<double>(std::count_if(samples.begin(), samples.end(), IsOff))
                           / static_cast<double>(samples.size());
    if (const std::optional<Eigen::Vector3d> n = GyroAxis(samples, axis)) {
        const Eigen::Vector3d constant = ConstantPart(samples, axis);
        const double outward = (constant - constant.dot(*n) * *n).norm();
        if (std::isfinite(outward)) acceleration.outward = outward;
    }
    return acceleration;
}

double ApparentTilt(const std::optional<TurnAcceleration>& acceleration)
{
    if (!acceleration || !acceleration->outward) return 0.0;
    return std::atan(std::max(0.0, *acceleration->outward - kSteady)) * survey::kDegreesPerRadian;
}

bool IsSwung(const std::optional<TurnAcceleration>& acceleration)
{
    return acceleration
           && (acceleration->leftOut > kMostLeftOut
               || std::fabs(acceleration->length - 1.0) > kMostOffMedian
               || acceleration->outward.value_or(0.0) > kMostOutward);
}

CalibrationTurns WithoutSwing(const CalibrationTurns& turns)
{
    CalibrationTurns steady = turns;
    for (Samples* samples : {&steady.horizontal, &steady.vertical}) {
        if (HasAccelerations(*samples)) std::erase_if(*samples, IsOff);
    }
    return steady;
}

} // namespace tiltpole::quality
