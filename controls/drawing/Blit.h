// SPDX-License-Identifier: MIT
//
// Copying whole pictures between memory contexts.
#pragma once

#include "framework/core/Rect.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/GdiObject.h"

#include <new>

namespace tiltpole::controls {

/// Makes a picture of that size and selects it into `dc`; each is made where it is not there yet.
/// @throws std::bad_alloc  what was made by then is used by the next call
inline void PreparePicture(CDC& dc, CBitmap& picture, CDC& like, CSize size)
{
    if (!dc.GetSafeHdc()) dc.CreateCompatibleDC(&like);
    if (!picture.GetSafeHandle() && !picture.CreateCompatibleBitmap(&like, size.cx, size.cy))
        throw std::bad_alloc();
    dc.SelectObject(&picture);
}

/// Copies `picture`, which is selected into `source`, to the upper left corner of a new picture of
/// `size`. Any area it does not cover (the window has grown, or has no picture yet) is black.
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
