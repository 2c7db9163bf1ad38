// SPDX-License-Identifier: MIT
//
// One measured sample of `tiltpole measure`.
#pragma once

#include "field/DisturbanceMonitor.h"
#include "field/ExactAttitude.h"
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
    std::optional<field::MonitorVerdict> field; // with --field
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
    std::optional<xyhCoordinate> truth;    // the true tip
    std::optional<field::PitchRoll> exact; // the exact attitude, with what pitch and roll are
};

/// Horizontal distance between tip and truth [m].
double PlanError(const xyhCoordinate& tip, const xyhCoordinate& truth);

} // namespace cli
