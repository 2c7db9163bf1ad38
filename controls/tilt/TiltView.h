// SPDX-License-Identifier: MIT
/// @struct tiltpole::controls::TiltView
/// The part of the ground that the tilt position graph shows. x is northing and points up, y is
/// easting and points right; meters.
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

/// Minimum and maximum coordinates of the observations.
struct TiltExtent
{
    double minX;
    double maxX;
    double minY;
    double maxY;

    void Include(double x, double y);

    /// The view that shows the extent centered, at 0.01 m per pixel or coarser.
    TiltView FitInto(const CRect& client) const;
};

/// Whether the view zooms after observation number `count` has been added inside it. Zooms become
/// less frequent as the number grows.
bool ZoomsAt(int count);

} // namespace tiltpole::controls
