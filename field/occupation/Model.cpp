// SPDX-License-Identifier: MIT
#include "field/occupation/Model.h"

namespace tiltpole::field {

using Eigen::Matrix3d;
using Eigen::Vector3d;

State State::After(const Unknowns& step) const
{
    State next = *this;
    next.tip = tip + step.segment<3>(kTipAt);
    next.turn = (Exp(step.segment<3>(kTurnAt)) * turn).normalized();
    next.bias = bias + step.segment<3>(kBiasAt);
    next.axis = axis + step.segment<2>(kAxisAt);
    next.delay = delay + step[kDelayAt];
    for (int i = 0; i < kGaps; ++i)
        next.gaps[static_cast<std::size_t>(i)] += step.segment<3>(kGapAt + 3 * i);
    return next;
}

PoleAxis::PoleAxis(const Eigen::Vector2d& axis)
{
    const Vector3d long3(axis.x(), axis.y(), 1.0);
    const double length = long3.norm();
    direction = long3 / length;
    const Matrix3d across = (Matrix3d::Identity() - direction * direction.transpose()) / length;
    slope = across.leftCols<2>();
}

AntennaPrediction::AntennaPrediction(const Pose3& pose, const State& state, const PoleAxis& axis,
                                     double length)
{
    const Vector3d drift = -pose.turning * state.bias;
    const Matrix3d turn = state.turn.toRotationMatrix();
    const Matrix3d rotation = turn * Exp(drift).toRotationMatrix();
    Matrix3d hidden = Matrix3d::Identity();
    for (std::size_t i = 0; i < static_cast<std::size_t>(pose.gaps); ++i)
        hidden = Exp(state.gaps[i]).toRotationMatrix() * hidden;
    const Matrix3d attitude = rotation * hidden * pose.attitude;
    pole = attitude * axis.direction;
    position = state.tip + length * pole;
    const Matrix3d rotated = -length * Skew(pole); // by a turn of the world
    const Matrix3d byDrift = turn * LeftJacobian(drift);
    jacobian.middleCols<3>(kTipAt).setIdentity();
    jacobian.middleCols<3>(kTurnAt) = rotated;
    jacobian.middleCols<3>(kBiasAt) = -rotated * byDrift * pose.turning;
    jacobian.middleCols<2>(kAxisAt) = length * attitude * axis.slope;
    jacobian.col(kDelayAt) =
        rotated * (rotation * hidden * pose.rate - byDrift * (pose.slope * state.bias));
    Matrix3d later = rotation;
    for (int i = pose.gaps - 1; i >= 0; --i) {
        const Vector3d& gap = state.gaps[static_cast<std::size_t>(i)];
        jacobian.middleCols<3>(kGapAt + 3 * i) = rotated * later * LeftJacobian(gap);
        later = later * Exp(gap).toRotationMatrix();
    }
}

} // namespace tiltpole::field
