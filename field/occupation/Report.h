// SPDX-License-Identifier: MIT
//
// What an estimate reports of a fit beside the tip: residuals, attitude, and all of a fit without
// gyros.
#pragma once

#include "field/Occupation.h"
#include "field/occupation/Fit.h"
#include "field/occupation/GyroFree.h"

namespace tiltpole::field {

using ::field::OccupationEstimate;
using ::field::OccupationSetup;

/// An angle of any size [degrees], in [0, 360).
double InCircle(double degrees);

void SetResiduals(OccupationEstimate& e, const Fitter& fitter);

/// Heading and lean at the track's end.
/// @param factor  of the variances of the fit
void SetAttitude(OccupationEstimate& e, const Fit& fit, const Track& track, double factor);

/// All of a fit without gyros but the tip itself, and the advice.
void SetWithoutGyros(OccupationEstimate& e, const GyroFreeFit& fit, const OccupationSetup& setup);

} // namespace tiltpole::field
