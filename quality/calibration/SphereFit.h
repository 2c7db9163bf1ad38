// SPDX-License-Identifier: MIT
//
// The joint fit of both turns of one magnetometer:
//
//   |M·r − o| = L(turn)            the field's length is constant within a turn
//   (M·r − o)·up = L·s(turn)       and so is its elevation
//
// The nine weights M, the offset o, the sine s of the elevation in either turn and the ratio L of
// the field's length in the vertical turn to that in the horizontal one are found by least squares
// over both conditions: turns made a few steps apart in a building differ in both. Readings that a
// magnet spoilt lose their weight. Where the turns cannot tell a rotation of the magnetometer
// against the pole, the smaller rotation is taken. Derivation: docs/formulas.md, "Joint fit".
#pragma once

#include "quality/calibration/FieldModel.h"
#include "survey/TurnAxis.h"

#include <optional>

namespace tiltpole::quality {

using survey::TurnAxis;

/// Covariance of the weights by rows and of the offset, twelve numbers.
using CorrectionCovariance = Eigen::Matrix<double, 12, 12>;

struct SphereFit
{
    FullCorrection correction;        // counts to the unit sphere of the horizontal turn
    double lengthRatio = 1.0;         // length of the field, vertical turn over horizontal
    double elevationHorizontal = 0.0; // sine of the field's elevation, horizontal turn
    double elevationVertical = 0.0;   // and vertical turn
    double sphereSpread = 0.0;        // of |corrected| − 1, robust standard deviation
    double elevationSpread = 0.0;     // of corrected·up − s, robust standard deviation
    double disturbed = 0.0;           // share of readings that Keeps denies
    int steps = 0;                    // of the better start
    /// How well the correction is known, judged by how evenly its residuals lie along the turns.
    /// What turns all readings of both turns alike, an offset of pitch or roll, is not in it.
    CorrectionCovariance covariance = CorrectionCovariance::Zero();

    /// Whether noise explains how far a reading is off both conditions; false for what a magnet
    /// spoilt and for numbers that are none.
    bool Keeps(const Observation& o, TurnAxis axis) const;
};

/// Fits both turns, from two starts, and keeps the better solution.
/// @return nothing when a turn holds fewer than ten readings, when a number is not finite, or when
///         no start leads to a right-handed solution near the sensor's own axes
std::optional<SphereFit> FitSphere(const Turn& horizontal, const Turn& vertical);

} // namespace tiltpole::quality
