// SPDX-License-Identifier: MIT
//
// The joint fit: a second way from the two turns to the calibration, beside
// CInclineSensor_MagneticAdjust.
//
//   sphere    every corrected reading of both turns has one length
//   vertical  the angle between field and vertical is constant within each turn
//
// Both conditions hold whatever axis the pole was turned about, so a slanting axis, an unsteady
// hand or a passing magnet does little harm; pitch and roll must be usable. The full correction of
// a magnetometer is brought into the same eight values and a bias angle, so that a host stores the
// result as it stores that of the solver. Derivation and measured errors: docs/formulas.md, "Joint
// fit", and docs/calibration-quality.md.
//
//     const JointFit fit = FitJointly(turns);
//     if (fit.outcome == JointFitOutcome::Fitted) Store(fit.calibration);
#pragma once

#include "framework/core/Export.h"
#include "quality/Calibration.h"

#include <string_view>

namespace quality {

enum class JointFitOutcome {
    Fitted,
    TooFewSamples,        // a turn has fewer than ten
    NotFinite,            // a reading, pitch or roll is no number
    HorizontalIncomplete, // less than kLeastCovered of the horizontal turn
    VerticalIncomplete,   // less than kLeastCovered of the vertical turn
    TiltUnusable,         // pitch and roll do not follow the vertical turn, or contradict the field
    NoSolution,           // the iteration found no correction near the sensor's own axes
};

/// A turn must be covered at least so far. Below, the fit can be tens of degrees wrong. [degrees]
inline constexpr double kLeastCovered = 270.0;

struct JointFit
{
    JointFitOutcome outcome = JointFitOutcome::TooFewSamples;
    Calibration calibration; // meaningful when outcome is Fitted
    /// How far the headings of the eight values stay from those of the full correction, RMS over
    /// all headings at tilts of 0, 15 and 30 degrees: what eight values cannot express. [degrees]
    double lossA = 0.0;
    double lossB = 0.0;
};

/// Calibrates both magnetometers from both turns.
/// @param turns       raw samples; screened or not
/// @param sensorType  as CInclineSensor_Position::SetSensorType takes it
TILTPOLE_API JointFit FitJointly(const CalibrationTurns& turns, int sensorType = 1);

/// The outcome as half a sentence: "the vertical turn covers less than 270 degrees".
TILTPOLE_API std::string_view Describe(JointFitOutcome outcome);

} // namespace quality
