// SPDX-License-Identifier: MIT
#include "field/gate/Reasons.h"

#include "field/Digits.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace tiltpole::field {

namespace {

using Code = Reason::Code;

std::string Text(std::string_view a, std::string_view b, std::string_view c = {},
                 std::string_view d = {}, std::string_view e = {})
{
    std::string text;
    text.append(a).append(b).append(c).append(d).append(e);
    return text;
}

std::string Millimeters(double meters)
{
    return FixedText(1000.0 * meters, 0);
}
std::string Percent(double part)
{
    return FixedText(100.0 * part, 0);
}

constexpr std::string_view kAwayFromIron = "): move away from iron or level the pole";

std::string_view NameOf(::field::Fix fix)
{
    switch (fix) {
    case ::field::Fix::Single:
        return "single";
    case ::field::Fix::Differential:
        return "differential";
    case ::field::Fix::Float:
        return "float";
    case ::field::Fix::Estimated:
        return "estimated";
    default:
        return "none";
    }
}

} // namespace

State StateOf(Code code)
{
    if (code < Code::Moving) return State::Block;
    if (code < Code::LeanNoted) return State::Wait;
    return State::Store;
}

State WorstOf(const std::vector<Reason>& reasons)
{
    State worst = State::Store;
    for (const Reason& reason : reasons)
        worst = std::max(worst, StateOf(reason.code));
    return worst;
}

bool HidesTip(Code code)
{
    return code < Code::FloatFix || code == Code::Jump;
}

Reason NoReceiver(double silence)
{
    return {Code::NoReceiver, Text("no epoch of the receiver for ", FixedText(silence, 1), " s")};
}

Reason BaudRate(double seconds)
{
    return {Code::BaudRate, Text("no good line of the receiver for ", FixedText(seconds, 0),
                                 " s of bytes: check the baud rate")};
}

Reason NoFix()
{
    return {Code::NoFix, "no position fix"};
}

Reason NotFixed(::field::Fix fix)
{
    return {Code::FloatFix, Text("fix is ", NameOf(fix), " (needs fixed)")};
}

Reason NoPose(double silence, std::string_view fault)
{
    std::string text = std::isfinite(silence) ? Text("no pose for ", FixedText(silence, 2), " s")
                                              : std::string("no pose yet");
    if (!fault.empty()) text += Text("; last one dropped: ", fault);
    return {Code::NoPose, std::move(text)};
}

Reason PoseGap(double gap, double limit)
{
    return {Code::PoseGap,
            Text("pose gap of ", Millimeters(gap), " ms (limit ", Millimeters(limit), ")")};
}

Reason SensorStuck(std::string_view fault)
{
    return {Code::SensorStuck, Text("sensor stuck: ", fault)};
}

Reason FieldStrength(double part, double limit)
{
    return {Code::FieldStrength,
            Text(Text("field ", Percent(std::fabs(part)), " % "),
                 part < 0.0 ? "weaker" : "stronger", " than at calibration (limit ", Percent(limit),
                 kAwayFromIron)};
}

Reason FieldDip(double difference, double limit)
{
    return {Code::FieldDip,
            Text(Text("field dips ", FixedText(std::fabs(difference), 1), " degrees "),
                 difference < 0.0 ? "flatter" : "steeper", " than expected (limit ",
                 FixedText(limit, 1), kAwayFromIron)};
}

Reason MagnetometersDiffer(double part, double limit)
{
    return {Code::MagnetometersDiffer, Text("magnetometers differ by ", Percent(part), " % (limit ",
                                            Percent(limit), kAwayFromIron)};
}

Reason NoCalibration(bool incomplete)
{
    return {Code::NoCalibration, incomplete ? "calibration is incomplete: calibrate again"
                                            : "no calibration of the sensor"};
}

Reason CalibrationPoor()
{
    return {Code::CalibrationPoor, "calibration is poor: calibrate again"};
}

Reason CorrectionAge(double age, double limit)
{
    if (age < 0.0)
        return {Code::CorrectionAge, Text("age of the corrections is negative: ", FixedText(age, 1),
                                          " s (limit 0 to ", FixedText(limit, 0), ")")};
    return {Code::CorrectionAge, Text("corrections are ", FixedText(age, 1), " s old (limit ",
                                      FixedText(limit, 0), ")")};
}

Reason Satellites(int satellites, int limit)
{
    return {Code::Satellites, Text("only ", std::to_string(satellites), " satellites (needs ",
                                   std::to_string(limit), ")")};
}

Reason EpochOld(double age, double limit)
{
    return {Code::EpochOld,
            Text("epoch is ", FixedText(age, 1), " s old (limit ", FixedText(limit, 1), ")")};
}

Reason BaseChanged(std::string_view from, std::string_view to)
{
    return {Code::BaseChanged,
            Text("base changed from ", from, " to ", to, ": acknowledge to go on")};
}

Reason DatumStep(double step, double limit)
{
    return {Code::DatumStep, Text("position stepped by ", FixedText(step, 2),
                                  " m while the pole stood still (limit ", FixedText(limit, 2),
                                  "): acknowledge to go on")};
}

Reason Jump(double step, double explained)
{
    return {Code::Jump, Text("antenna jumped ", FixedText(step, 2), " m (limit ",
                             FixedText(explained, 2), " by lean, speed and sigma)")};
}

Reason BadLines(double part, double limit)
{
    return {Code::BadLines,
            Text("bad lines of the receiver: ", Percent(part), " % (limit ", Percent(limit), ")")};
}

Reason PlanSigma(double sigma, double limit)
{
    return {Code::PlanSigma,
            Text("plan sd ", Millimeters(sigma), " mm (limit ", Millimeters(limit), ")")};
}

Reason HeightSigma(double sigma, double limit)
{
    return {Code::HeightSigma,
            Text("height sd ", Millimeters(sigma), " mm (limit ", Millimeters(limit), ")")};
}

Reason TimeSigma(double sigma, double limit)
{
    return {Code::TimeSigma, Text("pose and antenna apart by ", Millimeters(sigma),
                                  " ms sd while moving (limit ", Millimeters(limit), ")")};
}

Reason Lean(double lean, double limit)
{
    return {Code::Lean,
            Text("lean ", FixedText(lean, 1), " degrees (limit ", FixedText(limit, 0), ")")};
}

Reason Moving(double speed, double limit)
{
    if (std::isnan(speed)) return {Code::Moving, "it is not known yet whether the antenna moves"};
    return {Code::Moving,
            Text("antenna moves ", FixedText(speed, 2), " m/s (limit ", FixedText(limit, 2), ")")};
}

Reason Settling(double still, double limit)
{
    return {Code::Settling,
            Text("still for ", FixedText(still, 1), " s (needs ", FixedText(limit, 1), ")")};
}

Reason TimeStep()
{
    return {Code::TimeStep, "time of the receiver stepped: wait 2 s"};
}

Reason LeanNoted(double lean, double limit)
{
    return {Code::LeanNoted,
            Text("lean ", FixedText(lean, 1), " degrees (best below ", FixedText(limit, 0), ")")};
}

Reason CalibrationOld(double days, double limit)
{
    return {Code::CalibrationOld, Text("calibration is ", FixedText(days, 0),
                                       " days old (best below ", FixedText(limit, 0), ")")};
}

Reason SigmaAssumed()
{
    return {Code::SigmaAssumed, "sd assumed: the receiver sends no GST"};
}

Reason CoarseText(int decimals)
{
    return {Code::CoarseText, Text("receiver sends ", std::to_string(decimals),
                                   " decimals of a minute (best 7 or more)")};
}

Reason OneMagnetometer()
{
    return {Code::OneMagnetometer, "one magnetometer: A and B are not compared"};
}

} // namespace tiltpole::field
