// SPDX-License-Identifier: MIT
#include "quality/calibration/TiltEvidence.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <array>
#include <cmath>

namespace tiltpole::quality {
namespace {

constexpr std::size_t kThinned = 250; // samples of a turn
constexpr double kRotation = 0.025; // standard deviation of M_ij − M_ji: iron and mounting turn a
                                    // magnetometer by a degree or so
constexpr double kShape = 0.3;      // of the other weights, and of what a turn has of its own
constexpr double kTilt = 3.0;       // of each error of pitch and roll [degrees]
constexpr double kAlike = 2.0;      // readings that count as one: neighbors share their errors
constexpr double kOutlier = 2.5;    // spreads at which a reading has lost three quarters
constexpr double kNudge = 0.01;     // degrees, for slopes in pitch and roll

constexpr int kOfOne = 15; // nine weights, three offsets, two elevations, length in the second turn
constexpr int kErrors = 4; // offset and drift, each of pitch and roll
constexpr int kAll = 2 * kOfOne + kErrors;

using Row = Eigen::Matrix<double, kAll, 1>;
using Square = Eigen::Matrix<double, kAll, kAll>;

struct Equations
{
    Square normal = Square::Zero();
    Row right = Row::Zero();

    void Add(const Row& row, double residual, double weight)
    {
        normal.selfadjointView<Eigen::Lower>().rankUpdate(row, weight);
        right -= weight * residual * row;
    }
};

// One magnetometer's share of the unknowns, and its joint fit in units near one.
struct Part
{
    Magnetometer which;
    const SphereFit& fit;
    int first; // place of its unknowns
    double scale;
};

double ShareOf(double sphere, double elevation, const SphereFit& fit)
{
    const double s = sphere / (kOutlier * std::max(fit.sphereSpread, 1e-4));
    const double e = elevation / (kOutlier * std::max(fit.elevationSpread, 1e-4));
    const double share = 1.0 / (1.0 + s * s + e * e);
    return share * share;
}

// Slopes of the vertical in pitch and in roll [per degree].
std::array<Eigen::Vector3d, 2> UpSlopes(const PoseSensorData& s, int sensorType, Magnetometer which)
{
    const auto up = [&](double pitch, double roll) {
        return FrameOf(s.dPitch + pitch, s.dRoll + roll, sensorType, which).up;
    };
    return {(up(kNudge, 0.0) - up(-kNudge, 0.0)) / (2.0 * kNudge),
            (up(0.0, kNudge) - up(0.0, -kNudge)) / (2.0 * kNudge)};
}

Row RowOf(const Part& part, const Eigen::Vector3d& reading, const Eigen::Vector3d& slope)
{
    Row row = Row::Zero();
    for (int i = 0; i < 3; ++i) {
        row.segment<3>(part.first + 3 * i) = slope[i] * part.scale * reading;
        row[part.first + 9 + i] = -slope[i];
    }
    return row;
}

void AddTurn(const Part& part, const std::vector<PoseSensorData>& samples, int sensorType, int turn,
             Equations& equations)
{
    const double variance = (part.fit.sphereSpread * part.fit.sphereSpread
                             + part.fit.elevationSpread * part.fit.elevationSpread)
                                / 2.0
                            + 1e-8;
    const double elevation = turn == 0 ? part.fit.elevationHorizontal : part.fit.elevationVertical;
    const std::size_t step = samples.size() / kThinned + 1;
    for (std::size_t i = 0; i < samples.size(); i += step) {
        const PoseSensorData& s = samples[i];
        const Eigen::Vector3d reading = VectorOf(ReadingOf(s, part.which));
        const Eigen::Vector3d up = FrameOf(s.dPitch, s.dRoll, sensorType, part.which).up;
        const Eigen::Vector3d field = part.fit.correction(reading);
        const double length = field.norm() - 1.0;
        const double rise = field.dot(up) - elevation;
        const double weight =
            ShareOf(length, rise, part.fit) * static_cast<double>(step) / (kAlike * variance);

        Row sphere = RowOf(part, reading, field.normalized());
        if (turn == 1) sphere[part.first + 14] = -1.0;
        equations.Add(sphere, length, weight);

        Row tilt = RowOf(part, reading, up);
        tilt[part.first + 12 + turn] = -1.0;
        const auto slopes = UpSlopes(s, sensorType, part.which);
        const double time = static_cast<double>(i) / static_cast<double>(samples.size()) - 0.5;
        for (int k = 0; k < 2; ++k) {
            // What is reported lies beside the truth: the true vertical is that of less.
            const double slope = -field.dot(slopes[static_cast<std::size_t>(k)]);
            tilt[2 * kOfOne + k] = slope;
            tilt[2 * kOfOne + 2 + k] = time * slope;
        }
        equations.Add(tilt, rise, weight);
    }
}

// Weights by rows: a rotation is what makes the matrix unsymmetric.
void AddPrior(const Part& part, Equations& equations)
{
    constexpr int kPairs[3][2] = {
        {3, 1},
        {6, 2},
        {7, 5}
    };
    const Eigen::Matrix3d matrix = part.fit.correction.matrix / part.scale;
    for (const auto& pair : kPairs) {
        Row row = Row::Zero();
        row[part.first + pair[0]] = 1.0;
        row[part.first + pair[1]] = -1.0;
        const double off = matrix(pair[0] / 3, pair[0] % 3) - matrix(pair[1] / 3, pair[1] % 3);
        equations.Add(row, off, 1.0 / (kRotation * kRotation));
    }
    for (int i = 0; i < kOfOne; ++i)
        equations.normal(part.first + i, part.first + i) += 1.0 / (kShape * kShape);
}

} // namespace

TiltEvidence TiltEvidenceOf(const ::quality::CalibrationTurns& turns, int sensorType,
                            const JointModel& model)
{
    Equations equations;
    const Part parts[] = {
        {Magnetometer::A, model.a, 0,      model.a.correction.matrix.trace() / 3.0},
        {Magnetometer::B, model.b, kOfOne, model.b.correction.matrix.trace() / 3.0}
    };
    for (const Part& part : parts) {
        AddTurn(part, turns.horizontal, sensorType, 0, equations);
        AddTurn(part, turns.vertical, sensorType, 1, equations);
        AddPrior(part, equations);
    }
    for (int i = 2 * kOfOne; i < kAll; ++i)
        equations.normal(i, i) += 1.0 / (kTilt * kTilt);
    const Square normal = equations.normal.selfadjointView<Eigen::Lower>();
    const auto factors = normal.ldlt();
    const Row solution = factors.solve(equations.right);
    const Square covariance = factors.solve(Square::Identity());
    const auto error = [&](int first) {
        const int at = 2 * kOfOne + first;
        return ::quality::TiltError{solution[at], solution[at + 1], std::sqrt(covariance(at, at)),
                                    std::sqrt(covariance(at + 1, at + 1))};
    };
    TiltEvidence evidence;
    evidence.offset = error(0);
    evidence.drift = error(2);
    return evidence;
}

} // namespace tiltpole::quality
