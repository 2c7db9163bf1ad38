// SPDX-License-Identifier: MIT
//
// CTiltPosition_Geometry: the tip without any heading, from antenna positions at many leans.
#include "geometry/TiltPosition_Geometry.h"

#include <cmath>
#include <cstdio>

int main()
{
    CTiltPosition_Geometry geometry;
    geometry.SetAntennaHeight(2.0);

    // The antenna of a pole whose tip stands on (1000, 2000, 100), led round in a spiral.
    for (int i = 0; !geometry.IsOK(); ++i) {
        const double azimuth = 2.4 * i; // [rad]
        const double lean = 0.1 + 0.025 * i;
        TiltPoint_Sensor observed;
        observed.dX = 1000.0 + 2.0 * std::sin(lean) * std::cos(azimuth);
        observed.dY = 2000.0 + 2.0 * std::sin(lean) * std::sin(azimuth);
        observed.dH = 100.0 + 2.0 * std::cos(lean);
        observed.dIncline = lean * 180.0 / 3.14159265358979;
        geometry.AddPoint(observed); // refused where it is too close to another one
    }

    xyhCoord tip;
    TiltPoint_State state;
    geometry.Calculate(tip, state);
    std::printf("tip N %.3f E %.3f h %.3f m\n", tip.x, tip.y, tip.h);
    std::printf("%s, radius %.3f m\n",
                state.nStatus == kTiltPointAccepted ? "accepted" : "not accepted", state.dRadius);
}
