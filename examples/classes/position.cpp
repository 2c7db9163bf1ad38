// SPDX-License-Identifier: MIT
//
// CInclineSensor_Position: from one pose and the antenna to the tip of a leaning pole.
#include "positioning/InclineSensor_Position.h"

#include <cstdio>

int main()
{
    CInclineSensor_Position pole;
    pole.SetSensorType(1);            // x forward, y left, z up the pole
    pole.SetMagneticBiasAngle_A(5.0); // declination and mounting: taken off the heading [degrees]

    PoseSensorData sample;
    sample.dPitch = 0.0;
    sample.dRoll = 10.0; // the right side is lower [degrees]
    sample.dMag_x = 300.0;
    sample.dMag_y = 400.0;
    sample.dMag_x_2 = -300.0; // B is mounted with x and y opposed
    sample.dMag_y_2 = -400.0;

    xyhCoordinate point{4500000.0, 500000.0, 100.0}; // in: the antenna, out: the tip [m]
    pole.Position(sample, 2.0, point);
    std::printf("tip N %.4f E %.4f h %.4f m\n", point.x, point.y, point.h);
    std::printf("heading %.3f degrees, interference %d\n", sample.dYaw,
                pole.IsMagneticInterference());
}
