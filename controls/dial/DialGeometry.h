// SPDX-License-Identifier: MIT
/// @file
/// Positions of the parts of the compass dial [pixels]; headings [degrees] clockwise from the top.
#pragma once

#include "framework/core/Rect.h"

namespace tiltpole::controls {

/// The radii of the three rings for a given diameter.
struct DialRings
{
    int outer = 0;
    int middle = 0;
    int inner = 0;

    static DialRings Of(int diameter);
};

/// The point at `radius` from the center and `angle` [rad] from the downward direction.
CPoint OnDial(CPoint center, double radius, double angle);

/// The angle to pass to OnDial for a heading.
double DialAngle(int heading);

/// The needle, a kite: base, tip, base, tail, in order around it.
struct NeedleShape
{
    POINT corners[4];

    /// `unit` is a sixtieth of the diameter, in whole pixels.
    static NeedleShape Of(CPoint center, int diameter, int unit, double heading);
};

/// A mark from the middle to the inner ring at a fixed heading.
struct FixLine
{
    CPoint outer;
    CPoint inner;

    static FixLine Of(CPoint center, const DialRings& rings, int heading);
};

} // namespace tiltpole::controls
