// SPDX-License-Identifier: MIT
// The Jacobian of the antenna against automatic differentiation of the model, written once more in
// quaternions.
#include "field/occupation/Model.h"

#include <ceres/jet.h>
#include <ceres/rotation.h>

#include <gtest/gtest.h>

namespace {

using namespace tiltpole::field;
using Jet = ceres::Jet<double, kUnknowns>;
using Vector3J = Eigen::Matrix<Jet, 3, 1>;

Vector3J Rotated(const Vector3J& turn, const Vector3J& v)
{
    Vector3J result;
    ceres::AngleAxisRotatePoint(turn.data(), v.data(), result.data());
    return result;
}

Vector3J Part(const Eigen::Vector3d& value, int at)
{
    return {Jet(value.x(), at), Jet(value.y(), at + 1), Jet(value.z(), at + 2)};
}

// Attitude and its integral go on from the pose with constant slopes.
Vector3J Antenna(const Pose3& pose, const State& s, double length)
{
    const Jet delay(0.0, kDelayAt);
    Vector3J v{Jet(s.axis.x(), kAxisAt), Jet(s.axis.y(), kAxisAt + 1), Jet(1.0)};
    v = Vector3J(v / sqrt(v.squaredNorm()));
    v = Vector3J(pose.attitude.cast<Jet>() * v);
    v = Rotated(Vector3J(delay * pose.rate.cast<Jet>()), v);
    for (int i = 0; i < pose.gaps; ++i)
        v = Rotated(Part(s.gaps[static_cast<std::size_t>(i)], kGapAt + 3 * i), v);
    const Eigen::Matrix<Jet, 3, 3> turning =
        pose.turning.cast<Jet>() + delay * pose.slope.cast<Jet>();
    v = Rotated(Vector3J(-(turning * Part(s.bias, kBiasAt))), v);
    v = Vector3J(s.turn.toRotationMatrix().cast<Jet>() * v);
    v = Rotated(Part(Eigen::Vector3d::Zero(), kTurnAt), v);
    return Part(s.tip, kTipAt) + Jet(length) * v;
}

TEST(OccupationModel, JacobianIsThatOfAutomaticDifferentiation)
{
    State state;
    state.tip = {1.0, -2.0, 3.0};
    state.turn = Exp({0.3, -0.2, 1.9});
    state.bias = {0.01, -0.02, 0.015};
    state.axis = {0.02, -0.03};
    state.gaps = {Eigen::Vector3d(0.03, -0.01, 0.02), Eigen::Vector3d(-0.02, 0.04, 0.01)};
    Pose3 pose;
    pose.attitude = Exp({-0.5, 0.4, -2.0}).toRotationMatrix();
    pose.turning << 4.0, -1.0, 0.5, 1.2, 3.5, -0.3, -0.4, 0.6, 4.2;
    pose.slope = pose.attitude;
    pose.rate = {0.4, -0.9, 0.2};
    for (pose.gaps = 0; pose.gaps <= kGaps; ++pose.gaps) {
        const AntennaPrediction antenna(pose, state, PoleAxis(state.axis), 2.0);
        const Vector3J expected = Antenna(pose, state, 2.0);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(antenna.position[i], expected[i].a, 1e-12);
            for (int j = 0; j < kUnknowns; ++j)
                EXPECT_NEAR(antenna.jacobian(i, j), expected[i].v[j], 1e-11)
                    << "row " << i << " column " << j << " gaps " << pose.gaps;
        }
    }
}

} // namespace
