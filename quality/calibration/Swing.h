// SPDX-License-Identifier: MIT
//
// Whether a turn was swung, by its accelerations. A pole that is turned slowly feels gravity alone,
// 1 g; one that is swung feels what keeps it on its path, too, and pitch and roll follow the sum.
//
//   length   |a| is 1 g; a sample further off than kMostOff is left out of the joint fit
//   outward  a = gravity + b, and b turns with the pole: regressed on the angle turned, a has the
//            constant part (a·n)·n + b, with n the axis of the turn from the gyros
//
// A swing outward of a steady horizontal turn lengthens 1 g to √(1 + b²) only, 1.044 g for 0.3 g
// that tilt the apparent vertical by 17 degrees: hence the second figure, and a limit of its own
// for the median length. Derivation and limits: docs/formulas.md, "Swung turns".
#pragma once

#include "quality/Calibration.h"
#include "quality/TurnFigures.h"
#include "survey/TurnAxis.h"

namespace tiltpole::quality {

using ::quality::CalibrationTurns;
using ::quality::TurnAcceleration;
using survey::TurnAxis;

inline constexpr double kMostOff = 0.1;         // of one sample's |a| from 1 [g]
inline constexpr double kMostOffMedian = 0.03;  // of the median |a| of a turn from 1 [g]
inline constexpr double kMostOutward = 0.08;    // of b: 5 degrees of apparent tilt [g]
inline constexpr double kSteady = 0.005;        // of b, as turns without any swing show [g]
inline constexpr double kMostLeftOut = 1.0 / 3; // share of a turn's samples

/// What the accelerations of a turn say.
/// @return nothing where none are recorded: all zero, or not finite
std::optional<TurnAcceleration> AccelerationOf(const std::vector<PoseSensorData>& samples,
                                               TurnAxis axis);

/// Whether a turn must not be judged by its pitch and roll; false where nothing is recorded.
bool IsSwung(const std::optional<TurnAcceleration>& acceleration);

/// By how much b, beyond kSteady, tilts the apparent vertical of a turn that is not swung by
/// IsSwung; 0 where it is not known. [degrees]
double ApparentTilt(const std::optional<TurnAcceleration>& acceleration);

/// The samples within kMostOff; all of a turn where none are recorded.
CalibrationTurns WithoutSwing(const CalibrationTurns& turns);

} // namespace tiltpole::quality
