// SPDX-License-Identifier: MIT
#include "quality/CalibrationReport.h"

#include "quality/JointFit.h"
#include "quality/calibration/Text.h"

namespace inside = tiltpole::quality;

namespace quality {
namespace {

using inside::Fixed;

struct FindingText
{
    Finding finding;
    std::string_view name;
    std::string_view sentence;
    std::string_view advice;
};

// Aligned in columns it would be wider than a screen.
// clang-format off
constexpr FindingText kFindings[] = {
    FindingText{Finding::HeadingsAgree, "headings-agree",
     "The headings agree with those of the joint fit.",
     "Use the calibration."},
    FindingText{Finding::JointFitCertain, "joint-fit-certain",
     "The joint fit is certain enough to call the headings good.",
     "Use the calibration."},
    FindingText{Finding::HeadingsRoughlyAgree, "headings-differ",
     "The headings differ from those of the joint fit, and no single cause stands out.",
     "Record both turns again, slowly and about the sensor's own axes, or calibrate "
     "with the joint fit."},
    FindingText{Finding::JointFitUncertain, "joint-fit-uncertain",
     "No fault was found, but the joint fit is too uncertain to call the headings good.",
     "Record both turns again, slowly and with more samples, the vertical turn with the "
     "sensor's y axis to the north or south."},
    FindingText{Finding::SolverFailed, "solver-failed",
     "The solver found no calibration.",
     "Record both turns again, all the way round and away from iron."},
    FindingText{Finding::JointFitFailed, "joint-fit-failed",
     "The joint fit found no calibration.",
     "Record both turns again, all the way round and away from iron, with pitch and roll."},
    FindingText{Finding::NotFinite, "not-finite",
     "A value of the calibration or of a sample is not a finite number.",
     "Record the vertical turn again: the sensor's y axis must stay level and at rest "
     "while the pole goes overhead."},
    FindingText{Finding::TooFewSamples, "too-few-samples",
     "A turn has fewer than ten samples.",
     "Record both turns again, slowly and all the way round."},
    FindingText{Finding::Implausible, "implausible",
     "The axes of a magnetometer would differ in gain by more than a factor of five.",
     "Record both turns again: each about its own axis, the pole upright in the "
     "horizontal one."},
    FindingText{Finding::HorizontalIncomplete, "horizontal-incomplete",
     "The horizontal turn covers less than 270 degrees.",
     "Record the horizontal turn again, all the way round."},
    FindingText{Finding::VerticalIncomplete, "vertical-incomplete",
     "The vertical turn covers less than 270 degrees.",
     "Record the vertical turn again, all the way round."},
    FindingText{Finding::TiltUnusable, "tilt-unusable",
     "Pitch and roll do not follow the turns, so the headings could not be checked.",
     "Check the sensor type and that pitch and roll are recorded all the way round; "
     "check a heading against a known direction before use."},
    FindingText{Finding::Swung, "swung",
     "The turn was swung: its accelerations are not those of gravity alone, so pitch and roll "
     "are wrong.",
     "Record both turns again, slowly, the sensor close to the axis of the turn."},
    FindingText{Finding::FieldUneven, "field-uneven",
     "The corrected field strength is not constant over the turns.",
     "Record both turns again, away from iron and about the sensor's own axes."},
    FindingText{Finding::HorizontalAxis, "horizontal-axis",
     "The horizontal turn was not about the sensor's z axis.",
     "Record the horizontal turn again with the pole plumb, turning it about itself."},
    FindingText{Finding::VerticalAxis, "vertical-axis",
     "The vertical turn was not about the sensor's y axis.",
     "Record the vertical turn again: the sensor's y axis must stay level and at rest "
     "while the pole goes overhead."},
    FindingText{Finding::Wobble, "wobble",
     "The axis of a turn moved while turning.",
     "Record both turns again, steadily, with the pole supported."},
    FindingText{Finding::Disturbed, "disturbed",
     "A magnet or iron was near during a part of a turn.",
     "Record both turns again, away from vehicles, iron and telephones."},
    FindingText{Finding::SectorsMissing, "sectors-missing",
     "Parts of a turn have no usable samples.",
     "Record the turn with the missing sectors again, slowly and all the way round."},
    FindingText{Finding::ConstantHeading, "constant-heading",
     "The headings differ by a constant angle.",
     "Set the bias angle against a known direction, or calibrate with the joint fit."},
    FindingText{Finding::BeyondEightValues, "beyond-eight-values",
     "The distortion of the magnetometer cannot be expressed by eight values.",
     "Move iron away from the sensor or have it serviced; another recording will not "
     "help."},
    FindingText{Finding::AxesMisnamed, "axes-misnamed",
     "Axes of a magnetometer look reversed or exchanged.",
     "Check the order and the signs of the magnetometer's columns, then calibrate again."},
    FindingText{Finding::MagnetometersDisagree, "magnetometers-disagree",
     "Magnetometers A and B find different headings.",
     "Check that both turns hold both magnetometers, B with x and y opposed to A, and record both "
     "turns again."},
    FindingText{Finding::TiltOff, "tilt-off",
     "Pitch and roll may be off or drift, which a joint fit follows without a sign.",
     "Level pitch and roll, let the sensor reach its temperature, and record both turns again."},
    FindingText{Finding::TurnsDiffer, "turns-differ",
     "The field, a gain or pitch and roll changed between the turns, by its dip or by A and B.",
     "Record both turns again at one place, one right after the other, without swinging the pole."},
    FindingText{Finding::LogsExchanged, "logs-exchanged",
     "The horizontal log holds the vertical turn.",
     "Exchange the two logs and calibrate again."},
    FindingText{Finding::Mounting, "mounting",
     "The turns were about other axes than those of a sensor that sits on the pole as its type "
     "says.",
     "Check how the sensor is mounted and which sensor type is set, then record both turns about "
     "its z and its y axis."},
    FindingText{Finding::TiltUnseen, "tilt-unseen",
     "No fault was found, but without gyros, or with another sensor type than 1, two turns cannot "
     "show pitch and roll that are off, step or drift.",
     "Record the gyros in both turns (sensor type 1), or check headings against known directions "
     "before use."},
    FindingText{Finding::MagnetometerStuck, "magnetometer-stuck",
     "A magnetometer does not follow the pole: an axis of it reads the same throughout.",
     "Check the magnetometer and its columns, then record both turns again."},
};
// clang-format on

const FindingText& TextOf(Finding finding)
{
    for (const FindingText& text : kFindings) {
        if (text.finding == finding) return text;
    }
    return kFindings[0];
}

void Line(std::string& text, std::string_view label, const std::string& content)
{
    constexpr std::size_t kLabel = 30;
    text += "  ";
    text += label;
    text.append(label.size() < kLabel ? kLabel - label.size() : 1, ' ');
    text += content;
    text += '\n';
}

std::string Sectors(const TurnFigures& turn)
{
    if (turn.missing.empty()) return "none";
    std::string names;
    for (const MissingSector& sector : turn.missing) {
        if (!names.empty()) names += ", ";
        names += sector.Name();
    }
    return names;
}

std::string Percent(double share, int decimals = 1)
{
    return Fixed(100.0 * share, decimals) + " %";
}

std::string Steadiness(const TurnFigures& t)
{
    if (!t.acceleration) return "not checked: the log has no accelerations";
    const TurnAcceleration& a = *t.acceleration;
    return Fixed(a.length, 3) + " g, " + Percent(a.leftOut) + " of the samples off by 0.1 g, "
           + (a.outward ? Fixed(*a.outward, 2) + " g outward" : "outward not checked: no gyros");
}

std::string Change(const FieldChange& change)
{
    const auto withSign = [](double size) {
        const std::string text = Fixed(size, 1);
        return text.front() == '-' ? text : "+" + text;
    };
    return withSign(100.0 * change.length) + " % length, " + withSign(change.dip) + " degrees dip";
}

void AddTurn(std::string& text, std::string_view title, const TurnFigures& t)
{
    text += title;
    text += '\n';
    Line(text, "samples",
         std::to_string(t.recorded) + " recorded, " + std::to_string(t.used) + " used");
    Line(text, "covered", Fixed(t.covered, 0) + " degrees, missing: " + Sectors(t));
    Line(text, "turning back", Percent(t.turningBack) + " of the samples");
    Line(text, "off the circle, A and B", Percent(t.circleA, 2) + " and " + Percent(t.circleB, 2));
    Line(text, "axis off the sensor's",
         Fixed(t.axisError, 1) + " degrees, wobble " + Fixed(t.wobble, 1) + " degrees");
    if (t.levelError) Line(text, "axis off level or plumb", Fixed(*t.levelError, 1) + " degrees");
    Line(text, "acceleration", Steadiness(t));
}

std::string Towards(const Direction& d)
{
    return "towards azimuth " + Fixed(d.azimuth, 0) + ", elevation " + Fixed(d.elevation, 0);
}

void AddMagnetometer(std::string& text, std::string_view title, const MagnetometerFigures& m,
                     bool isJoint)
{
    text += title;
    text += '\n';
    Line(text, "spread of field strength",
         Percent(m.spreadBefore) + " raw, " + Percent(m.spreadAfter) + " corrected");
    Line(text, "hard iron",
         Fixed(m.hardIron.size, 0) + " counts, " + Percent(m.hardIronShare, 0) + " of the field, "
             + Towards(m.hardIron));
    Line(text, "soft iron", Percent(m.softIron.size) + " " + Towards(m.softIron));
    if (!m.heading) return;
    const HeadingError& h = *m.heading;
    Line(text, "disturbed readings", Percent(m.disturbed));
    if (m.change) Line(text, "field, vertical turn", Change(*m.change));
    Line(text, isJoint ? "lost in eight values, RMS" : "heading error, RMS",
         Fixed(h.rms, 2) + " degrees (level " + Fixed(h.rmsLevel, 2) + ", tilt 15 "
             + Fixed(h.rms15, 2) + ", tilt 30 " + Fixed(h.rms30, 2) + "), constant part "
             + Fixed(h.constant, 2));
    Line(text, "joint fit itself known to", Fixed(h.uncertainty, 2) + " degrees");
    Line(text, "beyond its residuals",
         Fixed(h.hidden.tilt, 2) + " by pitch and roll, " + Fixed(h.hidden.turns, 2)
             + " by turns that differ, " + Fixed(h.hidden.noise, 2) + " by noise, degrees");
    Line(text, "dip of both turns differs by", Fixed(h.hidden.dipDifference, 2) + " degrees");
    Line(text, "tip error, 2 m pole",
         Fixed(h.tip15, 1) + " mm at tilt 15, " + Fixed(h.tip30, 1) + " mm at tilt 30");
}

void AddTilt(std::string& text, const TiltEvidence& tilt)
{
    const auto known = [](double value, double deviation) {
        return Fixed(value, 2) + " +/- " + Fixed(deviation, 2);
    };
    const auto both = [&](const TiltError& e) {
        return "pitch " + known(e.pitch, e.pitchDeviation) + ", roll "
               + known(e.roll, e.rollDeviation) + " degrees";
    };
    text += "Pitch and roll, against the magnetometers\n";
    if (tilt.offset.pitchDeviation > 0.0) {
        Line(text, "offset", both(tilt.offset));
        Line(text, "drift during a turn", both(tilt.drift));
    } else {
        Line(text, "offset", "not checked: not sensor type 1");
    }
    text += "Pitch and roll, against the gyros\n";
    if (!tilt.gyros) {
        Line(text, "offset", "not checked: no gyros, none that follow the turns, or not type 1");
        return;
    }
    Line(text, "offset", both(tilt.gyros->offset));
    Line(text, "step between the turns", both(tilt.gyros->step));
    Line(text, "drift during a turn", both(tilt.gyros->drift));
}

} // namespace

std::string_view Name(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Good:
        return "good";
    case Verdict::Usable:
        return "usable";
    case Verdict::Unchecked:
        return "unchecked";
    case Verdict::Poor:
        return "poor";
    case Verdict::Refused:
        return "refused";
    }
    return "";
}

std::string_view Name(Finding finding)
{
    return TextOf(finding).name;
}

std::string_view Explain(Finding finding)
{
    return TextOf(finding).sentence;
}

std::string_view Advice(Finding finding)
{
    return TextOf(finding).advice;
}

std::string Headline(const CalibrationReport& report)
{
    std::string text(Name(report.verdict));
    if (report.verdict == Verdict::Unchecked) {
        text += ": ";
        text += Describe(report.jointFit);
    } else if (report.weak) {
        text += " (weaker verdict: ";
        text += Describe(report.jointFit);
        text += ")";
    } else if (report.verdict != Verdict::Refused && report.isJoint) {
        text += ", heading uncertain by " + Fixed(report.headingUncertainty, 2) + " degrees RMS";
    } else if (report.verdict != Verdict::Refused) {
        text += ", heading error " + Fixed(report.headingError, 2) + " degrees RMS";
    }
    return text;
}

std::string ToText(const CalibrationReport& report)
{
    std::string text = "Calibration: " + Headline(report) + '\n';
    Line(text, "reason", std::string(Explain(report.reason)));
    for (std::size_t i = 0; i < report.suspects.size(); ++i)
        Line(text, i == 0 ? "suspected" : "or", report.suspects[i]);
    Line(text, "what to do", std::string(Advice(report.reason)));
    AddTurn(text, "Horizontal turn", report.horizontal);
    AddTurn(text, "Vertical turn", report.vertical);
    AddMagnetometer(text, "Magnetometer A", report.a, report.isJoint);
    AddMagnetometer(text, "Magnetometer B", report.b, report.isJoint);
    if (report.jointFit == JointFitOutcome::Fitted) AddTilt(text, report.tilt);
    if (report.agreement) {
        const HeadingAgreement& h = *report.agreement;
        text += "A against B, horizontal turn\n";
        Line(text, "heading difference",
             "mean " + Fixed(h.mean, 2) + ", deviation " + Fixed(h.deviation, 2) + ", largest "
                 + Fixed(h.largest, 2) + " degrees");
    }
    return text;
}

} // namespace quality
