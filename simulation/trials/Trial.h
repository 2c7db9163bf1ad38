// SPDX-License-Identifier: MIT
//
// One simulated calibration, judged by its report and by the truth.
//
// A heading error is RMS over all headings at tilts of 0, 15 and 30 degrees, the larger of
// magnetometers A and B, in degrees. It is computed in two ways:
//
//   as used    headings are formed with the pitch and roll that the sensor reports, their offsets
//              included: what the host shows
//   true tilt  headings are formed with the true pitch and roll, as if the offsets of the
//              calibration's recording were gone afterwards
#pragma once

#include "quality/CalibrationReport.h"
#include "simulation/trials/Conditions.h"

#include <cstdint>

namespace study {

struct TrueError
{
    double asUsed = 0.0;   // [degrees]
    double trueTilt = 0.0; // [degrees]
};

/// What became of one calibration.
struct Result
{
    quality::CalibrationReport report;
    TrueError error;
    bool finite = false;
};

struct Trial
{
    Result solver;             // CInclineSensor_MagneticAdjust, behind the filters
    bool answered = false;     // by 1
    bool jointFitted = false;  // what is said of the joint fit has a meaning
    Result joint;              // the joint fit's eight values
    TrueError jointFull;       // of its full correction, against which reports compare
    double jointUnasked = 0.0; // error of the full correction on turns that the joint fit refuses,
                               // as used; no number where it finds nothing
};

/// Records both turns and calibrates with both methods. Same seed, same trial.
Trial Simulate(const Setting& setting, std::uint64_t seed);

} // namespace study
