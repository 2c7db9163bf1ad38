// SPDX-License-Identifier: MIT
#include "field/spot/Motion.h"

#include "field/occupation/Gravity.h"
#include "field/occupation/Model.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Quaterniond;
using Eigen::Vector3d;

namespace {

constexpr int kMostPasses = 30;
constexpr int kWeighingPasses = 12;
constexpr double kDoubtFrom = 3.0;    // residual from which an epoch loses weight [sigma]
constexpr double kIndependent = 1.0;  // antenna errors of epochs closer together repeat [s]
constexpr double kWindow = 1.0;       // of the accelerations [s]
constexpr double kHop = 0.5;          // from one window to the next [s]
constexpr double kFirstForce = 0.003; // sigma of a window before its residuals are known [g]
// And at least: what the noise of gyros of 0.015 degrees/√s makes of the vertical in 20 s.
constexpr double kLeastForce = 0.0012; // [g]
constexpr double kWideHeight = 3.0;    // of the sensor above the tip, about half the pole [m]
constexpr double kMargin = 0.15;       // of epochs from the first and last reading [s]

double DoubtOf(double residual)
{
    return residual > kDoubtFrom ? kDoubtFrom / residual : 1.0;
}

// w(t) of Gravity.h for a window of length T that begins at 0, and half its second derivative over
// 30/T⁵.
double BellAt(double t, double span)
{
    const double both = t * (span - t);
    return both * both;
}

double BellSlopeAt(double t, double span)
{
    return span * span - 6.0 * span * t + 6.0 * t * t;
}

// What the accelerometers say in one window, in the world.
struct ForceWindow
{
    Vector3d force = Vector3d::Zero();    // mean, without bias [g]
    Matrix3d attitude = Matrix3d::Zero(); // mean
    Vector3d motion = Vector3d::Zero();   // of a point 1 m up the pole [g]
    // Of force and motion, by the unknowns of turning.
    spot::TurningRows forceTurned = spot::TurningRows::Zero();
    spot::TurningRows motionTurned = spot::TurningRows::Zero();
};

// Runs from reading `i` on, as long as the window lasts; all 0 without readings within it.
ForceWindow WindowFrom(const std::vector<SpotReading>& readings, std::size_t i,
                       const SpotState& state, const MotionFit& motion)
{
    const Vector3d axis = PoleAxis(state.axis).direction;
    ForceWindow window;
    const double from = readings[i].time;
    std::size_t end = i;
    while (end + 1 < readings.size() && readings[end + 1].time <= from + kWindow)
        ++end;
    const double span = readings[end].time - from;
    const auto lengthOf = [&readings, i, end](std::size_t k) {
        return 0.5 * (readings[std::min(k + 1, end)].time - readings[k > i ? k - 1 : i].time);
    };
    // The integral of the slope is 0, its sum is not: a pole at rest has no acceleration.
    double rest = 0.0;
    for (std::size_t k = i; k <= end; ++k)
        rest += BellSlopeAt(readings[k].time - from, span) * lengthOf(k) / span;
    double sum = 0.0;
    for (std::size_t k = i; k <= end; ++k) {
        const double dt = lengthOf(k);
        const double t = readings[k].time - from;
        const double weight = BellAt(t, span) * dt;
        const double bend = 2.0 * (BellSlopeAt(t, span) - rest) / kGravity * dt;
        const SpotPose pose = motion.PoseAt(k);
        const spot::TurningRows turning = pose.Turning();
        const Vector3d force = pose.attitude * (readings[k].force - state.force);
        const Vector3d pole = pose.attitude * axis;
        window.force += weight * force;
        window.attitude += weight * pose.attitude;
        window.motion += bend * pole;
        window.forceTurned -= weight * Skew(force) * turning;
        window.motionTurned -= bend * Skew(pole) * turning;
        sum += weight;
    }
    if (!(sum > 0.0)) return {};
    window.force /= sum;
    window.attitude /= sum;
    window.motion /= sum;
    window.forceTurned /= sum;
    window.motionTurned /= sum;
    return window;
}

} // namespace

spot::TurningRows SpotPose::Turning() const
{
    spot::TurningRows rows;
    rows << Matrix3d::Identity(), byBias, byScale;
    return rows;
}

MotionFit::MotionFit(const std::vector<SpotReading>& readings, const std::vector<SpotEpoch>& epochs)
    : m_readings(readings), m_epochs(epochs), m_nodes(readings.size())
{}

void MotionFit::Integrate()
{
    Node node{m_state.first, Matrix3d::Zero(), Matrix3d::Zero()};
    const auto rateOf = [this](const SpotReading& reading) -> Vector3d {
        return (reading.rate - m_state.bias).array() / (1.0 + m_state.scale.array());
    };
    m_nodes[0] = node;
    Vector3d a = rateOf(m_readings[0]);
    for (std::size_t i = 1; i < m_readings.size(); ++i) {
        const Vector3d b = rateOf(m_readings[i]);
        const double dt = m_readings[i].time - m_readings[i - 1].time;
        // Mean rate and the first term of coning, as in Track.cpp.
        const Vector3d turn = 0.5 * dt * (a + b) + dt * dt / 12.0 * a.cross(b);
        const Matrix3d before = node.attitude.toRotationMatrix();
        node.attitude = (node.attitude * Exp(turn)).normalized();
        const Matrix3d mean = 0.5 * (before + node.attitude.toRotationMatrix());
        node.turning += dt * mean;
        node.scaled += 0.5 * dt * mean * (a + b).asDiagonal();
        m_nodes[i] = node;
        a = b;
    }
}

SpotPose MotionFit::PoseAt(std::size_t i) const
{
    const Node& node = m_nodes[i];
    const Matrix3d attitude = node.attitude.toRotationMatrix();
    return {attitude, -node.turning, -node.scaled, attitude * (m_readings[i].rate - m_state.bias)};
}

// Between two readings the rate is constant.
SpotPose MotionFit::PoseAt(double time) const
{
    const auto later = [](double t, const SpotReading& reading) { return t < reading.time; };
    const auto next = std::upper_bound(m_readings.begin() + 1, m_readings.end() - 1, time, later);
    const auto i = static_cast<std::size_t>(next - m_readings.begin());
    const Node& a = m_nodes[i - 1];
    const Node& b = m_nodes[i];
    const double span = m_readings[i].time - m_readings[i - 1].time;
    const double part = (time - m_readings[i - 1].time) / span;
    const Vector3d turn = Log(b.attitude * a.attitude.conjugate());
    return {(Exp(part * turn) * a.attitude).toRotationMatrix(),
            -((1.0 - part) * a.turning + part * b.turning),
            -((1.0 - part) * a.scaled + part * b.scaled), turn / span};
}

// Level by the mean force of the first second, heading by the turn that carries the poles onto the
// track.
void MotionFit::Start(const MotionSetup& setup)
{
    m_state = {};
    m_state.height = 0.5 * setup.poleLength;
    m_forceSigma = kFirstForce;
    Integrate();
    Vector3d force = Vector3d::Zero();
    for (std::size_t i = 0; i < m_readings.size(); ++i)
        force += m_nodes[i].attitude * m_readings[i].force;
    m_state.first = Quaterniond::FromTwoVectors(force, Vector3d::UnitZ());
    Integrate();
    m_rows.clear();
    for (const SpotEpoch& epoch : m_epochs) {
        if (epoch.time < m_readings.front().time + kMargin) continue;
        if (epoch.time > m_readings.back().time - kMargin) continue;
        m_rows.emplace_back();
        m_rows.back().epoch = &epoch;
        m_rows.back().pose = PoseAt(epoch.time);
    }
    if (m_rows.empty()) return;
    Vector3d pole = Vector3d::Zero();
    Vector3d antenna = Vector3d::Zero();
    const double n = static_cast<double>(m_rows.size());
    for (const Row& row : m_rows) {
        pole += row.pose.attitude.col(2) / n;
        antenna += row.epoch->position / n;
    }
    double cosine = 0.0;
    double sine = 0.0;
    for (const Row& row : m_rows) {
        const Vector3d p = row.pose.attitude.col(2) - pole;
        const Vector3d a = row.epoch->position - antenna;
        cosine += p.x() * a.x() + p.y() * a.y();
        sine += p.x() * a.y() - p.y() * a.x();
    }
    const Quaterniond heading = Exp(std::atan2(sine, cosine) * Vector3d::UnitZ());
    m_state.first = heading * m_state.first;
    m_state.tip = antenna - setup.poleLength * (heading * pole);
}

void MotionFit::AddAntenna(const MotionSetup& setup, bool weigh)
{
    const PoleAxis axis(m_state.axis);
    const double covered = m_rows.back().epoch->time - m_rows.front().epoch->time;
    const double share =
        std::min(1.0, (covered / kIndependent + 1.0) / static_cast<double>(m_rows.size()));
    m_antennaMisfit = 0.0;
    m_squares.setZero();
    Vector3d mean = Vector3d::Zero();
    for (Row& row : m_rows) {
        row.pose = PoseAt(row.epoch->time + std::clamp(m_state.delay, -kMargin, kMargin));
        const Vector3d pole = row.pose.attitude * axis.direction;
        const double length = setup.poleLength + m_state.length;
        mean += pole / static_cast<double>(m_rows.size());
        row.residual = m_state.tip + length * pole - row.epoch->position;
        row.jacobian.middleCols<3>(spot::kTip).setIdentity();
        row.jacobian.middleCols<spot::kTurning>(spot::kTurn) =
            -length * Skew(pole) * row.pose.Turning();
        row.jacobian.middleCols<2>(spot::kAxis) = length * row.pose.attitude * axis.slope;
        row.jacobian.col(spot::kDelay) = length * row.pose.rate.cross(pole);
        row.jacobian.col(spot::kLength) = pole;
        const double plan = row.epoch->planSigma > 0.0 ? row.epoch->planSigma : setup.planSigma;
        const double up = row.epoch->heightSigma > 0.0 ? row.epoch->heightSigma : setup.heightSigma;
        if (weigh)
            row.doubt = std::min(DoubtOf(row.residual.head<2>().norm() / plan),
                                 DoubtOf(std::fabs(row.residual.z()) / up));
        const double byPlan = row.doubt * share / (plan * plan);
        row.weight = {byPlan, byPlan, row.doubt * share / (up * up)};
        const spot::Rows3 weighted = row.weight.asDiagonal() * row.jacobian;
        m_normal += row.jacobian.transpose() * weighted;
        m_right -= weighted.transpose() * row.residual;
        m_antennaMisfit += row.residual.dot(row.weight.asDiagonal() * row.residual);
        m_squares += row.residual.cwiseAbs2() / static_cast<double>(m_rows.size());
    }
    m_spread = std::sqrt(std::max(0.0, 1.0 - mean.squaredNorm()));
    m_freedom = std::max(1.0, 3.0 * share * static_cast<double>(m_rows.size()) - 6.0);
}

// Each window's mean force, without bias and own motion, is vertical and 1 g.
void MotionFit::AddForces()
{
    const double weight = 1.0 / (m_forceSigma * m_forceSigma);
    m_forceSquares = 0.0;
    m_windows = 0;
    double next = m_readings.front().time;
    for (std::size_t i = 0; i < m_readings.size(); ++i) {
        if (m_readings[i].time < next) continue;
        if (m_readings[i].time > m_readings.back().time - kWindow) break;
        next = m_readings[i].time + kHop;
        const ForceWindow window = WindowFrom(m_readings, i, m_state, *this);
        if (window.attitude.isZero(0.0)) continue;
        const Vector3d residual = window.force - Vector3d::UnitZ() - m_state.height * window.motion;
        spot::Rows3 jacobian = spot::Rows3::Zero();
        jacobian.middleCols<spot::kTurning>(spot::kTurn) =
            window.forceTurned - m_state.height * window.motionTurned;
        jacobian.middleCols<3>(spot::kForce) = -window.attitude;
        jacobian.col(spot::kHeight) = -window.motion;
        m_normal += weight * jacobian.transpose() * jacobian;
        m_right -= weight * jacobian.transpose() * residual;
        m_forceSquares += residual.squaredNorm();
        m_windows += 1;
    }
}

void MotionFit::AddPriors(const MotionSetup& setup)
{
    const auto add = [this](int at, double value, double sigma) {
        m_normal(at, at) += 1.0 / (sigma * sigma);
        m_right[at] -= value / (sigma * sigma);
    };
    for (int i = 0; i < 3; ++i) {
        add(spot::kBias + i, m_state.bias[i], kWideBias);
        add(spot::kScale + i, m_state.scale[i], kWideScale);
        add(spot::kForce + i, m_state.force[i], kWideForce);
    }
    for (int i = 0; i < 2; ++i)
        add(spot::kAxis + i, m_state.axis[i], kWideAxis);
    add(spot::kDelay, m_state.delay, kWideDelay);
    add(spot::kHeight, m_state.height - 0.5 * setup.poleLength, kWideHeight);
    add(spot::kLength, m_state.length, setup.lengthSigma);
}

void MotionFit::Take(const spot::Unknowns& step)
{
    m_state.tip += step.segment<3>(spot::kTip);
    m_state.first = (Exp(step.segment<3>(spot::kTurn)) * m_state.first).normalized();
    m_state.bias += step.segment<3>(spot::kBias);
    m_state.scale += step.segment<3>(spot::kScale);
    m_state.axis += step.segment<2>(spot::kAxis);
    m_state.delay += step[spot::kDelay];
    m_state.force += step.segment<3>(spot::kForce);
    m_state.height += step[spot::kHeight];
    m_state.length += step[spot::kLength];
}

bool MotionFit::Iterate(const MotionSetup& setup)
{
    constexpr double kStill = 1e-3; // chi-square of a step: 0.03 sigma
    for (int pass = 1; pass <= kMostPasses; ++pass) {
        Integrate();
        m_normal.setZero();
        m_right.setZero();
        AddAntenna(setup, pass <= kWeighingPasses);
        AddForces();
        AddPriors(setup);
        const Eigen::LDLT<spot::Normal> solver(m_normal);
        const spot::Unknowns step = solver.solve(m_right);
        if (!step.allFinite()) return false;
        m_covariance = solver.solve(spot::Normal::Identity());
        Take(step);
        if (!(m_state.scale.cwiseAbs().maxCoeff() < 0.5) || !(m_state.axis.norm() < 1.0))
            return false;
        if (step.dot(m_right) < kStill) return true;
    }
    return false;
}

// Twice: what the windows of the accelerations weigh is known after the first time.
bool MotionFit::Run(const MotionSetup& setup)
{
    if (m_readings.size() < 3) return false;
    Start(setup);
    if (Epochs() < kFewestEpochs) return false;
    if (!Iterate(setup) || m_windows < 4) return false;
    const double freedom = std::max(1.0, 3.0 * m_windows - 7.0);
    m_forceSigma = std::max(kLeastForce, std::sqrt(m_forceSquares / freedom));
    return Iterate(setup) && m_covariance.allFinite();
}

// A constant bias and scale follow the drift of the gyros ever less the longer it goes on.
spot::Normal MotionFit::Covariance() const
{
    constexpr double kDriftFollowed = 20.0; // [s]
    const double span = m_readings.back().time - m_readings.front().time;
    const double drift = std::max(1.0, span / kDriftFollowed);
    return drift * drift * m_covariance;
}

int MotionFit::Doubtful() const
{
    return static_cast<int>(
        std::ranges::count_if(m_rows, [](const Row& row) { return row.doubt < 0.5; }));
}

// As in Fit.cpp: at the minimum an added unknown with the columns C has the normal equations
// (CᵀWC − BᵀN⁻¹B) c = −CᵀWr, B = AᵀWC.
MotionFit::Step MotionFit::StepOfTip() const
{
    Step best;
    Vector3d own = Vector3d::Zero();
    Vector3d right = Vector3d::Zero();
    Eigen::Matrix<double, spot::kUnknowns, 3> mixed =
        Eigen::Matrix<double, spot::kUnknowns, 3>::Zero();
    for (std::size_t i = m_rows.size(); i-- > 1;) {
        const Row& row = m_rows[i];
        own += row.weight;
        right -= row.weight.cwiseProduct(row.residual);
        mixed += row.jacobian.transpose() * row.weight.asDiagonal();
        const Matrix3d reduced =
            Matrix3d(own.asDiagonal()) - mixed.transpose() * m_covariance * mixed;
        const Vector3d size = reduced.inverse() * right;
        const double gain = size.dot(right);
        if (gain > best.gain && size.allFinite()) best = {size.norm(), gain};
    }
    return best;
}

} // namespace tiltpole::field
