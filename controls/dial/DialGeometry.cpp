// SPDX-License-Identifier: MIT
#include "controls/dial/DialGeometry.h"

#include "controls/drawing/Pixel.h"
#include "survey/Angle.h"

#include <cmath>

namespace tiltpole::controls {

DialRings DialRings::Of(int diameter)
{
    return {ToPixel(diameter / 2.0), ToPixel(diameter / 2.0 - diameter / 50.0),
            ToPixel(diameter / 2.0 - diameter / 16.0)};
}

CPoint OnDial(CPoint center, double radius, double angle)
{
    return {ToPixel(center.x - radius * std::sin(angle)),
            ToPixel(center.y + radius * std::cos(angle))};
}

double DialAngle(int heading)
{
    return survey::Deg2Rad(heading - 180);
}

NeedleShape NeedleShape::Of(CPoint center, int diameter, int unit, double heading)
{
    const double a = survey::Deg2Rad(heading);
    const double sine = std::sin(a);
    const double cosine = std::cos(a);
    const int width = unit * 18;
    const int acrossX = ToPixel(width * cosine / 8.0);
    const int acrossY = ToPixel(width * sine / 8.0);
    return {
        {
         {center.x - acrossX, center.y - acrossY},
         {ToPixel(center.x + diameter / 3.0 * sine),
             ToPixel(center.y - diameter / 3.0 * cosine)},
         {center.x + acrossX, center.y + acrossY},
         {ToPixel(center.x - diameter * sine / 6.0),
             ToPixel(center.y + diameter * cosine / 6.0)},
         }
    };
}

FixLine FixLine::Of(CPoint center, const DialRings& rings, int heading)
{
    const double a = survey::Deg2Rad(heading) - survey::kPi;
    return {OnDial(center, rings.middle, a), OnDial(center, rings.inner, a)};
}

} // namespace tiltpole::controls
