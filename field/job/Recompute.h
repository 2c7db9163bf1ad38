// SPDX-License-Identifier: MIT
/// @file
/// A stored point once more, with another pole length, delay or calibration.
///
///     field::Setup setup = ...;        // of the stored point
///     setup.poleLength = 1.8;
///     const field::JobRecord again = field::Recomputed(*point, *epochs, setup, 0.0);
///
/// The epochs that the point was averaged from are read again from their lines and solved; those
/// that were left out stay so. With another delay the pose of an epoch lies between the poses of
/// the point's epochs, by the rules of field/pose/PoseRing.h: the first and the last epoch may drop
/// out.
#pragma once

#include "field/Bridge.h"
#include "field/job/JobRecord.h"
#include "framework/core/Export.h"

#include <span>

namespace field {

/// @param setup        that the new point is computed with
/// @param delayChange  its delay minus that of the stored point's setup [s]
/// @return point and epochs as JobRecordOf; name, code, note, gate and forced of the stored point, which
///         it replaces; `error` where no epoch gives a tip
TILTPOLE_API JobRecord Recomputed(const JobPoint& stored, std::span<const JobEpoch> epochs,
                                  const Setup& setup, double delayChange);

} // namespace field
