// SPDX-License-Identifier: MIT
//
// Whether the vertical by the accelerometers stays where it is while the gyros carry the attitude.
// A tip that glides and a bias of the gyros look alike to the antenna; the bias tilts the vertical
// as time goes by, and the glide does not.
//
//   y = level part of (mean force late − mean force early) / g,   0 but for biases and own motion
//
// Both means have the weight of Gravity.h, each over two thirds of the occupation.
#pragma once

#include "field/occupation/Fit.h"

namespace tiltpole::field {

/// The normal equations of a fit with this observation beside the others.
struct WithTrend
{
    NormalEquations normal{};         // factored
    Unknowns step = Unknowns::Zero(); // from the fit's solution to theirs
    double misfit = 0.0;              // by which theirs is larger
    bool known = false;               // whether there was one
};

/// @param fitter  at its solution with `setup`
WithTrend AddTrend(const Fitter& fitter, const Track& track, const FitSetup& setup);

} // namespace tiltpole::field
