// SPDX-License-Identifier: MIT
//
// What the accelerometers say about the vertical, and whether they belong to a pole on its tip.
//
// A mean of the specific force over a window is the vertical but for the change of the sensor's
// velocity. With the weight w(t) = 30/T⁵·t²·(T − t)², which vanishes with its slope at both ends,
//
//   ∫ w·a dt = ∫ w''·x dt
//
// so that what is left of the sensor's own motion is of the size of its positions x, not of the
// velocities at two instants. Where the sensor moves with the pole, x = s·p(t) takes off the rest.
// Derivation: docs/occupation.md, "Mean gravity".
#pragma once

#include "field/occupation/Model.h"
#include "field/occupation/Track.h"

#include <array>

namespace tiltpole::field {

inline constexpr double kGravity = 9.80665; // of the unit g [m/s²]

/// The weighted specific force of a window in the frame of the first guess.
struct MeanForce
{
    Eigen::Vector3d force = Eigen::Vector3d::Zero();    // [g]
    Eigen::Matrix3d byBias = Eigen::Matrix3d::Zero();   // its derivative by the gyro biases [g·s]
    Eigen::Matrix3d attitude = Eigen::Matrix3d::Zero(); // mean, of the same weight
    std::array<Eigen::Matrix3d, kGaps> byGap{Eigen::Matrix3d::Zero(), Eigen::Matrix3d::Zero()};
    Eigen::Vector3d ownMotion =
        Eigen::Vector3d::Zero(); // acceleration of a point 1 m up the pole [g]
};

/// Over the part [from, to] of the track [s].
MeanForce MeanForceOf(const Track& track, double from, double to);

/// How the accelerations go with the motion of the pole.
struct OwnMotion
{
    double lever = 0.0;     // height of the sensor above the tip that fits best [m]
    double explained = 0.0; // part of the accelerations' variance that it explains, 0 to 1
    double swing = 0.0;     // root mean square acceleration of a point 1 m up the pole [g]
    double rest = 0.0;      // root mean square of what the lever leaves, of each coordinate [g]
    double all = 0.0;       // the same without a lever [g]
    int windows = 0;
};

OwnMotion OwnMotionOf(const Track& track);

} // namespace tiltpole::field
