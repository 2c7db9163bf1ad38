#include "quality/detail/SphereFit.h"

#include "quality/detail/Statistics.h"

#include <Eigen/Cholesky>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace quality::detail {
namespace {

constexpr int kUnknowns = 14;         // nine weights by rows, three offsets, two elevations
constexpr int kOffset = 9;            // place of the first offset
constexpr int kElevation = 12;        // place of the first elevation
constexpr std::size_t kFewest = 10;   // readings in a turn
constexpr int kMostSteps = 80;        // Levenberg-Marquardt, weights renewed at each
constexpr double kSmallStep = 1e-7;   // of unknowns near one: 1e-5 degrees of heading
constexpr double kRotation = 0.05;    // standard deviation expected of M_ij - M_ji, near 3 degrees
constexpr double kAlike = 2.0;        // readings that count as one: neighbours share their errors
constexpr double kOutlier = 2.5;      // spreads at which a reading has lost three quarters
constexpr double kDisturbed = 5.0;    // spreads beyond which a reading counts as disturbed
constexpr double kLeastSpread = 1e-4; // of the field: below any sensor's noise

using Unknowns = Eigen::Matrix<double, kUnknowns, 1>;
using Normal = Eigen::Matrix<double, kUnknowns, kUnknowns>;

struct Residual
{
    double sphere = 0.0;
    double elevation = 0.0;
};

// Counts shifted and scaled to the order of one, which keeps the normal equations well scaled.
struct Scaled
{
    Turn turns[2];
    Eigen::Vector3d centre;
    double scale = 0.0;

    std::size_t Size() const { return turns[0].size() + turns[1].size(); }
};

Eigen::Vector3d Corrected(const Unknowns& p, const Eigen::Vector3d& r)
{
    return {p.segment<3>(0).dot(r) - p[kOffset], p.segment<3>(3).dot(r) - p[kOffset + 1],
            p.segment<3>(6).dot(r) - p[kOffset + 2]};
}

std::vector<Residual> ResidualsOf(const Scaled& data, const Unknowns& p)
{
    std::vector<Residual> residuals;
    residuals.reserve(data.Size());
    for (int turn = 0; turn < 2; ++turn) {
        for (const Observation& o : data.turns[turn]) {
            const Eigen::Vector3d c = Corrected(p, o.reading);
            residuals.push_back({c.norm() - 1.0, c.dot(o.up) - p[kElevation + turn]});
        }
    }
    return residuals;
}

struct Spread
{
    double sphere = 0.0;
    double elevation = 0.0;
};

Spread SpreadOf(const std::vector<Residual>& residuals)
{
    std::vector<double> sphere;
    std::vector<double> elevation;
    for (const Residual& r : residuals) {
        sphere.push_back(r.sphere);
        elevation.push_back(r.elevation);
    }
    return {std::max(RobustSpread(std::move(sphere)), kLeastSpread),
            std::max(RobustSpread(std::move(elevation)), kLeastSpread)};
}

// How much each reading counts: what its residuals are divided by, and its own share.
struct Weighting
{
    double scale = 1.0;         // one over the variance, both kinds alike
    std::vector<double> shares; // in (0, 1]
};

// Geman and McClure: the share of a reading falls with the square of its distance in spreads.
Weighting WeightingOf(const std::vector<Residual>& residuals)
{
    const Spread spread = SpreadOf(residuals);
    Weighting weighting;
    // One variance for both: of two, the smaller one would draw all weight to its condition.
    const double variance =
        (spread.sphere * spread.sphere + spread.elevation * spread.elevation) / 2.0;
    weighting.scale = 1.0 / (kAlike * variance);
    weighting.shares.reserve(residuals.size());
    for (const Residual& r : residuals) {
        const double sphere = r.sphere / (kOutlier * spread.sphere);
        const double elevation = r.elevation / (kOutlier * spread.elevation);
        const double share = 1.0 / (1.0 + sphere * sphere + elevation * elevation);
        weighting.shares.push_back(share * share);
    }
    return weighting;
}

// The three pairs of weights that a rotation of the magnetometer against the pole makes unequal.
constexpr int kPairs[3][2] = {
    {3, 1},
    {6, 2},
    {7, 5}
};

double CostOf(const std::vector<Residual>& residuals, const Weighting& weighting, const Unknowns& p)
{
    double cost = 0.0;
    for (std::size_t i = 0; i < residuals.size(); ++i) {
        const Residual& r = residuals[i];
        cost += weighting.shares[i] * (r.sphere * r.sphere + r.elevation * r.elevation);
    }
    cost *= weighting.scale;
    for (const auto& pair : kPairs) {
        const double rotation = (p[pair[0]] - p[pair[1]]) / kRotation;
        cost += rotation * rotation;
    }
    return cost;
}

struct System
{
    Normal normal = Normal::Zero();
    Unknowns gradient = Unknowns::Zero();

    // A residual whose slopes are `row`.
    void Add(const Unknowns& row, double residual, double weight)
    {
        normal.selfadjointView<Eigen::Lower>().rankUpdate(row, weight);
        gradient += weight * residual * row;
    }
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

System Linearised(const Scaled& data, const Unknowns& p, const std::vector<Residual>& residuals,
                  const Weighting& weighting)
{
    System system;
    std::size_t i = 0;
    for (int turn = 0; turn < 2; ++turn) {
        for (const Observation& o : data.turns[turn]) {
            const Eigen::Vector3d c = Corrected(p, o.reading);
            const double weight = weighting.scale * weighting.shares[i];
            system.Add(RowOf(o.reading, c.normalized()), residuals[i].sphere, weight);
            Unknowns row = RowOf(o.reading, o.up);
            row[kElevation + turn] = -1.0;
            system.Add(row, residuals[i].elevation, weight);
            ++i;
        }
    }
    for (const auto& pair : kPairs) {
        Unknowns row = Unknowns::Zero();
        row[pair[0]] = 1.0;
        row[pair[1]] = -1.0;
        system.Add(row, p[pair[0]] - p[pair[1]], 1.0 / (kRotation * kRotation));
    }
    return system;
}

// Share of the readings that are further off than noise takes them.
double DisturbedShare(const std::vector<Residual>& residuals, const Spread& spread)
{
    const auto isFar = [&spread](const Residual& r) {
        return std::fabs(r.sphere) > kDisturbed * spread.sphere
               || std::fabs(r.elevation) > kDisturbed * spread.elevation;
    };
    const auto far = std::count_if(residuals.begin(), residuals.end(), isFar);
    return static_cast<double>(far) / static_cast<double>(residuals.size());
}

struct Solution
{
    Unknowns p;
    Spread spread;
    double disturbed = 0.0;
    int steps = 0;
};

// Levenberg-Marquardt; the weights follow the solution, so that a wide first spread of a coarse
// start takes every reading in and a narrow last one leaves the spoilt ones out.
Solution Minimised(const Scaled& data, Unknowns p)
{
    double damping = 1e-3;
    std::vector<Residual> residuals = ResidualsOf(data, p);
    int step = 0;
    for (; step < kMostSteps && damping < 1e9; ++step) {
        const Weighting weighting = WeightingOf(residuals);
        const System system = Linearised(data, p, residuals, weighting);
        const double cost = CostOf(residuals, weighting, p);
        Normal damped = system.normal.selfadjointView<Eigen::Lower>();
        damped.diagonal() *= 1.0 + damping;
        const Unknowns change = damped.ldlt().solve(system.gradient);
        const Unknowns trial = p - change;
        std::vector<Residual> trialResiduals = ResidualsOf(data, trial);
        if (CostOf(trialResiduals, weighting, trial) <= cost) {
            p = trial;
            residuals = std::move(trialResiduals);
            damping = std::max(damping * 0.1, 1e-9);
            if (change.norm() < kSmallStep) break;
        } else {
            damping *= 10.0;
        }
    }
    const Spread spread = SpreadOf(residuals);
    return {p, spread, DisturbedShare(residuals, spread), step};
}

bool ScaleTurns(const Turn& horizontal, const Turn& vertical, Scaled& data)
{
    if (horizontal.size() < kFewest || vertical.size() < kFewest) return false;
    Eigen::Array3d low[2];
    Eigen::Array3d high[2];
    int turn = 0;
    for (const Turn* t : {&horizontal, &vertical}) {
        low[turn] = high[turn] = t->front().reading.array();
        for (const Observation& o : *t) {
            if (!o.reading.allFinite() || !o.up.allFinite()) return false;
            low[turn] = low[turn].min(o.reading.array());
            high[turn] = high[turn].max(o.reading.array());
        }
        data.turns[turn++] = *t;
    }
    const Eigen::Array3d middle = (low[1] + high[1]) / 2.0;
    data.centre = {middle.x(), (low[0].y() + high[0].y()) / 2.0, middle.z()};
    data.scale = (high[1] - low[1]).maxCoeff() / 2.0;
    if (!(data.scale > 0.0) || !std::isfinite(data.scale)) return false;
    for (Turn& t : data.turns) {
        for (Observation& o : t)
            o.reading = (o.reading - data.centre) / data.scale;
    }
    return true;
}

// Two starts: an undistorted magnetometer, centred by the extremes of the turns, and one whose
// offset is the mean of the readings instead.
Unknowns StartOf(const Scaled& data, int which)
{
    Unknowns p = Unknowns::Zero();
    p[0] = p[4] = p[8] = 1.0;
    if (which == 1) {
        Eigen::Vector3d means[2];
        for (int turn = 0; turn < 2; ++turn) {
            means[turn].setZero();
            for (const Observation& o : data.turns[turn])
                means[turn] += o.reading;
            means[turn] /= static_cast<double>(data.turns[turn].size());
        }
        p[kOffset] = (means[0].x() + means[1].x()) / 2.0;
        p[kOffset + 1] = means[0].y();
        p[kOffset + 2] = means[1].z();
    }
    for (int turn = 0; turn < 2; ++turn) {
        std::vector<double> rises;
        for (const Observation& o : data.turns[turn]) {
            rises.push_back(Corrected(p, o.reading).dot(o.up));
        }
        p[kElevation + turn] = Median(std::move(rises));
    }
    return p;
}

bool IsNearOwnAxes(const Unknowns& p)
{
    Eigen::Matrix3d m;
    m << p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8];
    return p.allFinite() && m.determinant() > 0.0 && m.diagonal().minCoeff() > 0.0;
}

SphereFit InCounts(const Scaled& data, const Solution& solution)
{
    SphereFit fit;
    const Unknowns& p = solution.p;
    fit.correction.matrix << p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8];
    fit.correction.matrix /= data.scale;
    fit.correction.offset = p.segment<3>(kOffset) + fit.correction.matrix * data.centre;
    fit.elevationHorizontal = p[kElevation];
    fit.elevationVertical = p[kElevation + 1];
    fit.sphereSpread = solution.spread.sphere;
    fit.elevationSpread = solution.spread.elevation;
    fit.disturbed = solution.disturbed;
    fit.steps = solution.steps;
    return fit;
}

} // namespace

std::optional<SphereFit> FitSphere(const Turn& horizontal, const Turn& vertical)
{
    Scaled data;
    if (!ScaleTurns(horizontal, vertical, data)) return {};
    std::optional<Solution> best;
    for (const int start : {0, 1}) {
        const Solution found = Minimised(data, StartOf(data, start));
        if (!IsNearOwnAxes(found.p)) continue;
        const auto misfit = [](const Solution& s) { return s.spread.sphere + s.spread.elevation; };
        if (!best || misfit(found) < misfit(*best)) best = found;
    }
    if (!best) return {};
    return InCounts(data, *best);
}

} // namespace quality::detail
