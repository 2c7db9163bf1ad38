// SPDX-License-Identifier: MIT
#include "quality/calibration/Verdict.h"

#include "quality/calibration/EightValues.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

namespace tiltpole::quality {
namespace {

using ::quality::CalibrationReport;
using ::quality::CalibrationRun;
using ::quality::Finding;
using ::quality::HeadingAgreement;
using ::quality::HeadingError;
using ::quality::HiddenError;
using ::quality::JointFit;
using ::quality::JointFitOutcome;
using ::quality::kGoodCertainty;
using ::quality::kGoodHeading;
using ::quality::kUsableCertainty;
using ::quality::kUsableHeading;
using ::quality::kUsableSpread;
using ::quality::TurnFigures;
using ::quality::Verdict;

// A cause is notable from these sizes on; the report names the one that exceeds its size most.
constexpr double kNotableAxis = 1.5;       // degrees
constexpr double kNotableWobble = 1.5;     // degrees
constexpr double kNotableDisturbed = 0.03; // share of readings
constexpr double kNotableGap = 60.0;       // degrees
constexpr double kNotableLoss = 0.5;       // share of the heading error

struct Cause
{
    Finding finding;
    double excess; // above one: notable
};

// Why the headings differ: the cause that stands out most.
Finding CauseOf(const CalibrationReport& report, const HeadingError& worse, double loss)
{
    const double varying =
        std::sqrt(std::max(worse.rms * worse.rms - worse.constant * worse.constant, 0.0));
    if (varying < kGoodHeading && varying < 0.6 * std::fabs(worse.constant)) {
        return Finding::ConstantHeading;
    }
    const TurnFigures& h = report.horizontal;
    const TurnFigures& v = report.vertical;
    const double gap = 360.0 - std::min(h.covered, v.covered);
    const double wobble = std::max(h.wobble, v.wobble);
    const double disturbed = std::max(report.a.disturbed, report.b.disturbed);
    const Cause causes[] = {
        {Finding::HorizontalAxis,    h.axisError / kNotableAxis       },
        {Finding::VerticalAxis,      v.axisError / kNotableAxis       },
        {Finding::Wobble,            wobble / kNotableWobble          },
        {Finding::Disturbed,         disturbed / kNotableDisturbed    },
        {Finding::SectorsMissing,    gap / kNotableGap                },
        {Finding::BeyondEightValues, loss / (kNotableLoss * worse.rms)},
    };
    const Cause& largest =
        *std::max_element(std::begin(causes), std::end(causes),
                          [](const Cause& x, const Cause& y) { return x.excess < y.excess; });
    return largest.excess >= 1.0 ? largest.finding : Finding::HeadingsRoughlyAgree;
}

// The finding for an outcome of the joint fit that is the operator's doing.
std::optional<Finding> ObstacleOf(JointFitOutcome outcome)
{
    switch (outcome) {
    case JointFitOutcome::TooFewSamples:
        return Finding::TooFewSamples;
    case JointFitOutcome::HorizontalIncomplete:
        return Finding::HorizontalIncomplete;
    case JointFitOutcome::VerticalIncomplete:
        return Finding::VerticalIncomplete;
    default:
        return {};
    }
}

void JudgeWithoutJointFit(CalibrationReport& report)
{
    report.weak = true;
    if (report.jointFit == JointFitOutcome::NotFinite) {
        report.verdict = Verdict::Refused;
        report.reason = Finding::NotFinite;
    } else if (const std::optional<Finding> obstacle = ObstacleOf(report.jointFit)) {
        report.verdict = Verdict::Poor;
        report.reason = *obstacle;
    } else {
        const bool even = std::max(report.a.spreadAfter, report.b.spreadAfter) <= kUsableSpread;
        report.verdict = even ? Verdict::Unchecked : Verdict::Poor;
        const Finding unchecked =
            report.jointFit == JointFitOutcome::Swung ? Finding::Swung : Finding::TiltUnusable;
        report.reason = even ? unchecked : Finding::FieldUneven;
    }
}

// Where A and B differ, one of them is off by so much at least, if their errors are independent.
double LeastErrorOf(const std::optional<HeadingAgreement>& agreement)
{
    return agreement ? agreement->systematic / std::sqrt(2.0) : 0.0;
}

// An offset of pitch and roll that stays does no harm to headings that are formed with it: usable
// is judged by the rest.
double InUse(HeadingError error)
{
    error.hidden.tilt = error.hidden.tiltInUse;
    return error.With(kUsableCertainty);
}

// Without gyros what the turns tell of hidden errors is half of them: all but the difference itself
// counts twice.
double InUseUnseen(const HeadingError& error)
{
    const double once = InUse(error);
    return std::sqrt(4.0 * once * once - 3.0 * error.rms * error.rms);
}

// A and B show the difference of what their gains changed by, and either may have changed by more.
double BoundOfGains(const HeadingError& error)
{
    const double once = error.With(kGoodCertainty);
    return std::sqrt(once * once + 3.0 * error.hidden.gains * error.hidden.gains);
}

double LargestDoubt(const HeadingError& error)
{
    const HiddenError& hidden = error.hidden;
    return std::max({kGoodCertainty * error.uncertainty, hidden.noise, hidden.tilt, hidden.turns});
}

// The largest of what makes a calibration uncertain beside its difference from the joint fit.
Finding DoubtOf(const HeadingError& error)
{
    const HiddenError& hidden = error.hidden;
    const double known = std::max(kGoodCertainty * error.uncertainty, hidden.noise);
    if (hidden.turns > std::max(known, hidden.tilt)) return Finding::TurnsDiffer;
    return hidden.tilt > known ? Finding::TiltOff : Finding::JointFitUncertain;
}

} // namespace

void Judge(const CalibrationRun& run, const JointModel& model, CalibrationReport& report)
{
    if (model.outcome != JointFitOutcome::Fitted) return JudgeWithoutJointFit(report);

    const HeadingError& a = *report.a.heading;
    const HeadingError& b = *report.b.heading;
    const auto larger = [&](double certainty) {
        return std::max({a.With(certainty), b.With(certainty), LeastErrorOf(report.agreement)});
    };
    const HeadingError& worse = a.rms >= b.rms ? a : b;
    report.headingError = worse.rms;
    report.headingBound = larger(kGoodCertainty);
    const bool unseen = !report.tilt.gyros;
    const auto inUse = [&](const HeadingError& error) {
        return unseen ? InUseUnseen(error) : InUse(error);
    };
    report.headingUncertainty = std::max({inUse(a), inUse(b), LeastErrorOf(report.agreement)});
    const bool isAgreed = report.headingBound < kGoodHeading;
    const bool gainsHold = std::max(BoundOfGains(a), BoundOfGains(b)) < kGoodHeading;
    report.verdict = isAgreed && gainsHold && !unseen             ? Verdict::Good
                     : report.headingUncertainty < kUsableHeading ? Verdict::Usable
                                                                  : Verdict::Poor;
    if (report.verdict == Verdict::Good) {
        report.reason = run.isJoint ? Finding::JointFitCertain : Finding::HeadingsAgree;
        return;
    }
    if (worse.rms < kGoodHeading) {
        report.reason = !isAgreed ? DoubtOf(worse)
                        : unseen  ? Finding::TiltUnseen
                                  : Finding::TurnsDiffer;
        return;
    }
    if (run.isJoint) { // what it differs from itself is the loss
        report.reason =
            worse.rms > LargestDoubt(worse) ? Finding::BeyondEightValues : DoubtOf(worse);
        return;
    }
    const JointFit eight = InEightValues(model, run.recorded, run.sensorType);
    report.reason = CauseOf(report, worse, a.rms >= b.rms ? eight.lossA : eight.lossB);
}

} // namespace tiltpole::quality
