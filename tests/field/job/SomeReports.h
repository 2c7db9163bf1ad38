// SPDX-License-Identifier: MIT
//
// Reports of a still tip for tests of averages and records.
#pragma once

#include "field/Bridge.h"

namespace field::test {

// A tip at 47.5 N 19 E, 20 mm apart from the antenna's sigma of 8, 6 and 15 mm.
inline Tip SomeTip(double north = 0.0, double east = 0.0, double up = 0.0)
{
    constexpr double kMetersPerDegree = 111178.0; // of latitude there; of longitude times cos 47.5
    Tip tip;
    tip.epoch.utc = "120000.00";
    tip.epoch.fix = Fix::Fixed;
    tip.epoch.station = "0207";
    tip.epoch.geoidSeparation = 39.4;
    tip.epoch.correctionAge = 1.0;
    tip.epoch.antenna = {47.500004, 19.000003, 102.0};
    tip.epoch.sigma = {64e-6, 10e-6, 36e-6, 0.0, 0.0, 225e-6};
    tip.position = {47.5 + north / kMetersPerDegree, 19.0 + east / (kMetersPerDegree * 0.678),
                    100.0 + up};
    tip.sigma = {64e-6 + 100e-6, 10e-6 + 20e-6, 36e-6 + 400e-6, 0.0, 0.0, 225e-6 + 9e-6};
    tip.tilt = 12.0;
    tip.azimuthTrue = 250.0;
    tip.declination = 5.8;
    return tip;
}

inline Report SomeReport(const Tip& tip, State state = State::Store)
{
    Report report;
    report.epoch = tip.epoch;
    report.tip = tip;
    report.verdict.state = state;
    return report;
}

} // namespace field::test
