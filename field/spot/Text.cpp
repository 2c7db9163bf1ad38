// SPDX-License-Identifier: MIT
#include "field/SpotCalibration.h"

#include <cmath>

namespace field {

namespace {

// Whole numbers: the decimal point would follow the C locale.
std::string Whole(double number)
{
    return std::to_string(std::llround(number));
}

} // namespace

std::string SpotText(const SpotResult& result)
{
    switch (result.reason) {
    case SpotReason::Usable:
        return "usable";
    case SpotReason::TooShort:
        return "go on: rock the pole and turn it about its axis for 20 s";
    case SpotReason::TooLong:
        return "this took too long: begin again, 20 s are enough";
    case SpotReason::NoInertialSamples:
        return "there are no inertial samples";
    case SpotReason::NoAntennaEpochs:
        return "there are no antenna positions";
    case SpotReason::TimeRanBack:
        return "the time of samples or antenna positions runs back or repeats";
    case SpotReason::Gap:
        return "the inertial samples pause for too long: begin again";
    case SpotReason::TurnMore:
        return "turn the pole about its axis: it was turned by " + Whole(result.turned)
               + " degrees, a whole turn is wanted";
    case SpotReason::LeanFurther:
        return "lean further in all directions: the pole's directions spread by "
               + Whole(result.leanSpread) + " degrees only";
    case SpotReason::GoOn:
        return "go on rocking and turning: something is not known well enough yet";
    case SpotReason::TipMoved:
        return "the tip moved by about " + Whole(1000.0 * result.tipStep) + " mm: begin again";
    case SpotReason::WrongLength:
        return "the pole is about " + Whole(1000.0 * std::fabs(result.lengthError)) + " mm "
               + (result.lengthError > 0.0 ? "longer" : "shorter") + " than its length says";
    case SpotReason::FieldDisturbed:
        return "the magnetic field is not the same throughout: go away from iron and begin again";
    case SpotReason::SensorsContradict:
        return "sensors and antenna contradict each other: check axes, signs, units and times";
    case SpotReason::MagnetometerStuck:
        return std::string("magnetometer ") + (result.a.stuck ? "A" : "B")
               + " does not follow the pole: an axis of it reads the same throughout";
    case SpotReason::NoSolution:
        break;
    }
    return "the antenna positions lie outside of the samples' time";
}

} // namespace field
