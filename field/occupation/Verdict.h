// SPDX-License-Identifier: MIT
//
// What is to be done with an estimate, and why.
#pragma once

#include "field/Occupation.h"
#include "field/occupation/Alternatives.h"

namespace tiltpole::field {

using ::field::OccupationAdvice;
using ::field::OccupationEstimate;
using ::field::OccupationReason;
using ::field::OccupationSetup;

/// What was counted while samples and epochs came in.
struct Counts
{
    int samples = 0;
    int epochs = 0;
    int late = 0; // not later than the one before
    int notFinite = 0;
};

/// Sets advice and reason, and returns true where the samples themselves are at fault or too few.
/// @param gyros  whether the attitude is integrated: without, gaps do no harm
bool RefusesInput(OccupationEstimate& estimate, const Track& track, const Counts& counts,
                  bool gyros);

/// Sets advice and reason of an estimate by all sensors.
void Judge(OccupationEstimate& estimate, const Fitter& fitter, const Alternatives& alternatives,
           const FitSetup& fitSetup, const OccupationSetup& setup);

/// Sets advice and reason of an estimate by its size alone; heading: its part of the semi-major
/// axis [m].
void JudgeSize(OccupationEstimate& estimate, double heading, double vertical,
               const OccupationSetup& setup);

/// Error of the pole's length that the track excludes with 99 % [m]; not finite where it shows
/// none.
double LengthBound(const OccupationEstimate& estimate);

/// Takes Store back where a harmful error of the pole's length is not excluded.
void JudgeLength(OccupationEstimate& estimate);

/// Takes Store back where the tip jumped, or where a harmful step of it is not excluded.
/// @param bound  of such a step, with 99 % [m]
void JudgeStep(OccupationEstimate& estimate, const Jump& jump, double bound);

} // namespace tiltpole::field
