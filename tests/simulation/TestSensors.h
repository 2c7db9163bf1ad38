// SPDX-License-Identifier: MIT
//
// Sensors with iron near, for the tests.
#pragma once

#include "simulation/PoseSensor.h"

namespace simulation::test {

/// Soft iron that a parameter file can undo wholly; no noise.
inline PoseSensor DistortedSensor(int type)
{
    PoseSensor sensor;
    sensor.type = type;
    sensor.a.softIron.rows = {
        Point3{1.05,  0.0,  0.0 },
        {0.05,  0.96, 0.0 },
        {-0.04, 0.04, 1.08}
    };
    sensor.a.hardIron = {45.0, -30.0, 20.0};
    sensor.b.softIron.rows = {
        Point3{1.05,  0.0,   0.0 },
        {-0.03, 1.03,  0.0 },
        {0.04,  -0.01, 0.97}
    };
    sensor.b.hardIron = {-25.0, 35.0, -15.0};
    return sensor;
}

} // namespace simulation::test
