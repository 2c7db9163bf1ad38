// SPDX-License-Identifier: MIT
//
// What errors of the antenna that last for seconds add to the variance of a tip. The fit takes the
// means of two seconds for independent; errors that last for longer move all epochs alike, and the
// tip with them, and leave residuals that are small.
#pragma once

#include "field/occupation/Fit.h"

namespace tiltpole::field {

/// Part of a variance that the mean over `span` keeps where errors fade with exp(-t / lasting).
double KeptByMean(double span, double lasting);

/// Variances to be added to north, west and up of the tip [m²].
/// @param fitter  at its solution with `setup`
Eigen::Vector3d LastingVariance(const Fitter& fitter, const FitSetup& setup);

} // namespace tiltpole::field
