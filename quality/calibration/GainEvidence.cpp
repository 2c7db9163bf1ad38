// SPDX-License-Identifier: MIT
#include "quality/calibration/GainEvidence.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

// Found by simulation: docs/calibration-quality.md, "Faults in the field".
constexpr double kOfReadings = 0.6; // heading error by difference of the readings, level field
constexpr double kOfDip = 0.6;      // by degree of difference in the change of the dip, level field
constexpr double kOfLength = 8.0;   // degrees by difference in the ratio of the lengths
constexpr double kOfLevel = 34.0;   // degrees by change of the level part, as a share of it
constexpr double kLikeAField = 4.0; // a level part that changes by less than so many times what the
                                    // vertical part does is the field's

constexpr int kWaves = 5; // a constant, one and two waves over the turn

using Wave = Eigen::Matrix<double, kWaves, 1>;

Wave WaveAt(double angle)
{
    Wave wave;
    wave << 1.0, std::cos(angle), std::sin(angle), std::cos(2.0 * angle), std::sin(2.0 * angle);
    return wave;
}

// B's reading along the axes of A.
Eigen::Vector3d AlongA(const Eigen::Vector3d& b)
{
    return {-b.x(), -b.y(), b.z()};
}

// RMS length of the difference of two fits' readings over the vertical turn, less what noise alone
// would leave in the waves that fit it best. In parts of the field.
double SystematicDifference(const std::vector<PoseSensorData>& vertical, const JointModel& model)
{
    Eigen::Matrix<double, kWaves, kWaves> normal = Eigen::Matrix<double, kWaves, kWaves>::Zero();
    Eigen::Matrix<double, kWaves, 3> right = Eigen::Matrix<double, kWaves, 3>::Zero();
    double all = 0.0;
    for (const PoseSensorData& s : vertical) {
        const Eigen::Vector3d a =
            model.a.correction(VectorOf(ReadingOf(s, Magnetometer::A))) / model.a.lengthRatio;
        const Eigen::Vector3d b =
            model.b.correction(VectorOf(ReadingOf(s, Magnetometer::B))) / model.b.lengthRatio;
        const Wave wave = WaveAt(std::atan2(a.x(), a.z()));
        const Eigen::Vector3d off = AlongA(b) - a;
        normal += wave * wave.transpose();
        right += wave * off.transpose();
        all += off.squaredNorm();
    }
    // The sum of squares of the fitted waves is what least squares take off the whole.
    const double fitted = (right.transpose() * normal.ldlt().solve(right)).trace();
    const double count = static_cast<double>(vertical.size());
    const double noise = kWaves * (all - fitted) / std::max(count - kWaves, 1.0);
    return std::sqrt(std::max(fitted - noise, 0.0) / std::max(count, 1.0));
}

double DipOf(double elevation)
{
    return std::asin(std::clamp(-elevation, -1.0, 1.0)) * kDegreesPerRadian;
}

double DipChangeOf(const SphereFit& fit)
{
    return DipOf(fit.elevationVertical) - DipOf(fit.elevationHorizontal);
}

// By which share the level part and the vertical part of the field are longer in the vertical turn.
struct PartChange
{
    double level;
    double vertical;
};

PartChange PartChangeOf(const SphereFit& fit)
{
    // A part so small says nothing of its share.
    constexpr double kLeastPart = 0.1;
    const auto change = [&](double before, double after) {
        return (fit.lengthRatio * after - before) / std::max(before, kLeastPart);
    };
    const double before = std::min(std::fabs(fit.elevationHorizontal), 1.0);
    const double after = std::min(std::fabs(fit.elevationVertical), 1.0);
    return {change(std::sqrt(1.0 - before * before), std::sqrt(1.0 - after * after)),
            change(before, after)};
}

} // namespace

GainEvidence GainEvidenceOf(const CalibrationTurns& turns, int sensorType, const JointModel& model)
{
    constexpr double kSteepest = 0.98; // sine of the elevation, 78.5 degrees
    const double sine = std::min(std::fabs(model.a.elevationHorizontal), kSteepest);
    const double level = std::sqrt(1.0 - sine * sine);
    const double readings =
        SystematicDifference(KeptBy(model, turns, sensorType).vertical, model) * kDegreesPerRadian;
    const double dip = DipChangeOf(model.a) - DipChangeOf(model.b);
    const double length = model.a.lengthRatio - model.b.lengthRatio;
    const PartChange a = PartChangeOf(model.a);
    const PartChange b = PartChangeOf(model.b);
    const double levelChange = std::fabs(a.level + b.level) / 2.0;
    const double verticalChange = std::fabs(a.vertical + b.vertical) / 2.0;
    GainEvidence evidence;
    evidence.apart =
        std::hypot(kOfReadings * readings / level, kOfDip * dip / level, kOfLength * length);
    evidence.alike = kOfLevel * std::max(0.0, levelChange - kLikeAField * verticalChange);
    return evidence;
}

} // namespace tiltpole::quality
