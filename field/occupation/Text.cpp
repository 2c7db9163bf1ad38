// SPDX-License-Identifier: MIT
#include "field/Occupation.h"

#include "field/occupation/Verdict.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace field {

namespace {

// The format has one number.
std::string WithNumber(const char* format, double number)
{
    std::array<char, 160> text{};
    const int length = std::snprintf(text.data(), text.size(), format, number);
    return length > 0 ? std::string(text.data()) : std::string();
}

// Whole numbers only: the decimal point would follow the C locale.
double Millimeters(double meters)
{
    return std::round(1000.0 * std::fabs(meters));
}

// Other faults look like another length too: it is no length to enter.
std::string LengthText(const OccupationEstimate& e)
{
    constexpr double kCredible = 0.1; // error of the length, part of it
    const std::string found = "the track does not fit the length of the pole";
    const std::string causes =
        ": did the tip slip, is the length right, do the gyros read too much or too little?";
    if (!(std::fabs(e.lengthError) <= kCredible * e.poleLength)) return found + causes;
    return found
           + WithNumber(e.lengthError > 0.0 ? ", as if it were %.0f mm longer"
                                            : ", as if it were %.0f mm shorter",
                        Millimeters(e.lengthError))
           + causes;
}

std::string StoreText(const OccupationEstimate& e)
{
    std::string text = WithNumber("store: the tip is known to %.0f mm",
                                  Millimeters(std::fmax(e.ellipseMajor, e.heightHalfInterval)));
    const double bound = tiltpole::field::LengthBound(e);
    if (!(e.lengthSigma > 0.0) || !std::isfinite(bound)) return text;
    return text + WithNumber(" and the length of the pole to %.0f mm", Millimeters(bound));
}

} // namespace

std::string OccupationText(const OccupationEstimate& e)
{
    switch (e.reason) {
    case OccupationReason::Sure:
        return StoreText(e);
    case OccupationReason::TooShort:
        return "go on: this is too short yet";
    case OccupationReason::HeadingUncertain:
        return WithNumber("rock a little more: the heading is known to %.0f degrees only",
                          std::ceil(e.headingSigma));
    case OccupationReason::VerticalUncertain:
        return "hold the pole still: its own motion hides the vertical";
    case OccupationReason::LengthUnchecked:
        if (!std::isfinite(tiltpole::field::LengthBound(e)))
            return "lean further or the other way: nothing confirms the length of the pole";
        return WithNumber("lean further or the other way: the length of the pole is confirmed to "
                          "%.0f mm only",
                          Millimeters(tiltpole::field::LengthBound(e)));
    case OccupationReason::TipUnchecked:
        return "hold the pole still for longer, or begin the point again: the tip may have moved";
    case OccupationReason::TooLong:
        return "this point has taken too long to follow the pole: begin it again";
    case OccupationReason::AntennaUncertain:
        return WithNumber("go on: the antenna leaves the tip open by %.0f mm",
                          Millimeters(std::fmax(e.ellipseMajor, e.heightHalfInterval)));
    case OccupationReason::NoInertialSamples:
        return "there are no inertial samples";
    case OccupationReason::NoAntennaEpochs:
        return "there are no antenna positions";
    case OccupationReason::TimeRanBack:
        return "the time of samples or antenna positions runs back or repeats";
    case OccupationReason::Gap:
        return "the inertial samples pause too often or for too long: begin the point again";
    case OccupationReason::AntennaStill:
        return "the gyros turn but the antenna does not move: are both of this pole?";
    case OccupationReason::GyrosStill:
        return "the antenna moves but the gyros hardly turn: are the rates in degrees per second?";
    case OccupationReason::TipMoved:
        return WithNumber("the tip moved by about %.0f mm: begin the point again",
                          Millimeters(e.tipStep));
    case OccupationReason::WrongLength:
        return LengthText(e);
    case OccupationReason::SensorsContradict:
        return "sensors and antenna contradict each other: check axes, signs, units and times";
    case OccupationReason::Rocked:
        return "the pole is rocked: without gyros lead it slowly and hold it still";
    case OccupationReason::NoSolution:
        break;
    }
    return "no tip could be computed";
}

} // namespace field
