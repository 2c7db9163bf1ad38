// SPDX-License-Identifier: MIT
//
// Where the antenna of a pole is, as a function of what an occupation leaves unknown.
//
//   antenna = tip + L·D·Exp(−J(t)·b)·G(t)·R(t)·n,   t = epoch + delay
//   n = (ax, ay, 1) / √(1 + ax² + ay²)
//
//   R, J   attitude of the first guess and its integral (Track.h)
//   D      rotation that the first guess lacks, in the world
//   b      gyro biases [rad/s], in the sensor
//   ax, ay the pole's axis in the sensor, as tangents
//   G      turns that gaps of the gyros hide, in the frame of the first guess: those of the gaps before t
//
// Derivation: docs/occupation.md, "Model" and "Jacobian".
#pragma once

#include "field/occupation/Rotations.h"
#include "field/occupation/Track.h"

#include <Eigen/Core>

#include <array>

namespace tiltpole::field {

// Places of the unknowns.
inline constexpr int kTipAt = 0;
inline constexpr int kTurnAt = 3; // of D, in the world: [rad]
inline constexpr int kBiasAt = 6;
inline constexpr int kAxisAt = 9;
inline constexpr int kDelayAt = 11;
inline constexpr int kGapAt = 12; // three of each gap [rad]
inline constexpr int kGaps = 2;
inline constexpr int kUnknowns = 12 + 3 * kGaps;

using Unknowns = Eigen::Matrix<double, kUnknowns, 1>;
using NormalMatrix = Eigen::Matrix<double, kUnknowns, kUnknowns>;
using AntennaJacobian = Eigen::Matrix<double, 3, kUnknowns>;

struct State
{
    Eigen::Vector3d tip = Eigen::Vector3d::Zero();
    Eigen::Quaterniond turn = Eigen::Quaterniond::Identity(); // D
    Eigen::Vector3d bias = Eigen::Vector3d::Zero();
    Eigen::Vector2d axis = Eigen::Vector2d::Zero();
    double delay = 0.0; // the antenna epochs are stamped this much too early [s]
    std::array<Eigen::Vector3d, kGaps> gaps{Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero()};

    /// The state after a step; the turn of the step is applied on the left of D.
    State After(const Unknowns& step) const;
};

/// The pole's axis in the sensor, and its derivatives by ax and ay.
struct PoleAxis
{
    Eigen::Vector3d direction;
    Eigen::Matrix<double, 3, 2> slope;

    explicit PoleAxis(const Eigen::Vector2d& axis);
};

/// The antenna at a pose of the track, and its derivatives by the unknowns.
struct AntennaPrediction
{
    Eigen::Vector3d position;
    Eigen::Vector3d pole; // unit vector, tip to antenna
    AntennaJacobian jacobian = AntennaJacobian::Zero();

    AntennaPrediction(const Pose3& pose, const State& state, const PoleAxis& axis, double length);
};

} // namespace tiltpole::field
