// SPDX-License-Identifier: MIT
#include "field/occupation/Trend.h"

#include "field/occupation/Gravity.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr double kPart = 2.0 / 3.0; // of the occupation, of either mean
// What the noise of gyros adds up to; simulated means agree within half of it.
constexpr double kGyroWalk = 0.0005; // [rad/√s]

} // namespace

WithTrend AddTrend(const Fitter& fitter, const Track& track, const FitSetup& setup)
{
    WithTrend with{fitter.Normal()};
    const double from = track.Nodes().front().time;
    const double to = track.End().time;
    const double part = kPart * (to - from);
    const MeanForce early = MeanForceOf(track, from, from + part);
    const MeanForce late = MeanForceOf(track, to - part, to);
    const State& state = fitter.Result().state;
    const Eigen::Matrix3d turn = state.turn.toRotationMatrix();
    const auto forceOf = [&](const MeanForce& m) {
        Eigen::Vector3d force = m.force - setup.lever * m.ownMotion + m.byBias * state.bias;
        for (std::size_t i = 0; i < kGaps; ++i)
            force += m.byGap[i] * state.gaps[i];
        return Eigen::Vector3d(turn * force);
    };
    const Eigen::Vector3d last = forceOf(late);
    const Eigen::Vector3d force = last - forceOf(early);
    const double magnitude = std::max(0.1, last.norm());
    const double motion = std::sqrt(2.0) * setup.ownMotion / std::max(1.0, part * part);
    const double walk = kGyroWalk * std::sqrt((1.0 - kPart) * (to - from));
    const Eigen::Matrix<double, 2, 3> sensor =
        (turn * (late.attitude - early.attitude)).topRows<2>();
    Eigen::Matrix2d covariance = setup.forceSigma * setup.forceSigma * sensor * sensor.transpose();
    covariance.diagonal().array() += motion * motion + walk * walk;
    AntennaJacobian jacobian = AntennaJacobian::Zero();
    jacobian.middleCols<3>(kTurnAt) = -Skew(force) / magnitude;
    jacobian.middleCols<3>(kBiasAt) = turn * (late.byBias - early.byBias) / magnitude;
    for (std::size_t i = 0; i < kGaps; ++i)
        jacobian.middleCols<3>(kGapAt + 3 * static_cast<int>(i)) =
            turn * (late.byGap[i] - early.byGap[i]) / magnitude;
    const Eigen::Vector2d level = force.head<2>() / magnitude;
    with.normal.AddPair(jacobian, covariance, level);
    if (!with.normal.Factor()) return {};
    with.step = with.normal.Solution();
    with.known = with.step.allFinite();
    const Eigen::Vector2d left = level + jacobian.topRows<2>() * with.step;
    with.misfit = level.dot(covariance.inverse() * left);
    return with;
}

} // namespace tiltpole::field
