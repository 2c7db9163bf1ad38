// SPDX-License-Identifier: MIT
#include "field/occupation/Fit.h"

#include "field/occupation/Rotations.h"
#include "survey/Angle.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Quaterniond;
using Eigen::Vector2d;
using Eigen::Vector3d;

namespace {

constexpr int kMostPasses = 20;
constexpr int kWeighingPasses = 8;   // after them the weights stay, so that the passes settle
constexpr double kDoubtFrom = 3.0;   // residual from which an epoch loses weight [sigma]
constexpr double kIndependent = 1.0; // antenna errors of epochs closer together repeat [s]
// Errors of the antenna that last for half a minute: a longer occupation says no more of drifts.
constexpr double kMostIndependent = 11.0; // observations
constexpr double kEnoughSpread = 0.03; // of the pole's directions for a heading by the track [rad]
constexpr double kAnyHeading = 3.0;    // sigma where nothing is known of the heading [rad]
constexpr double kAntennaUnknowns = 4.0; // tip and heading
constexpr double kFixed = 1e-9;          // sigma of what is not asked for

double DoubtOf(double residual)
{
    return residual > kDoubtFrom ? kDoubtFrom / residual : 1.0;
}

// Heading by the horizontal turn that carries the poles of the first guess onto the antenna track.
struct TrackHeading
{
    double angle = 0.0;
    double spread = 0.0;
};

TrackHeading HeadingByTrack(const std::vector<EpochRow>& rows, const Quaterniond& level)
{
    const double n = static_cast<double>(rows.size());
    Vector3d meanPole = Vector3d::Zero();
    Vector3d meanAntenna = Vector3d::Zero();
    for (const EpochRow& row : rows) {
        meanPole += level * row.pose.attitude.col(2) / n;
        meanAntenna += row.epoch->position / n;
    }
    double cosine = 0.0;
    double sine = 0.0;
    double square = 0.0;
    for (const EpochRow& row : rows) {
        const Vector3d p = level * row.pose.attitude.col(2) - meanPole;
        const Vector3d a = row.epoch->position - meanAntenna;
        cosine += p.x() * a.x() + p.y() * a.y();
        sine += p.x() * a.y() - p.y() * a.x();
        square += p.head<2>().squaredNorm();
    }
    return {std::atan2(sine, cosine), std::sqrt(square / n)};
}

} // namespace

Fitter::Fitter(std::size_t epochs)
{
    m_rows.reserve(epochs);
}

// Level by the mean force, heading by the track where the pole moved, else by the magnetometer.
void Fitter::Start(const Track& track, const FitSetup& setup)
{
    const double from = track.Nodes().front().time;
    const double to = track.End().time;
    m_fit = {};
    m_fit.antennaFactor = setup.antennaFactor;
    m_fit.span = to - from;
    m_fit.state.axis = setup.axis;
    m_rows.clear();
    for (const Epoch& epoch : track.Epochs())
        if (track.Covers(epoch.time)) m_rows.emplace_back(epoch, track.At(epoch.time));
    m_force = MeanForceOf(track, from, to);
    m_force.force -= setup.lever * m_force.ownMotion;
    m_magnetic = track.End().magnetic;
    m_middle = track.At(0.5 * (from + to)).turning;

    const Quaterniond level = Leveling(m_force.force);
    const TrackHeading byTrack = HeadingByTrack(m_rows, level);
    double heading = byTrack.angle;
    m_fit.turnSpread = byTrack.spread;
    if (setup.magnetic && byTrack.spread < kEnoughSpread) {
        const Vector3d m = level * m_magnetic;
        heading = setup.north - std::atan2(m.y(), m.x());
    }
    m_fit.state.turn = Exp(heading * Vector3d::UnitZ()) * level;
    for (const EpochRow& row : m_rows)
        m_fit.state.tip +=
            (row.epoch->position - setup.poleLength * (m_fit.state.turn * row.pose.attitude.col(2)))
            / static_cast<double>(m_rows.size());
}

// n epochs within a second are one observation: each weighs that much less.
void Fitter::AddAntenna(const FitSetup& setup, const Track& track, bool weigh)
{
    const PoleAxis axis(m_fit.state.axis);
    const double covered = m_rows.back().epoch->time - m_rows.front().epoch->time;
    const double independent = std::min(covered / kIndependent + 1.0, kMostIndependent);
    const double share = std::min(1.0, independent / static_cast<double>(m_rows.size()));
    m_share = share;
    m_fit.antennaMisfit = 0.0;
    for (EpochRow& row : m_rows) {
        const Epoch& epoch = *row.epoch;
        if (setup.delaySigma > 0.0) row.pose = track.At(epoch.time + m_fit.state.delay);
        const AntennaPrediction antenna(row.pose, m_fit.state, axis, setup.poleLength);
        row.jacobian = antenna.jacobian;
        row.pole = antenna.pole;
        row.residual = antenna.position - epoch.position;
        const double plan = epoch.planSigma > 0.0 ? epoch.planSigma : setup.planSigma;
        const double height = epoch.heightSigma > 0.0 ? epoch.heightSigma : setup.heightSigma;
        if (weigh)
            row.doubt = std::min(DoubtOf(row.residual.head<2>().norm() / plan),
                                 DoubtOf(std::fabs(row.residual.z()) / height));
        const double own = row.doubt * share / setup.antennaFactor;
        const double byPlan = own / (plan * plan);
        row.weight = {byPlan, byPlan, own / (height * height)};
        m_normal.Add(row.jacobian, row.weight, row.residual);
        m_fit.antennaMisfit += row.weight.dot(row.residual.cwiseAbs2());
    }
    m_fit.misfit += m_fit.antennaMisfit;
    m_fit.antennaMisfit *= setup.antennaFactor;
    m_fit.freedom =
        std::max(1.0, 3.0 * share * static_cast<double>(m_rows.size()) - kAntennaUnknowns);
}

// The mean force is vertical. Own motion whose positions stay within bounds leaves of a window of T
// seconds 1/T² of what it leaves of one second.
void Fitter::AddForce(const FitSetup& setup)
{
    const Matrix3d turn = m_fit.state.turn.toRotationMatrix();
    Vector3d guess = m_force.force + m_force.byBias * m_fit.state.bias;
    for (std::size_t i = 0; i < kGaps; ++i)
        guess += m_force.byGap[i] * m_fit.state.gaps[i];
    const Vector3d force = turn * guess;
    const double magnitude = std::max(0.1, force.norm());
    const double motion = setup.ownMotion / std::max(1.0, m_fit.span * m_fit.span);
    m_fit.tilt = force.head<2>() / magnitude;
    // The accelerometers' error turns with the sensor: what a turn of the pole averages out is
    // none.
    const Eigen::Matrix<double, 2, 3> sensor = (turn * m_force.attitude).topRows<2>();
    Eigen::Matrix2d covariance = setup.forceSigma * setup.forceSigma * sensor * sensor.transpose();
    covariance.diagonal().array() += motion * motion;
    m_fit.tiltSigma = std::sqrt(0.5 * covariance.trace());
    AntennaJacobian jacobian = AntennaJacobian::Zero();
    jacobian.middleCols<3>(kTurnAt) = -Skew(force) / magnitude;
    jacobian.middleCols<3>(kBiasAt) = turn * m_force.byBias / magnitude;
    for (std::size_t i = 0; i < kGaps; ++i)
        jacobian.middleCols<3>(kGapAt + 3 * static_cast<int>(i)) =
            turn * m_force.byGap[i] / magnitude;
    m_fit.misfit += m_normal.AddPair(jacobian, covariance, m_fit.tilt);
}

void Fitter::AddHeading(const FitSetup& setup)
{
    const Vector3d m = m_fit.state.turn * (Exp(-m_middle * m_fit.state.bias) * m_magnetic);
    const double square = m.head<2>().squaredNorm();
    if (!(square > 0.0)) return;
    const double residual =
        std::remainder(std::atan2(m.y(), m.x()) - setup.north, 2.0 * survey::kPi);
    m_fit.magneticResidual = residual;
    if (!setup.magnetic) return;
    // A magnetometer that is far off has no vote: its weight falls with the fourth power.
    const double far = residual / (kDoubtFrom * setup.headingSigma);
    const double doubt = 1.0 / ((1.0 + far * far) * (1.0 + far * far));
    const double weight = setup.headingShare * (doubt / (setup.headingSigma * setup.headingSigma));
    const Vector3d slope(-m.y() / square, m.x() / square, 0.0);
    Unknowns row = Unknowns::Zero();
    row.segment<3>(kTurnAt) = m.cross(slope);
    m_normal.Add(row, weight, residual);
    m_fit.misfit += weight * residual * residual;
}

void Fitter::AddPriors(const FitSetup& setup, const Track& track)
{
    const auto add = [this](int at, double value, double sigma) {
        const double weight = 1.0 / (sigma * sigma);
        m_normal.AddPrior(at, value, weight);
        m_fit.misfit += weight * value * value;
    };
    const State& state = m_fit.state;
    add(kTurnAt + 2, 0.0, kAnyHeading);
    for (int i = 0; i < 3; ++i)
        add(kBiasAt + i, state.bias[i], setup.biasSigma);
    for (int i = 0; i < 2; ++i)
        add(kAxisAt + i, state.axis[i] - setup.axis[i], setup.axisSigma);
    add(kDelayAt, state.delay, setup.delaySigma > 0.0 ? setup.delaySigma : kFixed);
    for (std::size_t g = 0; g < kGaps; ++g)
        for (int i = 0; i < 3; ++i)
            add(kGapAt + 3 * static_cast<int>(g) + i, state.gaps[g][i],
                g < track.Gaps().size() ? track.Gaps()[g].sigma : kFixed);
}

const Fit& Fitter::Run(const Track& track, const FitSetup& setup)
{
    constexpr double kStillTip = 1e-7;  // [m]
    constexpr double kStillTurn = 1e-8; // [rad]
    Start(track, setup);
    if (m_rows.empty()) return m_fit;
    for (m_fit.passes = 1; m_fit.passes <= kMostPasses; ++m_fit.passes) {
        m_normal.Clear();
        m_fit.misfit = 0.0;
        AddAntenna(setup, track, m_fit.passes <= kWeighingPasses);
        AddForce(setup);
        AddHeading(setup);
        AddPriors(setup, track);
        const bool regular = m_normal.Factor();
        const Unknowns step = m_normal.Solution();
        if (!regular || !step.allFinite()) {
            m_fit.covariance.setConstant(std::numeric_limits<double>::quiet_NaN());
            return m_fit;
        }
        m_fit.state = m_fit.state.After(step);
        m_fit.converged = step.segment<3>(kTipAt).norm() < kStillTip
                          && step.segment<3>(kTurnAt).norm() < kStillTurn;
        if (m_fit.converged) break;
    }
    m_fit.covariance = m_normal.Inverse();
    SetSlowMisfit();
    return m_fit;
}

// What matters of the antenna's errors is what their mean over a second leaves.
void Fitter::SetSlowMisfit()
{
    Vector3d residual = Vector3d::Zero(); // weighted sums of a second
    Vector3d weight = Vector3d::Zero();
    double leverage = 0.0;
    double end = m_rows.front().epoch->time + kIndependent;
    const auto close = [&] {
        m_fit.slowMisfit += residual.cwiseAbs2().cwiseQuotient(weight).sum();
        residual.setZero();
        weight.setZero();
    };
    for (const EpochRow& row : m_rows) {
        if (row.epoch->time >= end) {
            close();
            while (row.epoch->time >= end)
                end += kIndependent;
        }
        residual += row.weight.cwiseProduct(row.residual);
        weight += row.weight;
        for (int k = 0; k < 3; ++k)
            leverage += row.weight[k] * m_normal.Whitened(row.jacobian.row(k)).squaredNorm();
    }
    close();
    m_fit.slowMisfit *= m_fit.antennaFactor;
    m_fit.slowFreedom = std::max(1.0, m_fit.freedom + kAntennaUnknowns - leverage);
}

} // namespace tiltpole::field
