// SPDX-License-Identifier: MIT
//
// Pictures in memory, one over the other, that the plots are shown from.
#pragma once

#include "framework/core/Rect.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/GdiObject.h"

#include <functional>

namespace tiltpole::controls {

/// One picture of the client area's size at its first use; a later size is not noticed.
struct Layer
{
    /// Makes the picture where there is none and fills `client` with `color`.
    void Refill(CDC& like, const CRect& client, COLORREF color);

    CDC dc;
    CBitmap bitmap;
};

/// A grid that everything stands on, and points that come and go.
struct Layers
{
    /// Copies the grid, combines the points with it by OR, and copies the result to the target in
    /// one step. The OR requires a black background.
    /// @param afterwards  called with the memory context after the last copy
    void Present(CDC& target, const CRect& client, const std::function<void(CDC&)>& afterwards);

    Layer grid;
    Layer points;
};

/// Two arrows of 50 pixels from a corner, each with a letter behind its tip.
struct AxisGlyph
{
    CPoint corner;
    COLORREF lineColor;
    COLORREF textColor;
    wchar_t vertical;
    wchar_t horizontal;

    void Draw(CDC& dc) const;
};

/// A cross of six pixels across; the end pixels of thin lines stay unset.
void DrawCross(CDC& dc, CPoint at);

} // namespace tiltpole::controls
