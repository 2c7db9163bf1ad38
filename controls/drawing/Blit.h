// SPDX-License-Identifier: MIT
//
// Copies of whole pictures between contexts in memory.
#pragma once

#include "framework/core/Rect.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/GdiObject.h"

namespace tiltpole::controls {

/// Puts `picture`, which `source` has selected, into the upper left corner of a fresh picture of
/// `size`. What it does not cover, after the window has grown or before there is one, is black.
inline void CopyOntoFresh(CDC& memory, CSize size, CDC& source, const CBitmap& picture)
{
    const CSize covered = picture.GetSize();
    if (covered.cx < size.cx || covered.cy < size.cy) {
        const CRect all(CPoint(), size);
        memory.FillSolidRect(&all, RGB(0, 0, 0));
    }
    memory.BitBlt(0, 0, size.cx, size.cy, &source, 0, 0, SRCCOPY);
}

} // namespace tiltpole::controls
