// SPDX-License-Identifier: MIT
//
// The covariance of a tip in the form that an estimate reports.
#pragma once

#include "field/Occupation.h"

#include <Eigen/Core>

namespace tiltpole::field {

/// Sets covariance, ellipse and height interval.
/// @param own     of north, west, up, from the fit, before scaling [m²]
/// @param factor  of its variance, not below 1; below it counts as 1
void SetRegion(::field::OccupationEstimate& estimate, const Eigen::Matrix3d& own, double factor,
               const ::field::OccupationSetup& setup);

/// The factor of the stated variances: residuals and statement pooled as if the statement rested on
/// `statement` observations.
double PooledFactor(double misfit, double freedom, double statement = 10.0);

} // namespace tiltpole::field
