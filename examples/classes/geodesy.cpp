// SPDX-License-Identifier: MIT
//
// field::Offset and field::Difference: steps of a few meters on the ellipsoid, without a projection.
#include "field/Geodesy.h"

#include <cmath>
#include <cstdio>

int main()
{
    const field::Geodetic antenna{47.5660567, 19.0083599, 232.873};
    const field::Geodetic tip = field::Offset(antenna, -0.31, 0.22, -1.96); // north, east, up [m]
    std::printf("tip %.8f N %.8f E, h %.3f m\n", tip.latitude, tip.longitude,
                tip.ellipsoidalHeight);

    const xyhCoordinate back = field::Difference(antenna, tip);
    std::printf("and back: north %.3f east %.3f up %.3f m\n", back.x, back.y, back.h);

    // A second of arc is 30.9 m to the north everywhere, and to the east 20.9 m at this latitude.
    field::Geodetic other = antenna;
    other.latitude += 1.0 / 3600.0;
    other.longitude += 1.0 / 3600.0;
    const xyhCoordinate second = field::Difference(antenna, other);
    std::printf("a second of arc: north %.2f east %.2f m\n", second.x, second.y);

    const field::Geodetic pole = field::Offset({89.95, 0.0, 0.0}, 1.0, 1.0, 0.0);
    std::printf("at the pole there is %s\n", std::isnan(pole.latitude) ? "none" : "one");
}
