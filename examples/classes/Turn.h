// SPDX-License-Identifier: MIT
//
// The readings of a sensor that is turned about its z axis, or about its y axis, in a field of 300
// counts to the north and 450 downward. Its iron adds the same offset to every reading of a
// magnetometer, and shares of x to y and z: the calibration has to find them.
#pragma once

#include "positioning/PoseSensorData.h"

#include <cmath>
#include <numbers>
#include <vector>

namespace turn {

enum class Axis { Z, Y };

/// A little more than one turn; `step` degrees from sample to sample.
inline std::vector<PoseSensorData> Record(Axis axis, double step = 2.0)
{
    std::vector<PoseSensorData> samples;
    for (double angle = 0.0; angle < 370.0; angle += step) {
        const double a = angle * std::numbers::pi / 180.0;
        double x = 300.0 * std::cos(a); // the field in the axes of the sensor
        double y = 300.0 * std::sin(a);
        double z = -450.0;
        PoseSensorData sample; // upright all the way round about z
        if (axis == Axis::Y) {
            sample.dPitch = std::asin(std::sin(a)) * 180.0 / std::numbers::pi;
            sample.dRoll = std::cos(a) < 0.0 ? 180.0 : 0.0; // beyond the vertical it hangs
            x = 300.0 * std::cos(a) - 450.0 * std::sin(a);
            y = 0.0;
            z = -300.0 * std::sin(a) - 450.0 * std::cos(a);
        }
        sample.dMag_x = x + 60.0;
        sample.dMag_y = y + 0.1 * x - 90.0;
        sample.dMag_z = z + 0.05 * x + 45.0;
        sample.dMag_x_2 = -x - 20.0; // B is mounted with x and y opposed
        sample.dMag_y_2 = -y - 0.05 * x + 30.0;
        sample.dMag_z_2 = z - 0.04 * x + 10.0;
        samples.push_back(sample);
    }
    return samples;
}

} // namespace turn
