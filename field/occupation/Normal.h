// SPDX-License-Identifier: MIT
//
// Normal equations of an occupation, in plain loops: products of matrices whose size the compiler
// knows unroll to more code than they are worth.
#pragma once

#include "field/occupation/Model.h"

namespace tiltpole::field {

/// N x = r with N = AᵀWA and r = −AᵀWv, for the columns A and residuals v of weighted observations.
class NormalEquations
{
public:
    void Clear();
    /// Three observations, their weights and residuals.
    void Add(const AntennaJacobian& rows, const Eigen::Vector3d& weight,
             const Eigen::Vector3d& residual);
    void Add(const Unknowns& row, double weight, double residual);
    /// Two observations with a covariance: the first two rows, the third one is 0.
    /// @return their weighted sum of squares
    double AddPair(AntennaJacobian rows, const Eigen::Matrix2d& covariance,
                   const Eigen::Vector2d& residual);
    /// The unknown at `at` is 0 with a variance of 1 / weight; it is `value` now.
    void AddPrior(int at, double value, double weight);

    /// N = L Lᵀ. What follows needs it.
    /// @return false where N is not positive definite or not finite
    bool Factor();
    Unknowns Solution() const;
    NormalMatrix Inverse() const;
    /// L⁻¹ of a column, so that whitened columns a, b have aᵀb = (column a)ᵀN⁻¹(column b).
    Unknowns Whitened(const Unknowns& column) const;

private:
    Unknowns Back(const Unknowns& whitened) const;

    NormalMatrix m_matrix = NormalMatrix::Zero(); // lower triangle
    NormalMatrix m_factor = NormalMatrix::Zero(); // L
    Unknowns m_right = Unknowns::Zero();
};

} // namespace tiltpole::field
