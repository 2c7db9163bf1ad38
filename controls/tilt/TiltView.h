// SPDX-License-Identifier: MIT
//
// Which part of the ground the tilt position graph shows. x is northing and points up, y is easting
// and points right; meters.
#pragma once

#include "framework/core/Rect.h"

namespace tiltpole::controls {

struct TiltView
{
    double originX = 0.0; // at the bottom edge
    double originY = 0.0; // at the left edge
    double scale = 2.5;   // meters per pixel

    void ToClient(const CRect& client, double x, double y, long& cx, long& cy) const;
    /// `row` and `column` are pixels.
    void ToWorld(const CRect& client, long row, long column, double& x, double& y) const;
};

/// Least and greatest coordinate of the observations.
struct TiltExtent
{
    double minX;
    double maxX;
    double minY;
    double maxY;

    void Include(double x, double y);

    /// The view that shows all of it in the middle, at 0.01 m per pixel or coarser.
    TiltView FitInto(const CRect& client) const;
};

/// Whether the view zooms when observation number `count` has been added inside it: the more there
/// are, the rarer.
bool ZoomsAt(int count);

} // namespace tiltpole::controls
