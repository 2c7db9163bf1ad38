// SPDX-License-Identifier: MIT
#include "field/occupation/Alternatives.h"

#include "field/occupation/Region.h"
#include "field/occupation/Trend.h"
#include "survey/Angle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Vector3d;

namespace {

constexpr double kStatementFreedom = 2.0; // of the stated variances
constexpr double kUsualFault = 0.05;      // prior sigma of a step or of an error of the length [m]

// The part of the likelihood that depends on the misfit, where the variance of the antenna is known
// as PooledFactor knows it: Student's t.
double LogLikelihoodGain(const Fitter& fitter, double gain, double others = 0.0)
{
    const Fit& fit = fitter.Result();
    const double freedom = kStatementFreedom + fit.slowFreedom;
    const double square = kStatementFreedom / fit.antennaFactor + fit.misfit + others;
    return -0.5 * freedom * std::log(std::max(1e-6, 1.0 - gain / square));
}

Score ScoreOf(const Fitter& fitter, Vector3d (*columnOf)(const EpochRow&), double prior)
{
    double own = 0.0;
    double right = 0.0;
    Unknowns mixed = Unknowns::Zero();
    for (const EpochRow& row : fitter.Rows()) {
        const Vector3d column = columnOf(row);
        const Vector3d weighted = row.weight.cwiseProduct(column);
        own += column.dot(weighted);
        right -= weighted.dot(row.residual);
        mixed += row.jacobian.transpose() * weighted;
    }
    const double reduced = own - fitter.Normal().Whitened(mixed).squaredNorm();
    Score score;
    score.value = right / reduced;
    score.sigma = 1.0 / std::sqrt(std::fabs(reduced));
    score.gain = score.value * right;
    const double narrow = 1.0 / (prior * prior);
    score.evidence = LogLikelihoodGain(fitter, right * right / (reduced + narrow))
                     - 0.5 * std::log(1.0 + reduced / narrow);
    return score;
}

} // namespace

Score LengthScore(const Fitter& fitter)
{
    return ScoreOf(
        fitter, [](const EpochRow& row) -> Vector3d { return row.pole; }, kUsualFault);
}

Score DelayScore(const Fitter& fitter)
{
    constexpr double kUsualDelay = 0.03; // [s]
    return ScoreOf(
        fitter, [](const EpochRow& row) -> Vector3d { return row.jacobian.col(kDelayAt); },
        kUsualDelay);
}

namespace {

constexpr double kNarrow = 1.0 / (kUsualFault * kUsualFault);

// Chi-square of the glide in plan of a harmful size that comes closest to `plan`.
double HarmGainOf(const Eigen::Vector2d& plan, const Eigen::Matrix2d& information)
{
    constexpr double kHarmful = 0.03; // [m]
    constexpr int kDirections = 36;
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < kDirections; ++i) {
        const double direction = 2.0 * survey::kPi * i / kDirections;
        const Eigen::Vector2d off =
            kHarmful * Eigen::Vector2d(std::cos(direction), std::sin(direction)) - plan;
        least = std::min(least, off.dot(information * off));
    }
    return least;
}

// A shift of the tip that differs from epoch to epoch by a factor: sums of its normal equations.
class Shift
{
public:
    void Add(const EpochRow& row, double factor)
    {
        m_own += factor * factor * row.weight;
        m_right -= factor * row.weight.cwiseProduct(row.residual);
        for (int k = 0; k < 3; ++k)
            m_mixed[static_cast<std::size_t>(k)] +=
                factor * row.weight[k] * row.jacobian.row(k).transpose();
    }

    // Of the fit as it is, or with another observation.
    StepScore ScoreIn(const Fitter& fitter, const WithTrend& trend, double time) const
    {
        Vector3d right = m_right;
        for (int k = 0; k < 3; ++k)
            right[k] -= m_mixed[static_cast<std::size_t>(k)].dot(trend.step);
        return ScoreBy(fitter, trend.normal, right, trend.misfit, time);
    }

    StepScore ScoreIn(const Fitter& fitter, double time) const
    {
        return ScoreBy(fitter, fitter.Normal(), m_right, 0.0, time);
    }

    // Of the height where north and west stay [m].
    double HeightIn(const Fitter& fitter) const
    {
        return m_right.z() / (m_own.z() - fitter.Normal().Whitened(m_mixed[2]).squaredNorm());
    }

private:
    StepScore ScoreBy(const Fitter& fitter, const NormalEquations& normal, const Vector3d& right,
                      double others, double time) const
    {
        std::array<Unknowns, 3> white;
        for (std::size_t k = 0; k < 3; ++k)
            white[k] = normal.Whitened(m_mixed[k]);
        Matrix3d reduced = m_own.asDiagonal();
        for (std::size_t k = 0; k < 3; ++k)
            for (std::size_t l = 0; l < 3; ++l)
                reduced(static_cast<int>(k), static_cast<int>(l)) -= white[k].dot(white[l]);
        const Matrix3d narrowed = reduced + kNarrow * Matrix3d::Identity();
        StepScore score;
        const Matrix3d covariance = reduced.inverse();
        score.size = covariance * right;
        const Eigen::Vector2d plan = score.size.head<2>();
        constexpr double kWander = 0.004; // what the antenna's own slow errors make of a glide [m]
        Eigen::Matrix2d own = covariance.topLeftCorner<2, 2>();
        own.diagonal().array() += kWander * kWander;
        const Eigen::Matrix2d information = own.inverse();
        score.planGain = plan.dot(information * plan);
        score.harmGain = HarmGainOf(plan, information);
        score.gain = score.size.dot(right);
        score.time = time;
        score.evidence = LogLikelihoodGain(fitter, right.dot(narrowed.inverse() * right), others)
                         - 0.5 * std::log(narrowed.determinant() / (kNarrow * kNarrow * kNarrow));
        return score;
    }

    Vector3d m_own = Vector3d::Zero();
    Vector3d m_right = Vector3d::Zero();
    std::array<Unknowns, 3> m_mixed{Unknowns::Zero(), Unknowns::Zero(), Unknowns::Zero()};
};

} // namespace

// One walk from the last epoch to the first: the sums of the epochs after the step grow.
TipSteps StepsOfTip(const Fitter& fitter)
{
    constexpr double kLate = 1.5;  // before the last epoch [s]
    constexpr double kShown = 0.3; // of what comes after the step [s]
    constexpr double kBegun = 0.9; // of what comes before one of the height [s]
    TipSteps steps;
    Shift shift;
    double likelihood = 0.0; // over all times
    const auto& rows = fitter.Rows();
    const double begin = rows.front().epoch->time;
    const double end = rows.back().epoch->time;
    for (std::size_t i = rows.size(); i-- > 1;) {
        shift.Add(rows[i], 1.0);
        const StepScore score = shift.ScoreIn(fitter, rows[i].epoch->time);
        if (std::isfinite(score.evidence)) likelihood += std::exp(std::min(score.evidence, 500.0));
        if (!score.size.allFinite()) continue;
        if (score.gain > steps.best.gain) steps.best = score;
        if (score.time >= end - kLate && rows[i - 1].epoch->time <= end - kShown)
            steps.late = std::max(steps.late, score.size.head<2>().norm());
        if (score.time >= begin + kBegun && score.time <= end - kShown)
            steps.sunk = std::max(steps.sunk, std::fabs(shift.HeightIn(fitter)));
    }
    steps.best.evidence = std::log(std::max(1e-300, likelihood));
    return steps;
}

namespace {

// How far a tip is on its way from rest to rest, at the part t of the time: 0 to 1.
double FromRestToRest(double t)
{
    return t * t * t * (10.0 - 15.0 * t + 6.0 * t * t);
}

} // namespace

StepScore GlideOfTip(const Fitter& fitter, const WithTrend& trend)
{
    const auto& rows = fitter.Rows();
    const double first = rows.front().epoch->time;
    const double span = std::max(1.0, rows.back().epoch->time - first);
    Shift even;
    Shift resting;
    for (const EpochRow& row : rows) {
        const double t = (row.epoch->time - first) / span;
        even.Add(row, t);
        resting.Add(row, FromRestToRest(t));
    }
    const auto scoreOf = [&](const Shift& shift) {
        return trend.known ? shift.ScoreIn(fitter, trend, first) : shift.ScoreIn(fitter, first);
    };
    StepScore evenly = scoreOf(even);
    StepScore smoothly = scoreOf(resting);
    if (!smoothly.size.allFinite()) return evenly;
    evenly.harmGain = smoothly.harmGain = std::min(evenly.harmGain, smoothly.harmGain);
    return smoothly.planGain > evenly.planGain ? smoothly : evenly;
}

Eigen::Matrix2d SpreadOfGlide(const StepScore& glide)
{
    constexpr double kSeen = 4.605;       // 90 %, two degrees of freedom
    constexpr double kChiSquare = 5.9915; // 95 %, likewise
    if (!(glide.planGain > kSeen)) return Eigen::Matrix2d::Zero();
    // The estimate lies half way; the way itself is known to 1/√planGain of it.
    const double reach = 0.5 + 1.0 / std::sqrt(glide.planGain);
    const Eigen::Vector2d plan = glide.size.head<2>();
    return reach * reach / kChiSquare * plan * plan.transpose();
}

namespace {

// The factor of the stated variances of a single epoch against the ones beside it: by second
// differences of the residuals, which what goes on evenly leaves alone.
double FactorOfEpochs(const Fitter& fitter, const FitSetup& setup)
{
    constexpr double kFinest = 0.002;  // sigma of an epoch, at least [m]
    constexpr double kStatement = 4.0; // differences that this counts as
    const auto& rows = fitter.Rows();
    const auto planOf = [&setup](const EpochRow& row) {
        return row.epoch->planSigma > 0.0 ? row.epoch->planSigma : setup.planSigma;
    };
    double finest = 0.0;
    double square = 0.0;
    double count = 0.0;
    for (std::size_t i = 2; i < rows.size(); ++i) {
        const Vector3d second =
            rows[i].residual - 2.0 * rows[i - 1].residual + rows[i - 2].residual;
        const double variance = planOf(rows[i]) * planOf(rows[i]);
        square += second.head<2>().squaredNorm() / (12.0 * variance);
        finest += kFinest * kFinest / variance;
        count += 1.0;
    }
    if (count == 0.0) return 1.0;
    finest /= count;
    return std::max(finest, (square + kStatement * finest) / (count + kStatement));
}

} // namespace

Alternatives AlternativesOf(Fitter& fitter, const Track& track, const FitSetup& setup)
{
    constexpr double kLeastFactor = 0.1;
    constexpr double kStepEvidence = 1.0; // below it a glide is chance
    constexpr double kClear = 7.0;        // [sigma]
    constexpr double kGlideSpan = 15.0;   // beyond it the antenna's own wander glides [s]
    constexpr double kTrendSpan = 4.5;    // not tried with less [s]
    constexpr double kFaulty = 0.7; // of the factor: a fault explains so much of the residuals
    const Fit& fit = fitter.Result();
    const double gain =
        setup.antennaFactor * std::max(LengthScore(fitter).gain, StepsOfTip(fitter).best.gain);
    const double all = PooledFactor(fit.slowMisfit, fit.slowFreedom, kStatementFreedom);
    const double left = PooledFactor(std::max(0.0, fit.slowMisfit - gain), fit.slowFreedom - 1.0,
                                     kStatementFreedom);
    FitSetup sharper = setup;
    sharper.antennaFactor = std::clamp(left < kFaulty * all ? left : all, kLeastFactor, 1.0);
    fitter.Run(track, sharper);
    Alternatives found;
    found.length = LengthScore(fitter);
    const TipSteps steps = StepsOfTip(fitter);
    found.step = steps.best;
    found.late = steps.late;
    found.sunk = steps.sunk;
    const StepScore glide =
        GlideOfTip(fitter, fit.span >= kTrendSpan ? AddTrend(fitter, track, sharper) : WithTrend{});
    if (fit.span < kGlideSpan && glide.size.allFinite()) {
        found.glide = glide;
        if (glide.evidence > kStepEvidence && glide.evidence > found.step.evidence)
            found.step = glide;
    }
    found.jump = LargestJump(fitter.Rows(), kClear);
    const auto leftBy = [&fit](double explained) {
        return (fit.antennaMisfit - fit.antennaFactor * explained) / fit.freedom;
    };
    found.leftByLength = leftBy(found.length.gain);
    found.leftByStep = leftBy(found.step.gain);
    const double larger =
        PooledFactor(fit.slowMisfit, fit.slowFreedom, kStatementFreedom) / sharper.antennaFactor;
    found.length.sigma *= std::sqrt(std::max(1.0, larger));
    // Last, because it leaves the fit with other weights.
    if (fit.span >= kTrendSpan && fit.span < kGlideSpan) {
        FitSetup own = sharper;
        own.antennaFactor =
            std::min(sharper.antennaFactor, fitter.Share() * FactorOfEpochs(fitter, setup));
        fitter.Run(track, own);
        const StepScore sharp = GlideOfTip(fitter, AddTrend(fitter, track, own));
        if (sharp.size.allFinite()) found.glide = sharp;
    }
    return found;
}

} // namespace tiltpole::field
