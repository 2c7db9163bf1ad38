// SPDX-License-Identifier: MIT
#include "quality/calibration/EightValues.h"

#include <Eigen/Cholesky>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr int kHeadings = 24; // every 15 degrees
constexpr int kLeans = 8;     // directions of the lean, every 45 degrees
constexpr int kMostSteps = 20;
constexpr double kSmallStep = 1e-9; // of unknowns near one

// x0, y0, z0, a, b, c, d, e in the scale of the field, and the bias angle in radians.
using Values = Eigen::Matrix<double, 9, 1>;

// What the raw magnetometer reads when the reference correction finds the field of the pose, in
// units of the reference's x sensitivity so that all unknowns are near one.
struct Target
{
    Eigen::Vector3d reading;
    const Pose* pose;
};

Eigen::Vector3d Corrected(const Values& q, const Eigen::Vector3d& r)
{
    return {r.x() - q[0], q[3] * r.x() + q[4] * r.y() - q[1],
            q[5] * r.x() + q[6] * r.y() + q[7] * r.z() - q[2]};
}

struct Slopes
{
    double residual; // [radians]
    Values row;
};

Slopes SlopesAt(const Values& q, const Target& target)
{
    const LevelFrame& frame = target.pose->frame;
    const Eigen::Vector3d& r = target.reading;
    const Eigen::Vector3d c = Corrected(q, r);
    const double heading = frame.Heading(c) / kDegreesPerRadian - q[8];
    const double off = heading - target.pose->heading / kDegreesPerRadian;
    const Eigen::Vector3d g = frame.HeadingSlope(c);
    Values row;
    row << -g.x(), -g.y(), -g.z(), g.y() * r.x(), g.y() * r.y(), g.z() * r.x(), g.z() * r.y(),
        g.z() * r.z(), -1.0;
    return {Wrapped(off * kDegreesPerRadian) / kDegreesPerRadian, row};
}

double CostOf(const Values& q, const std::vector<Target>& targets)
{
    double cost = 0.0;
    for (const Target& t : targets) {
        const double off = SlopesAt(q, t).residual;
        cost += t.pose->weight * off * off;
    }
    return cost;
}

Values StartOf(const Eigen::Matrix3d& m, const Eigen::Vector3d& center)
{
    Values q;
    const double a = m(1, 0);
    const double b = m(1, 1);
    q << center.x(), a * center.x() + b * center.y(), m.row(2).dot(center), a, b, m(2, 0), m(2, 1),
        m(2, 2), 0.0;
    return q;
}

Values Minimized(Values q, const std::vector<Target>& targets)
{
    double damping = 1e-6;
    double cost = CostOf(q, targets);
    for (int step = 0; step < kMostSteps; ++step) {
        Eigen::Matrix<double, 9, 9> normal = Eigen::Matrix<double, 9, 9>::Zero();
        Values gradient = Values::Zero();
        for (const Target& t : targets) {
            const Slopes s = SlopesAt(q, t);
            normal.selfadjointView<Eigen::Lower>().rankUpdate(s.row, t.pose->weight);
            gradient += t.pose->weight * s.residual * s.row;
        }
        Eigen::Matrix<double, 9, 9> damped = normal.selfadjointView<Eigen::Lower>();
        damped.diagonal() *= 1.0 + damping;
        const Values change = damped.ldlt().solve(gradient);
        const double trial = CostOf(q - change, targets);
        if (trial <= cost) {
            q -= change;
            cost = trial;
            damping *= 0.1;
            if (change.norm() < kSmallStep) break;
        } else {
            damping = std::max(damping * 100.0, 1e-6);
        }
    }
    return q;
}

} // namespace

std::vector<Pose> HeadingGrid(int sensorType, Magnetometer which)
{
    std::vector<Pose> grid;
    for (int tilt = 0; tilt < 3; ++tilt) {
        const int leans = tilt == 0 ? 1 : kLeans;
        for (int lean = 0; lean < leans; ++lean) {
            const LevelFrame frame =
                FrameOfLean(kTilts[tilt], lean * 360.0 / kLeans, sensorType, which);
            for (int i = 0; i < kHeadings; ++i) {
                grid.push_back(
                    {frame, i * 360.0 / kHeadings, 1.0 / (3.0 * leans * kHeadings), tilt});
            }
        }
    }
    return grid;
}

FullCorrection FullOf(const Incline_MagneticCorrectParameter& v)
{
    FullCorrection full;
    full.matrix << 1.0, 0.0, 0.0, v.a, v.b, 0.0, v.c, v.d, v.e;
    full.offset = {v.x0, v.y0, v.z0};
    return full;
}

HeadingDifference Compare(const FullCorrection& judged, double biasAngle,
                          const FullCorrection& reference, double elevation,
                          const std::vector<Pose>& grid)
{
    const Eigen::Matrix3d inverse = reference.matrix.inverse();
    HeadingDifference difference;
    for (const Pose& pose : grid) {
        const Eigen::Vector3d field = pose.frame.Field(pose.heading, elevation);
        const Eigen::Vector3d corrected = judged(inverse * (field + reference.offset));
        const double off = Wrapped(pose.frame.Heading(corrected) - biasAngle - pose.heading);
        difference.rms += pose.weight * off * off;
        difference.rmsAt[pose.tilt] += 3.0 * pose.weight * off * off;
        difference.mean += pose.weight * off;
    }
    difference.rms = std::sqrt(difference.rms);
    for (double& rms : difference.rmsAt)
        rms = std::sqrt(rms);
    return difference;
}

HeadingUncertainty UncertaintyOf(const FullCorrection& fit, const CorrectionCovariance& covariance,
                                 double elevation, const std::vector<Pose>& grid)
{
    using Slopes = Eigen::Matrix<double, 12, 1>;
    const Eigen::Matrix3d inverse = fit.matrix.inverse();
    Slopes mean = Slopes::Zero();
    double all = 0.0;
    for (const Pose& pose : grid) {
        const Eigen::Vector3d field = pose.frame.Field(pose.heading, elevation);
        const Eigen::Vector3d reading = inverse * (field + fit.offset);
        const Eigen::Vector3d g = pose.frame.HeadingSlope(field);
        Slopes slopes;
        slopes << g.x() * reading, g.y() * reading, g.z() * reading, -g;
        mean += pose.weight * slopes;
        all += pose.weight * slopes.dot(covariance * slopes);
    }
    const double constant = mean.dot(covariance * mean);
    return {std::sqrt(constant) * kDegreesPerRadian,
            std::sqrt(std::max(all - constant, 0.0)) * kDegreesPerRadian};
}

std::optional<EightValues> Reduced(const FullCorrection& full, double elevation,
                                   const std::vector<Pose>& grid)
{
    const double scale = full.matrix(0, 0);
    const Eigen::Matrix3d m = full.matrix / scale;
    const Eigen::Matrix3d inverse = m.inverse();
    const Eigen::Vector3d center = inverse * full.offset;
    std::vector<Target> targets;
    targets.reserve(grid.size());
    for (const Pose& pose : grid) {
        const Eigen::Vector3d field = pose.frame.Field(pose.heading, elevation);
        targets.push_back({inverse * (field + full.offset), &pose});
    }
    const Values q = Minimized(StartOf(m, center), targets);
    if (!q.allFinite()) return {};
    EightValues reduced;
    Incline_MagneticCorrectParameter& v = reduced.values;
    v.x0 = q[0] / scale;
    v.y0 = q[1] / scale;
    v.z0 = q[2] / scale;
    v.a = q[3];
    v.b = q[4];
    v.c = q[5];
    v.d = q[6];
    v.e = q[7];
    reduced.biasAngle = Wrapped(q[8] * kDegreesPerRadian);
    return reduced;
}

} // namespace tiltpole::quality
