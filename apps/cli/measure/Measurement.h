// SPDX-License-Identifier: MIT
//
// One measured sample of `tiltpole measure`.
#pragma once

#include "positioning/PoseSensorData.h"
#include <optional>
#include <string>

namespace cli {

struct Measurement
{
    xyhCoordinate antenna; // x: N, y: E, h [m]
    xyhCoordinate tip;     // likewise
    PoseSensorData pose;   // with computed headings [degrees]
    double tilt;           // from the plumb line [degrees]
    bool still;
    bool interference;
};

/// The settings of a run.
struct MeasureSetup
{
    std::string log;
    std::string config; // empty: identity
    double poleLength;  // antenna to tip [m]
    int sensorType;
    double biasA; // in effect [degrees]
    double biasB;
    std::optional<xyhCoordinate> truth; // the true tip
};

/// Horizontal distance between tip and truth [m].
double PlanError(const xyhCoordinate& tip, const xyhCoordinate& truth);

} // namespace cli
