// SPDX-License-Identifier: MIT
//
// What a fitted tip may be off by: the 95 % ellipse in plan and the 95 % interval of the height.
//
//   tip error = independent antenna errors, carried through the fit
//             + what all positions share (antenna errors that do not average, the antenna height)
//
// The residuals show the size of the first part only. Derivation: docs/formulas.md, "Honest tip
// estimate".
#pragma once

#include "quality/TipEstimate.h"
#include "quality/tip/TipFit.h"

namespace tiltpole::quality {

/// The size of the independent errors: the residuals and the errors that were stated, pooled as if
/// the statement rested on ten redundant observations, and never below the statement. Residuals
/// that are small by luck must not shrink a region: regions that pass a limit would then be those
/// whose luck was largest. Where the residuals contradict the statement (chi-square, 99 %), they
/// alone count.
class ErrorScale
{
public:
    ErrorScale(double misfit, int freedom);

    double Variance() const { return m_variance; } // of unit weight, at least 1
    int Freedom() const { return m_freedom; }      // of that variance

private:
    double m_variance;
    int m_freedom;
};

struct TipRegion
{
    Eigen::Matrix3d covariance = Eigen::Matrix3d::Zero(); // [m²]
    double major = 0.0; // semi-axes of the ellipse [m], infinite where the fit leaves it open
    double minor = 0.0;
    double azimuth = 0.0; // of the major axis [degrees], in [0, 180)
    double height = 0.0;  // half of the interval [m], infinite likewise
};

/// @param cofactor  inverse of the fit's normal matrix [m²]
TipRegion RegionOf(const TipFit& fit, const Eigen::Matrix3d& cofactor,
                   const ::quality::AntennaErrors& errors);

} // namespace tiltpole::quality
