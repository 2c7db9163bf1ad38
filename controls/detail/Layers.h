// SPDX-License-Identifier: MIT
//
// Pictures in memory, one over the other, that the plots are shown from.
#pragma once

#include "controls/detail/Blit.h"

#include "framework/core/Rect.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/GdiObject.h"

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
    /// Grid, points by OR over it, and the result at once onto the target. The OR relies on a black
    /// background.
    /// @param afterwards  called with the context in memory after the last copy
    template <class Afterwards>
    void Present(CDC& target, const CRect& client, Afterwards afterwards)
    {
        CDC memory;
        memory.CreateCompatibleDC(&target);
        CBitmap picture;
        picture.CreateCompatibleBitmap(&target, client.Width(), client.Height());
        if (!memory.GetSafeHdc()) return;
        CBitmap* const previous = memory.SelectObject(&picture);
        const int width = client.Width();
        const int height = client.Height();
        CopyOntoFresh(memory, client.Size(), grid.dc, grid.bitmap);
        memory.BitBlt(0, 0, width, height, &points.dc, 0, 0, SRCPAINT);
        target.BitBlt(0, 0, width, height, &memory, 0, 0, SRCCOPY);
        afterwards(memory);
        memory.SelectObject(previous);
    }

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
