// SPDX-License-Identifier: MIT
//
// How well the joint fit of one magnetometer is known. Derivation: docs/formulas.md, "Joint fit".
#pragma once

#include "quality/calibration/SphereSystem.h"

namespace tiltpole::quality {

/// Sum over blocks of neighboring readings of g·gᵀ, g the gradient of the cost that a block adds:
/// the effect on the solution of errors that neighbors share. Enlarged by n / (n − kUnknowns) of n
/// blocks, as the unknowns absorb a part of the errors.
Normal ScatterOfBlocks(const Scaled& data, const Unknowns& p, const Residuals& residuals,
                       const Weighting& weighting);

/// The share of a reading falls as the reading moves away, which makes the cost flatter than its
/// weights. By this factor: the mean of d(share·residual)/d(residual) over that of the shares, but
/// at least 0.25. It is near 0.7 for normal errors.
double CurvatureOf(const Weighting& weighting);

/// Covariance of the unknowns at the solution `p`, from the scatter of the blocks.
Normal CovarianceOf(const Scaled& data, const Unknowns& p);

} // namespace tiltpole::quality
