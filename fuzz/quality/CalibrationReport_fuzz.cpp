// SPDX-License-Identifier: MIT
//
// The report on any calibration of turns of any quality: a calibration that is not finite is refused, an
// accepted one has been compared with the joint fit and is inside the limits, and the words go with the
// verdict.
#include "fuzz/quality/HostileTurns.h"
#include "quality/CalibrationReport.h"
#include "quality/SolverRun.h"

namespace {

using fuzz::Input;
using fuzz::Require;
using quality::Verdict;

Incline_MagneticCorrectParameter CorrectionOf(const fuzz::Iron& iron, Input& input)
{
    // Near the inverse of the distortion, and often not quite.
    const double off = input.Below(2) == 0 ? input.Between(-0.3, 0.3) : 0.0;
    Incline_MagneticCorrectParameter c;
    c.x0 = iron.offset[0];
    c.a = -iron.share[0] / iron.gain[1];
    c.b = iron.gain[0] / iron.gain[1] + off;
    c.y0 = c.a * iron.offset[0] + c.b * iron.offset[1];
    c.c = -iron.share[1] / iron.gain[2];
    c.e = iron.gain[0] / iron.gain[2];
    c.z0 = c.c * iron.offset[0] + c.e * iron.offset[2];
    double* const fields[] = {&c.x0, &c.y0, &c.z0, &c.a, &c.b, &c.c, &c.d, &c.e};
    if (input.Below(8) == 0) *fields[input.Below(8)] = input.Number();
    return c;
}

bool IsFinite(const Incline_MagneticCorrectParameter& c)
{
    for (const double value : {c.x0, c.y0, c.z0, c.a, c.b, c.c, c.d, c.e})
        if (!std::isfinite(value)) return false;
    return true;
}

void CheckTurn(const quality::TurnFigures& turn, std::size_t recorded)
{
    Require(turn.recorded == static_cast<int>(recorded));
    Require(turn.used >= 0 && turn.covered >= 0.0 && turn.covered <= 360.0);
    for (const quality::MissingSector& sector : turn.missing) {
        Require(sector.from >= 0 && sector.from <= 360 && sector.to >= 0 && sector.to <= 360);
        Require(sector.Name().size() == 7);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    quality::CalibrationRun run;
    run.sensorType = 1 + input.Below(3);
    run.solverAnswer = input.Below(8) == 0 ? 0 : 1;
    run.isJoint = input.Below(8) == 0;
    const fuzz::Iron iron[2] = {fuzz::IronOf(input), fuzz::IronOf(input)};
    run.calibration.correctionA = CorrectionOf(iron[0], input);
    run.calibration.correctionB = CorrectionOf(iron[1], input);
    if (input.Below(8) == 0) run.calibration.biasAngleA = input.Number();
    run.recorded.horizontal = fuzz::TurnOf(iron, false, input);
    run.recorded.vertical = fuzz::TurnOf(iron, true, input);
    run.used = input.Below(2) == 0 ? run.recorded : ScreenTurns(run.recorded);

    const quality::CalibrationReport report = AssessCalibration(run);
    Require(!ToText(report).empty() && !Headline(report).empty());
    Require(Headline(report).starts_with(Name(report.verdict)));
    Require(!Explain(report.reason).empty() && !Name(report.reason).empty());
    CheckTurn(report.horizontal, run.recorded.horizontal.size());
    CheckTurn(report.vertical, run.recorded.vertical.size());
    const bool isFinite = IsFinite(run.calibration.correctionA)
                          && IsFinite(run.calibration.correctionB)
                          && std::isfinite(run.calibration.biasAngleA);
    if (!isFinite || run.solverAnswer == 0) Require(!IsAccepted(report.verdict));
    if (!IsAccepted(report.verdict)) return 0;
    Require(!report.weak && report.headingUncertainty < quality::kUsableHeading);
    Require(report.a.heading.has_value() && report.b.heading.has_value());
    if (report.verdict == Verdict::Good) Require(report.headingBound < quality::kGoodHeading);
    return 0;
}
