// SPDX-License-Identifier: MIT
//
// The joint fit of turns of any quality: what it finds is finite, comes of samples that were recorded,
// is accepted only with a bound on its headings, and is found again from the same samples.
#include "fuzz/quality/HostileTurns.h"
#include "quality/CalibrationReport.h"
#include "quality/JointFit.h"
#include "quality/SolverRun.h"

#include <cstring>

namespace {

using fuzz::Input;
using fuzz::Require;
using quality::JointFitOutcome;

// Two records of doubles, bit for bit.
template <class Record>
bool AreEqual(const Record& a, const Record& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool IsFinite(const Incline_MagneticCorrectParameter& c)
{
    for (const double value : {c.x0, c.y0, c.z0, c.a, c.b, c.c, c.d, c.e})
        if (!std::isfinite(value)) return false;
    return true;
}

void CheckFit(const quality::JointFit& fit, const quality::CalibrationTurns& turns)
{
    Require(!Describe(fit.outcome).empty());
    if (fit.outcome != JointFitOutcome::Fitted) return;
    Require(turns.horizontal.size() >= 10 && turns.vertical.size() >= 10);
    Require(IsFinite(fit.calibration.correctionA) && IsFinite(fit.calibration.correctionB));
    Require(std::fabs(fit.calibration.biasAngleA) <= 360.0);
    Require(std::fabs(fit.calibration.biasAngleB) <= 360.0);
    Require(fit.lossA >= 0.0 && std::isfinite(fit.lossA));
    Require(fit.lossB >= 0.0 && std::isfinite(fit.lossB));
    Require(!fit.used.horizontal.empty() && fit.used.horizontal.size() <= turns.horizontal.size());
    Require(!fit.used.vertical.empty() && fit.used.vertical.size() <= turns.vertical.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int type = 1 + input.Below(3);
    const quality::CalibrationTurns turns = fuzz::TurnsOf(input);
    const quality::JointFit fit = FitJointly(turns, type);
    CheckFit(fit, turns);
    if (fuzz::IsOneIn(16, data, size)) {
        const quality::JointFit again = FitJointly(turns, type);
        Require(again.outcome == fit.outcome && AreEqual(again.calibration, fit.calibration));
    }

    const quality::CalibrationRun run = RunJointFit(turns, type);
    Require((run.solverAnswer != 0) == (fit.outcome == JointFitOutcome::Fitted));
    const quality::CalibrationReport report = AssessCalibration(run);
    Require(!ToText(report).empty() && !Headline(report).empty());
    if (!IsAccepted(report.verdict)) return 0;
    Require(fit.outcome == JointFitOutcome::Fitted && !report.weak);
    Require(report.headingUncertainty >= 0.0
            && report.headingUncertainty < quality::kUsableHeading);
    if (report.verdict == quality::Verdict::Good)
        Require(report.headingBound >= 0.0 && report.headingBound < quality::kGoodHeading);
    return 0;
}
