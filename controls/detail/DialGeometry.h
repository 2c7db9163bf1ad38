// SPDX-License-Identifier: MIT
//
// Where the parts of the compass dial lie. Pixels; headings in degrees, 0 at the top, clockwise.
#pragma once

#include "controls/detail/Pixel.h"

#include "framework/core/Rect.h"

namespace tiltpole::controls {

/// The radii of the three rings for a dial of that diameter.
struct DialRings
{
    int outer = 0;
    int middle = 0;
    int inner = 0;

    static DialRings Of(int diameter);
};

/// The point at `radius` from the centre, `angle` radians on from the downward direction.
CPoint OnDial(CPoint centre, double radius, double angle);

/// The angle of OnDial for a heading.
constexpr double DialAngle(int heading)
{
    return (heading - 180) * kPi / 180.0;
}

/// The needle's kite: base, tip, base, tail, counted around.
struct NeedleShape
{
    POINT corners[4];

    /// `unit` is a sixtieth of the diameter in whole pixels.
    static NeedleShape Of(CPoint centre, int diameter, int unit, double heading);
};

/// From the middle to the inner ring at a fixed heading.
struct FixLine
{
    CPoint outer;
    CPoint inner;

    static FixLine Of(CPoint centre, const DialRings& rings, int heading);
};

} // namespace tiltpole::controls
