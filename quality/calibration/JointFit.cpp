// SPDX-License-Identifier: MIT
#include "quality/JointFit.h"

#include "quality/calibration/JointModel.h"

namespace inside = tiltpole::quality;

namespace quality {

JointFit FitJointly(const CalibrationTurns& turns, int sensorType)
{
    return inside::InEightValues(inside::FitBoth(turns, sensorType), turns, sensorType);
}

std::string_view Describe(JointFitOutcome outcome)
{
    switch (outcome) {
    case JointFitOutcome::Fitted:
        return "both turns were fitted";
    case JointFitOutcome::TooFewSamples:
        return "a turn has fewer than ten samples";
    case JointFitOutcome::NotFinite:
        return "a value of a sample is not a finite number";
    case JointFitOutcome::HorizontalIncomplete:
        return "the horizontal turn covers less than 270 degrees";
    case JointFitOutcome::VerticalIncomplete:
        return "the vertical turn covers less than 270 degrees";
    case JointFitOutcome::TiltUnusable:
        return "pitch and roll do not follow the turns";
    case JointFitOutcome::Swung:
        return "a turn was swung";
    case JointFitOutcome::NoSolution:
        return "the fit found no solution";
    }
    return "";
}

} // namespace quality
