// SPDX-License-Identifier: MIT
#include "controls/detail/DialGeometry.h"

#include <cmath>

namespace tiltpole::controls {

DialRings DialRings::Of(int diameter)
{
    return {ToPixel(diameter / 2.0), ToPixel(diameter / 2.0 - diameter / 50.0),
            ToPixel(diameter / 2.0 - diameter / 16.0)};
}

CPoint OnDial(CPoint centre, double radius, double angle)
{
    return {ToPixel(centre.x - radius * std::sin(angle)),
            ToPixel(centre.y + radius * std::cos(angle))};
}

NeedleShape NeedleShape::Of(CPoint centre, int diameter, int unit, double heading)
{
    const double a = heading * kPi / 180.0;
    const double sine = std::sin(a);
    const double cosine = std::cos(a);
    const int width = unit * 18;
    const int acrossX = ToPixel(width * cosine / 8.0);
    const int acrossY = ToPixel(width * sine / 8.0);
    return {
        {
         {centre.x - acrossX, centre.y - acrossY},
         {ToPixel(centre.x + diameter / 3.0 * sine),
             ToPixel(centre.y - diameter / 3.0 * cosine)},
         {centre.x + acrossX, centre.y + acrossY},
         {ToPixel(centre.x - diameter * sine / 6.0),
             ToPixel(centre.y + diameter * cosine / 6.0)},
         }
    };
}

FixLine FixLine::Of(CPoint centre, const DialRings& rings, int heading)
{
    const double a = heading * kPi / 180.0 - kPi;
    return {OnDial(centre, rings.middle, a), OnDial(centre, rings.inner, a)};
}

} // namespace tiltpole::controls
