// SPDX-License-Identifier: MIT
/// @file
/// The stacked pictures in memory from which the plots are shown.
#pragma once

#include "framework/core/Rect.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/GdiObject.h"

#include <functional>

namespace tiltpole::controls {

/// One picture, in the size the client area has at first use; later changes of size are ignored.
struct Layer
{
    /// Creates the picture if there is none and fills `client` with `color`.
    void Refill(CDC& like, const CRect& client, COLORREF color);

    CDC dc;
    CBitmap bitmap;
};

/// A grid as the background, and the points drawn over it.
struct Layers
{
    /// Copies the grid, combines the points with it by OR, and copies the result to the target in
    /// one step. The OR requires a black background.
    /// @param afterwards  called with the memory context after the last copy
    void Present(CDC& target, const CRect& client, const std::function<void(CDC&)>& afterwards);

    Layer grid;
    Layer points;
    bool isUnfinished = false; // memory ran out while they were drawn
};

/// Two arrows of 50 pixels from a corner, each with a letter beyond its tip.
struct AxisGlyph
{
    CPoint corner;
    COLORREF lineColor;
    COLORREF textColor;
    wchar_t vertical;
    wchar_t horizontal;

    void Draw(CDC& dc) const;
};

/// A cross six pixels wide; the end pixels of thin lines are not set.
void DrawCross(CDC& dc, CPoint at);

} // namespace tiltpole::controls
