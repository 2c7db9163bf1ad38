// SPDX-License-Identifier: MIT
#include "field/spot/Iron.h"

#include "survey/Angle.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Vector3d;

namespace {

constexpr int kField = 0;
constexpr int kHard = 3;
constexpr int kSoft = 6; // by columns
constexpr int kSize = 15;
constexpr int kPasses = 8;
constexpr double kWideSoft = 0.05;    // sigma of each element of E before
constexpr double kFixed = 1e-7;       // sigma of E(0, 0)
constexpr double kIndependent = 0.1;  // time after which errors of readings are new [s]
constexpr double kLeastNoise = 0.001; // of a reading, relative to the field

using IronRow = Eigen::Matrix<double, 3, kSize>;
using IronNormal = Eigen::Matrix<double, kSize, kSize>;
using IronVector = Eigen::Matrix<double, kSize, 1>;

Matrix3d MountingOf(int which)
{
    return which == 0 ? Matrix3d(Matrix3d::Identity())
                      : Matrix3d(Vector3d(-1.0, -1.0, 1.0).asDiagonal());
}

// Adds E(row, column)·seen[column] for the nine elements.
void SetSoft(IronRow& jacobian, const Vector3d& seen)
{
    for (int column = 0; column < 3; ++column)
        jacobian.middleCols<3>(kSoft + 3 * column) = seen[column] * Matrix3d::Identity();
}

// The linear start: no soft iron.
void Start(const std::vector<SpotReading>& readings, const MotionFit& motion, int which, Iron& iron)
{
    const Matrix3d mounting = MountingOf(which);
    Eigen::Matrix<double, 6, 6> normal = Eigen::Matrix<double, 6, 6>::Zero();
    Eigen::Matrix<double, 6, 1> right = Eigen::Matrix<double, 6, 1>::Zero();
    for (std::size_t i = 0; i < readings.size(); ++i) {
        const Vector3d& raw = readings[i].magnetic[static_cast<std::size_t>(which)];
        if (raw.isZero(0.0)) continue;
        Eigen::Matrix<double, 3, 6> row;
        row << mounting * motion.PoseAt(i).attitude.transpose(), Matrix3d::Identity();
        normal += row.transpose() * row;
        right += row.transpose() * raw;
    }
    const Eigen::Matrix<double, 6, 1> start = normal.ldlt().solve(right);
    iron.field = start.head<3>();
    iron.hard = start.tail<3>();
}

// What of the covariance of the attitude goes over.
IronNormal ByAttitude(const IronNormal& cofactor,
                      const Eigen::Matrix<double, kSize, spot::kTurning>& mixed,
                      const MotionFit& motion)
{
    const Eigen::Matrix<double, spot::kTurning, spot::kTurning> turning =
        motion.Covariance().block<spot::kTurning, spot::kTurning>(spot::kTurn, spot::kTurn);
    const Eigen::Matrix<double, kSize, spot::kTurning> gain = cofactor * mixed;
    return gain * turning * gain.transpose();
}

} // namespace

Iron IronOf(const std::vector<SpotReading>& readings, const MotionFit& motion, int which)
{
    Iron iron;
    const Matrix3d mounting = MountingOf(which);
    const auto used = std::ranges::count_if(readings, [which](const SpotReading& reading) {
        return !reading.magnetic[static_cast<std::size_t>(which)].isZero(0.0);
    });
    if (used < 10) return iron;
    Start(readings, motion, which, iron);
    const double span = readings.back().time - readings.front().time;
    const double share = std::min(1.0, (span / kIndependent + 1.0) / static_cast<double>(used));
    double noise = 0.01 * iron.field.norm();
    for (int pass = 0; pass < kPasses; ++pass) {
        IronNormal normal = IronNormal::Zero();
        IronVector right = IronVector::Zero();
        Eigen::Matrix<double, kSize, spot::kTurning> mixed =
            Eigen::Matrix<double, kSize, spot::kTurning>::Zero();
        double squares = 0.0;
        const double weight = share / (noise * noise);
        for (std::size_t i = 0; i < readings.size(); ++i) {
            const Vector3d& raw = readings[i].magnetic[static_cast<std::size_t>(which)];
            if (raw.isZero(0.0)) continue;
            const SpotPose pose = motion.PoseAt(i);
            const Matrix3d toSensor = mounting * pose.attitude.transpose();
            const Vector3d seen = toSensor * iron.field;
            const Vector3d residual = iron.soft * seen + iron.hard - raw;
            IronRow row = IronRow::Zero();
            row.middleCols<3>(kField) = iron.soft * toSensor;
            row.middleCols<3>(kHard).setIdentity();
            SetSoft(row, seen);
            normal += weight * row.transpose() * row;
            right -= weight * row.transpose() * residual;
            squares += residual.squaredNorm();
            mixed += weight * row.transpose()
                     * (iron.soft * toSensor * Skew(iron.field) * pose.Turning());
        }
        for (int k = 0; k < 9; ++k) {
            const double sigma = k == 0 ? kFixed : kWideSoft;
            const double value = iron.soft(k % 3, k / 3) - (k % 4 == 0 ? 1.0 : 0.0);
            normal(kSoft + k, kSoft + k) += 1.0 / (sigma * sigma);
            right[kSoft + k] -= value / (sigma * sigma);
        }
        const Eigen::LDLT<IronNormal> solver(normal);
        const IronVector step = solver.solve(right);
        if (!step.allFinite()) return iron;
        iron.field += step.segment<3>(kField);
        iron.hard += step.segment<3>(kHard);
        iron.soft += Eigen::Map<const Matrix3d>(step.data() + kSoft);
        iron.residual = std::sqrt(squares / (3.0 * static_cast<double>(used)));
        noise = std::max(iron.residual, kLeastNoise * iron.field.norm());
        const IronNormal cofactor = solver.solve(IronNormal::Identity());
        iron.covariance = cofactor + ByAttitude(cofactor, mixed, motion);
    }
    iron.solved = iron.covariance.allFinite();
    return iron;
}

// T·raw − c = axesᵀ·Z·Rᵀ·m' with T lower triangular and T(0, 0) = 1, linear in T, c and m'. The raw
// readings are those that the iron makes of `field`.
IronCorrection CorrectionOf(const Iron& iron, const Matrix3d& axes, int which)
{
    constexpr int kUnknown = 11; // a b, c d e, x0 y0 z0, m'
    Eigen::Matrix<double, kUnknown, kUnknown> normal =
        Eigen::Matrix<double, kUnknown, kUnknown>::Zero();
    Eigen::Matrix<double, kUnknown, 1> right = Eigen::Matrix<double, kUnknown, 1>::Zero();
    for (int lean = 0; lean <= 25; lean += 5) {
        for (int towards = 0; towards < 360; towards += 45) {
            for (int spin = 0; spin < 360; spin += 30) {
                const Matrix3d attitude = (Exp(survey::Deg2Rad(towards) * Vector3d::UnitZ())
                                           * Exp(survey::Deg2Rad(lean) * Vector3d::UnitY())
                                           * Exp(survey::Deg2Rad(spin) * Vector3d::UnitZ()))
                                              .toRotationMatrix();
                const Matrix3d toSensor = MountingOf(which) * attitude.transpose();
                const Vector3d raw =
                    axes.transpose() * (iron.soft * toSensor * iron.field + iron.hard);
                Eigen::Matrix<double, 3, kUnknown> row = Eigen::Matrix<double, 3, kUnknown>::Zero();
                row.row(1).segment<2>(0) = raw.head<2>();
                row.row(2).segment<3>(2) = raw;
                row.middleCols<3>(5) = -Matrix3d::Identity();
                row.middleCols<3>(8) = -axes.transpose() * toSensor;
                normal += row.transpose() * row;
                right -= row.row(0).transpose() * raw.x();
            }
        }
    }
    const Eigen::Matrix<double, kUnknown, 1> found = normal.ldlt().solve(right);
    IronCorrection correction;
    correction.values.a = found[0];
    correction.values.b = found[1];
    correction.values.c = found[2];
    correction.values.d = found[3];
    correction.values.e = found[4];
    correction.values.x0 = found[5];
    correction.values.y0 = found[6];
    correction.values.z0 = found[7];
    correction.field = found.tail<3>();
    return correction;
}

} // namespace tiltpole::field
