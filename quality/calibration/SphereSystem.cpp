// SPDX-License-Identifier: MIT
#include "quality/calibration/SphereSystem.h"

#include "quality/statistics/Statistics.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tiltpole::quality {
namespace {

constexpr std::size_t kFewest = 10;   // readings in a turn
constexpr double kRotation = 0.05;    // standard deviation expected of M_ij - M_ji, near 3 degrees
constexpr double kLengths = 0.05;     // standard deviation expected of the lengths' ratio
constexpr double kAlike = 2.0;        // readings that count as one: neighbors share their errors
constexpr double kOutlier = 2.5;      // spreads at which a reading has lost three quarters
constexpr double kLeastSpread = 1e-4; // of the field: below any sensor's noise

// The three pairs of weights that a rotation of the magnetometer against the pole makes unequal.
constexpr int kPairs[3][2] = {
    {3, 1},
    {6, 2},
    {7, 5}
};

// Slopes of a residual whose slope in the corrected reading is `slope`.
Unknowns RowOf(const Eigen::Vector3d& reading, const Eigen::Vector3d& slope)
{
    Unknowns row = Unknowns::Zero();
    for (Eigen::Index i = 0; i < 3; ++i) {
        row.segment<3>(3 * i) = slope[i] * reading;
        row[kOffset + i] = -slope[i];
    }
    return row;
}

} // namespace

std::optional<Scaled> ScaledTurns(const Turn& horizontal, const Turn& vertical)
{
    if (horizontal.size() < kFewest || vertical.size() < kFewest) return {};
    Scaled data;
    Eigen::Array3d low[2];
    Eigen::Array3d high[2];
    std::size_t turn = 0;
    for (const Turn* t : {&horizontal, &vertical}) {
        low[turn] = high[turn] = t->front().reading.array();
        for (const Observation& o : *t) {
            if (!o.reading.allFinite() || !o.up.allFinite()) return {};
            low[turn] = low[turn].min(o.reading.array());
            high[turn] = high[turn].max(o.reading.array());
        }
        data.turns[turn++] = *t;
    }
    const Eigen::Array3d middle = (low[1] + high[1]) / 2.0;
    data.center = {middle.x(), (low[0].y() + high[0].y()) / 2.0, middle.z()};
    data.scale = (high[1] - low[1]).maxCoeff() / 2.0;
    if (!(data.scale > 0.0) || !std::isfinite(data.scale)) return {};
    for (Turn& t : data.turns) {
        for (Observation& o : t)
            o.reading = (o.reading - data.center) / data.scale;
    }
    return data;
}

Eigen::Vector3d Corrected(const Unknowns& p, const Eigen::Vector3d& reading)
{
    return {p.segment<3>(0).dot(reading) - p[kOffset],
            p.segment<3>(3).dot(reading) - p[kOffset + 1],
            p.segment<3>(6).dot(reading) - p[kOffset + 2]};
}

Residuals ResidualsOf(const Scaled& data, const Unknowns& p)
{
    Residuals residuals;
    for (std::size_t turn = 0; turn < 2; ++turn) {
        residuals.turns[turn].reserve(data.turns[turn].size());
        for (const Observation& o : data.turns[turn]) {
            const Eigen::Vector3d c = Corrected(p, o.reading);
            residuals.turns[turn].push_back(
                {c.norm() - LengthOf(p, turn), c.dot(o.up) - p[ElevationOf(turn)]});
        }
    }
    return residuals;
}

// The larger of both turns: of all readings together, one turn that fits exactly could make up the
// half that counts and the other be left out.
Spread SpreadOf(const Residuals& residuals)
{
    Spread spread = {kLeastSpread, kLeastSpread};
    for (const std::vector<Residual>& turn : residuals.turns) {
        std::vector<double> sphere;
        std::vector<double> elevation;
        for (const Residual& r : turn) {
            sphere.push_back(r.sphere);
            elevation.push_back(r.elevation);
        }
        spread.sphere = std::max(spread.sphere, RobustSpread(std::move(sphere)));
        spread.elevation = std::max(spread.elevation, RobustSpread(std::move(elevation)));
    }
    return spread;
}

Weighting WeightingOf(const Residuals& residuals)
{
    const Spread spread = SpreadOf(residuals);
    Weighting weighting;
    // One variance for both: of two, the smaller one would draw all weight to its condition.
    const double variance =
        (spread.sphere * spread.sphere + spread.elevation * spread.elevation) / 2.0;
    weighting.scale = 1.0 / (kAlike * variance);
    for (std::size_t turn = 0; turn < 2; ++turn) {
        for (const Residual& r : residuals.turns[turn]) {
            const double sphere = r.sphere / (kOutlier * spread.sphere);
            const double elevation = r.elevation / (kOutlier * spread.elevation);
            const double share = 1.0 / (1.0 + sphere * sphere + elevation * elevation);
            weighting.turns[turn].push_back(share * share);
        }
    }
    return weighting;
}

ResidualSlopes SlopesOf(const Observation& o, std::size_t turn, const Unknowns& p)
{
    ResidualSlopes slopes = {RowOf(o.reading, Corrected(p, o.reading).normalized()),
                             RowOf(o.reading, o.up)};
    slopes.elevation[ElevationOf(turn)] = -1.0;
    if (turn == 1) slopes.sphere[kLength] = -1.0;
    return slopes;
}

void System::Add(const Unknowns& row, double residual, double weight)
{
    for (Eigen::Index k = 0; k < kUnknowns; ++k) {
        normal.col(k).tail(kUnknowns - k) += (weight * row[k]) * row.tail(kUnknowns - k);
    }
    gradient += weight * residual * row;
}

System SystemOf(const Scaled& data, const Unknowns& p, const Residuals& residuals,
                const Weighting& weighting)
{
    System system;
    for (std::size_t turn = 0; turn < 2; ++turn) {
        for (std::size_t i = 0; i < data.turns[turn].size(); ++i) {
            const double weight = weighting.scale * weighting.turns[turn][i];
            const ResidualSlopes slopes = SlopesOf(data.turns[turn][i], turn, p);
            const Residual& residual = residuals.turns[turn][i];
            system.Add(slopes.sphere, residual.sphere, weight);
            system.Add(slopes.elevation, residual.elevation, weight);
        }
    }
    return system;
}

void AddPrior(const Unknowns& p, System& system)
{
    for (const auto& pair : kPairs) {
        Unknowns row = Unknowns::Zero();
        row[pair[0]] = 1.0;
        row[pair[1]] = -1.0;
        system.Add(row, p[pair[0]] - p[pair[1]], 1.0 / (kRotation * kRotation));
    }
    Unknowns row = Unknowns::Zero();
    row[kLength] = 1.0;
    system.Add(row, p[kLength] - 1.0, 1.0 / (kLengths * kLengths));
}

double PriorCost(const Unknowns& p)
{
    double cost = 0.0;
    for (const auto& pair : kPairs) {
        const double rotation = (p[pair[0]] - p[pair[1]]) / kRotation;
        cost += rotation * rotation;
    }
    const double longer = (p[kLength] - 1.0) / kLengths;
    return cost + longer * longer;
}

} // namespace tiltpole::quality
