// SPDX-License-Identifier: MIT
//
// The shortest host: a sample of the pose sensor and the antenna coordinate give the tip.
#include "positioning/InclineSensor_Position.h"
#include "quality/ParameterFile.h"

#include <cstdio>

int main()
{
    CInclineSensor_Position pole;
    const auto problems = quality::LoadParameters("pole.cfg", pole); // the calibration
    for (const auto& problem : problems)
        std::fprintf(stderr, "pole.cfg: %s\n", ToText(problem).c_str());
    if (!problems.empty()) return 1; // nothing was loaded: tips would be off by decimeters

    PoseSensorData sample;
    sample.dRoll = 10.0;   // degrees
    sample.dMag_x = 300.0; // magnetometer A, counts
    sample.dMag_y = 400.0;
    sample.dMag_x_2 = -300.0; // magnetometer B
    sample.dMag_y_2 = -400.0;
    xyhCoordinate point{4500000.0, 500000.0, 100.0}; // antenna: N, E, h in meters

    pole.Position(sample, 2.0, point); // the point is now the tip of the 2 m pole
    std::printf("tip      N %.4f  E %.4f  h %.4f m\n", point.x, point.y, point.h);
    std::printf("heading  %.3f degrees, interference %d\n", sample.dYaw,
                pole.IsMagneticInterference());
}
