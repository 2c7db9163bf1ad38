// SPDX-License-Identifier: MIT
//
// What goes wrong in the field beside the operator's hand: sensors that change between or during
// the turns, other surroundings for the second turn, damaged logs.
#pragma once

#include "quality/Calibration.h"
#include "simulation/PoseSensor.h"

#include <array>
#include <cstdint>

namespace study {

struct Setting;

/// Faults of a recording. The sensor of the setting is the one after both turns, which goes on to
/// be used; the horizontal turn comes first.
struct RecordingFaults
{
    /// Change of the offsets of pitch and roll: evenly from the first sample to the last, and in
    /// one step between the turns. [degrees]
    double pitchDrift = 0.0;
    double rollDrift = 0.0;
    double pitchStep = 0.0;
    double rollStep = 0.0;
    /// What the readings of A and B by axes have to be multiplied by between the turns.
    std::array<simulation::Point3, 2> gainStep = {
        simulation::Point3{1.0, 1.0, 1.0},
        simulation::Point3{1.0, 1.0, 1.0}
    };
    /// The field of the vertical turn against that of the horizontal one.
    double fieldFactor = 1.0;
    double dipChange = 0.0; // [degrees]
    /// Acceleration that swings the sensor down the pole during the vertical turn [g]. Pitch and
    /// roll follow it.
    double swing = 0.0;
    double outliers = 0.0;   // share of samples with a random reading
    double saturation = 0.0; // readings end there, 0: nowhere [counts]
    int keepEvery = 1;       // of so many samples one is kept
    bool noGyros = false;    // the log has none
};

/// Records both turns of a setting, its faults included, with gyros of a usual kind: bias and
/// noise, and mounted a little askew against the inclinometers. Same seed, same turns.
quality::CalibrationTurns RecordTurns(const Setting& setting, std::uint64_t seed);

} // namespace study
