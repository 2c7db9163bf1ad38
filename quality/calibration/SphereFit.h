// SPDX-License-Identifier: MIT
//
// The joint fit of both turns of one magnetometer:
//
//   |M·r − o| = 1              every corrected reading lies on the unit sphere
//   (M·r − o)·up = s(turn)     the field's elevation is constant within a turn
//
// The nine weights M, the offset o and the sine s of the elevation in either turn are found by
// least squares over both conditions. Readings that a magnet spoilt lose their weight. Where the
// turns cannot tell a rotation of the magnetometer against the pole, the smaller rotation is taken.
// Derivation: docs/formulas.md, "Joint fit".
#pragma once

#include "quality/calibration/FieldModel.h"

#include <optional>

namespace tiltpole::quality {

/// Covariance of the weights by rows and of the offset, twelve numbers.
using CorrectionCovariance = Eigen::Matrix<double, 12, 12>;

struct SphereFit
{
    FullCorrection correction;        // counts to the unit sphere
    double elevationHorizontal = 0.0; // sine of the field's elevation, horizontal turn
    double elevationVertical = 0.0;   // and vertical turn
    double sphereSpread = 0.0;        // of |corrected| − 1, robust standard deviation
    double elevationSpread = 0.0;     // of corrected·up − s, robust standard deviation
    double disturbed = 0.0;           // share of readings far off either condition
    int steps = 0;                    // of the better start
    /// How well the correction is known, judged by how evenly its residuals lie along the turns.
    /// What turns all readings of both turns alike, an offset of pitch or roll, is not in it.
    CorrectionCovariance covariance = CorrectionCovariance::Zero();
};

/// Fits both turns, from two starts, and keeps the better solution.
/// @return nothing when a turn holds fewer than ten readings, when a number is not finite, or when
///         no start leads to a right-handed solution near the sensor's own axes
std::optional<SphereFit> FitSphere(const Turn& horizontal, const Turn& vertical);

} // namespace tiltpole::quality
