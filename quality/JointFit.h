// SPDX-License-Identifier: MIT
/// @file
/// The joint fit: a second way from the two turns to the calibration, beside
/// CInclineSensor_MagneticAdjust.
///
///     sphere    all corrected readings of both turns have the same length
///     vertical  the angle between field and vertical is constant within each turn
///
/// Both conditions are true whatever axis the pole was turned about, so a slanting axis, an
/// unsteady hand or a passing magnet does little harm; pitch and roll must be usable. The full
/// correction of each magnetometer is reduced to the usual eight values and a bias angle, so that a
/// host stores the result like that of the solver. Derivation and measured errors:
/// docs/formulas.md, "Joint fit", and docs/calibration-quality.md.
///
///     const JointFit fit = FitJointly(turns);
///     if (fit.outcome == JointFitOutcome::Fitted) Store(fit.calibration);
///     else Show(Describe(fit.outcome));
///
/// Angles are in degrees, readings in raw sensor counts.
#pragma once

#include "framework/core/Export.h"
#include "quality/JointFitResult.h"

#include <string_view>

namespace quality {

/// Calibrates both magnetometers from both turns.
/// @param turns       raw samples, screened or not
/// @param sensorType  as for CInclineSensor_Position::SetSensorType
TILTPOLE_API JointFit FitJointly(const CalibrationTurns& turns, int sensorType = 1);

/// The outcome as half a sentence: "the vertical turn covers less than 270 degrees"; empty for a
/// number that is none.
TILTPOLE_API std::string_view Describe(JointFitOutcome outcome);

} // namespace quality
