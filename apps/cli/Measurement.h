// SPDX-License-Identifier: MIT
//
// One measured sample, as the parts of `tiltpole measure` hand it around.
#pragma once

#include "positioning/PoseSensorData.h"
#include <optional>
#include <string>

namespace cli {

struct Measurement
{
    xyhCoordinate antenna; // x is N, y is E, h [m]
    xyhCoordinate tip;     // likewise
    PoseSensorData pose;   // with its headings filled [degrees]
    double tilt;           // from the plumb line [degrees]
    bool still;
    bool interference;
};

/// What the operator set, for the records of a run.
struct MeasureSetup
{
    std::string log;
    std::string config; // empty: identity
    double poleLength;  // antenna to tip [m]
    int sensorType;
    double biasA; // degrees, as in force
    double biasB;
    std::optional<xyhCoordinate> truth; // the true tip
};

/// Tip less truth, in the plane.
double PlanError(const xyhCoordinate& tip, const xyhCoordinate& truth);

} // namespace cli
