// SPDX-License-Identifier: MIT
//
// Poses and epochs of a live pole as field::Occupation takes them.
#pragma once

#include "field/Bridge.h"
#include "field/Occupation.h"

namespace tiltpole::field {

/// @param declination  [degrees]; not used where the file holds the north
::field::OccupationSetup OccupationSetupOf(const ::field::Setup& setup, double declination);

/// @param disturbed  the field is not believed
::field::InertialSample InertialSampleOf(const ::field::Setup& setup,
                                         const ::field::PoseSample& pose, bool disturbed);

/// In meters north, east and up of `origin`.
::field::AntennaEpoch AntennaEpochOf(const ::field::Geodetic& origin, const ::field::Epoch& epoch);

/// Of the tip; what all positions share included.
::field::Covariance3 CovarianceOf(const ::field::OccupationEstimate& estimate);

} // namespace tiltpole::field
