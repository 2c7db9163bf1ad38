// SPDX-License-Identifier: MIT
#include "quality/CalibrationReport.h"

#include "quality/JointFit.h"
#include "quality/calibration/Text.h"

#include <array>

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
constexpr std::array kFindings = {
    FindingText{Finding::HeadingsAgree, "headings-agree",
     "The headings agree with those of the joint fit.",
     "Use the calibration."},
    FindingText{Finding::HeadingsRoughlyAgree, "headings-differ",
     "The headings differ from those of the joint fit, and no single cause stands out.",
     "Record both turns again, slowly and about the sensor's own axes, or calibrate "
     "with the joint fit."},
    FindingText{Finding::JointFitUncertain, "joint-fit-uncertain",
     "The headings agree with those of the joint fit, which is itself too uncertain to call "
     "them good.",
     "Record both turns again, slowly and with more samples, the vertical turn with the "
     "sensor's y axis to the north or south."},
    FindingText{Finding::SolverFailed, "solver-failed",
     "The solver found no calibration.",
     "Record both turns again, all the way round and away from iron."},
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
};
// clang-format on

const FindingText& TextOf(Finding finding)
{
    for (const FindingText& text : kFindings) {
        if (text.finding == finding) return text;
    }
    return kFindings.front();
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
}

std::string Towards(const Direction& d)
{
    return "towards azimuth " + Fixed(d.azimuth, 0) + ", elevation " + Fixed(d.elevation, 0);
}

void AddMagnetometer(std::string& text, std::string_view title, const MagnetometerFigures& m)
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
    Line(text, "heading error, RMS",
         Fixed(h.rms, 2) + " degrees (level " + Fixed(h.rmsLevel, 2) + ", tilt 15 "
             + Fixed(h.rms15, 2) + ", tilt 30 " + Fixed(h.rms30, 2) + "), constant part "
             + Fixed(h.constant, 2));
    Line(text, "joint fit itself known to", Fixed(h.uncertainty, 2) + " degrees");
    Line(text, "tip error, 2 m pole",
         Fixed(h.tip15, 1) + " mm at tilt 15, " + Fixed(h.tip30, 1) + " mm at tilt 30");
}

} // namespace

std::string_view Name(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Good:
        return "good";
    case Verdict::Usable:
        return "usable";
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

std::string ToText(const CalibrationReport& report)
{
    std::string text = "Calibration: ";
    text += Name(report.verdict);
    if (report.weak) {
        text += " (weaker verdict: ";
        text += Describe(report.jointFit);
        text += ")";
    } else if (report.verdict != Verdict::Refused) {
        text += ", heading error " + Fixed(report.headingError, 2) + " degrees RMS";
    }
    text += '\n';
    Line(text, "reason", std::string(Explain(report.reason)));
    Line(text, "what to do", std::string(Advice(report.reason)));
    AddTurn(text, "Horizontal turn", report.horizontal);
    AddTurn(text, "Vertical turn", report.vertical);
    AddMagnetometer(text, "Magnetometer A", report.a);
    AddMagnetometer(text, "Magnetometer B", report.b);
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
