// SPDX-License-Identifier: MIT
/// @struct quality::JointFit
/// What the joint fit (JointFit.h) returns.
#pragma once

#include "quality/Calibration.h"

namespace quality {

enum class JointFitOutcome {
    Fitted,
    TooFewSamples,        // a turn has fewer than ten
    NotFinite,            // a reading, pitch or roll is NaN or infinite
    HorizontalIncomplete, // the horizontal turn covers less than kLeastCovered
    VerticalIncomplete,   // the vertical turn covers less than kLeastCovered
    TiltUnusable,         // pitch and roll do not follow the vertical turn, or contradict the field
    Swung,                // the accelerations of a turn are not those of a pole turned slowly
    NoSolution,           // the iteration found no correction near the sensor's own axes
};

/// Coverage that each turn needs: with less the fit can be wrong by tens of degrees. [degrees]
inline constexpr double kLeastCovered = 270.0;

struct JointFit
{
    JointFitOutcome outcome = JointFitOutcome::TooFewSamples;
    Calibration calibration; // meaningful when outcome is Fitted
    CalibrationTurns used;   // the samples that the fit kept, when outcome is Fitted
    /// What eight values cannot express: difference between their headings and those of the full
    /// correction, RMS over all headings at tilts of 0, 15 and 30 degrees. [degrees]
    double lossA = 0.0;
    double lossB = 0.0;
};

} // namespace quality
