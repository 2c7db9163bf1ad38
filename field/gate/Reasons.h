// SPDX-License-Identifier: MIT
//
// The words of the gate: one sentence for each reason, with the value and its limit.
#pragma once

#include "field/Bridge.h"

#include <string_view>
#include <vector>

namespace tiltpole::field {

using ::field::Reason;
using ::field::State;

/// What a reason alone makes of an epoch; notes: Store.
State StateOf(Reason::Code code);

/// What all of them make of it; none: Store.
State WorstOf(const std::vector<Reason>& reasons);

/// Whether the tip counts as unknown, so that no sentence carries it: the receiver, the pose or the
/// heading fails, or the antenna's position itself is doubted (Jump).
bool HidesTip(Reason::Code code);

// Each takes what was found, then its limit. Ages, silence and gaps [s], sigmas [m], angles
// [degrees].
Reason NoReceiver(double silence);
Reason BaudRate(double seconds);
Reason NoFix();
Reason NotFixed(::field::Fix fix);
Reason NoPose(double silence, std::string_view fault);
Reason PoseGap(double gap, double limit);
Reason SensorStuck(std::string_view fault);
Reason FieldStrength(double part, double limit);
Reason FieldDip(double difference, double limit);
Reason MagnetometersDiffer(double part, double limit);
Reason NoCalibration(bool incomplete);
Reason CalibrationPoor();
Reason CorrectionAge(double age, double limit);
Reason Satellites(int satellites, int limit);
Reason EpochOld(double age, double limit);
Reason BaseChanged(std::string_view from, std::string_view to);
Reason DatumStep(double step, double limit);
Reason Jump(double step, double explained);
Reason BadLines(double part, double limit);
Reason PlanSigma(double sigma, double limit);
Reason HeightSigma(double sigma, double limit);
Reason TimeSigma(double sigma, double limit);
Reason Lean(double lean, double limit);
Reason Moving(double speed, double limit);
Reason Settling(double still, double limit);
Reason TimeStep();
Reason LeanNoted(double lean, double limit);
Reason CalibrationOld(double days, double limit);
Reason SigmaAssumed();
Reason CoarseText(int decimals);
Reason OneMagnetometer();

} // namespace tiltpole::field
