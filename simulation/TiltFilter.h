// SPDX-License-Identifier: MIT
//
// Pitch and roll as a six-axis filter forms them: the direction up, turned along with the gyros and
// drawn towards the measured acceleration with a time constant. While the sensor is accelerated the
// result is off, as it is with recorded sensors.
//
//   up <- up - dt rate x up,   up <- up + dt / T (acceleration / |acceleration| - up),   |up| = 1
#pragma once

#include "simulation/Attitude.h"

namespace simulation {

class TiltFilter
{
public:
    /// @param timeConstant  [s], above 0
    explicit TiltFilter(double timeConstant) : m_timeConstant(timeConstant) {}

    /// Takes the next gyro rates and accelerations, which the first sample starts from.
    /// @param rate      in body axes [degrees/s]
    /// @param force     specific force in body axes, length 1 at rest
    /// @param interval  since the last sample [s]
    /// @return pitch and roll about the forward axis; the heading is 0
    PoseAngles Next(const Point3& rate, const Point3& force, double interval);

private:
    double m_timeConstant;
    Point3 m_up;
    bool m_started = false;
};

} // namespace simulation
