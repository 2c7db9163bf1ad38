// SPDX-License-Identifier: MIT
//
// What a joint fit takes for the truth and is not: errors that leave its residuals small, as far as
// anything in the two turns tells of them.
#pragma once

#include "quality/CalibrationReport.h"
#include "quality/calibration/GainEvidence.h"
#include "quality/calibration/TiltEffect.h"
#include "quality/calibration/TiltEvidence.h"

#include <array>

namespace tiltpole::quality {

/// What the turns as a whole show.
struct TurnEvidence
{
    TiltEvidence tilt;
    std::array<TiltEffect, 2> byGyros; // of A and B; where tilt.gyros is known
    GainEvidence gains;
    double disagreement = 0.0; // systematic difference of the headings that the joint fits of A and
                               // B find [degrees]
};

::quality::HiddenError HiddenErrorOf(const SphereFit& fit, const TurnEvidence& evidence,
                                     Magnetometer which);

} // namespace tiltpole::quality
