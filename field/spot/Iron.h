// SPDX-License-Identifier: MIT
//
// Hard and soft iron of a magnetometer whose attitude is known.
//
//   reading = (I + E)·Z·Rᵀ·m + h
//
//   m  field in the world: north, west, up; E  soft iron, E(0, 0) = 0; h  hard iron
//   Z  identity for A, diag(−1, −1, 1) for B
//
// Derivation: docs/occupation.md, "Calibration on the spot".
#pragma once

#include "field/spot/Motion.h"

#include "positioning/MagneticParameters.h"

namespace tiltpole::field {

struct Iron
{
    bool solved = false;
    Eigen::Vector3d field = Eigen::Vector3d::Zero();    // m
    Eigen::Vector3d hard = Eigen::Vector3d::Zero();     // h
    Eigen::Matrix3d soft = Eigen::Matrix3d::Identity(); // I + E
    Eigen::Matrix<double, 15, 15> covariance;           // of m, h, E by columns
    double residual = 0.0;                              // root mean square of each component
};

/// @param which  0 for A, 1 for B
Iron IronOf(const std::vector<SpotReading>& readings, const MotionFit& motion, int which);

/// The correction of the parameter file that comes closest to undoing the iron, over all headings
/// and leans to 25 degrees.
struct IronCorrection
{
    Incline_MagneticCorrectParameter values;
    Eigen::Vector3d field = Eigen::Vector3d::Zero(); // of corrected readings, in the world
};

/// @param axes  from raw readings of the sensor to those of `iron`
IronCorrection CorrectionOf(const Iron& iron, const Eigen::Matrix3d& axes, int which);

} // namespace tiltpole::field
