// SPDX-License-Identifier: MIT
//
// Where the parts of the compass dial lie. Pixels; headings in degrees, 0 at the top, clockwise.
#pragma once

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

/// The point at `radius` from the center, `angle` radians on from the downward direction.
CPoint OnDial(CPoint center, double radius, double angle);

/// The angle of OnDial for a heading.
double DialAngle(int heading);

/// The needle's kite: base, tip, base, tail, counted around.
struct NeedleShape
{
    POINT corners[4];

    /// `unit` is a sixtieth of the diameter in whole pixels.
    static NeedleShape Of(CPoint center, int diameter, int unit, double heading);
};

/// From the middle to the inner ring at a fixed heading.
struct FixLine
{
    CPoint outer;
    CPoint inner;

    static FixLine Of(CPoint center, const DialRings& rings, int heading);
};

} // namespace tiltpole::controls
