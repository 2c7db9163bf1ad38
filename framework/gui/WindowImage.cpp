// SPDX-License-Identifier: MIT
#include "framework/gui/Application.h"
#include "framework/gui/detail/Image.h"
#include "framework/gui/detail/WindowRecord.h"

#include "framework/core/TextConversion.h"

#include <cerrno>
#include <new>

namespace framework {
namespace {

// Copies the pictures of the window and its visible children to `target` at (x, y), clipped.
void Compose(const WindowRecord& window, const raster::Canvas& target, int x, int y,
             const raster::Box& clip)
{
    const raster::Box box{x, y, x + window.ClientWidth(), y + window.ClientHeight()};
    raster::Canvas view = target;
    view.clip = raster::Intersect(raster::Intersect(target.clip, clip), box);
    raster::Copy(view, box, window.ClientPicture(), {0, 0}, raster::CopyMode::Replace);
    for (const WindowRecord* child : window.children) {
        if (!(child->style & WS_VISIBLE)) continue;
        const int left = x + child->origin.x;
        const int top = y + child->origin.y;
        for (const FramePiece& piece : child->Frame())
            raster::FillBox(view,
                            {left + piece.box.left, top + piece.box.top, left + piece.box.right,
                             top + piece.box.bottom},
                            piece.color);
        Compose(*child, target, left + child->FrameWidth(), top + child->FrameWidth(), view.clip);
    }
}

} // namespace

bool SaveWindowImage(CWnd& window, const CString& pngPath)
try {
    Toolkit* toolkit = CurrentToolkit();
    errno = EINVAL;
    if (!window.m_hWnd || !toolkit) return false;
    const WindowRecord& record = *window.m_hWnd;
    const Image picture(record.ClientWidth(), record.ClientHeight());
    Compose(record, picture.View(), 0, 0, picture.View().clip);
    return toolkit->SavePng(picture.View(), ToUtf8(pngPath.GetString()));
} catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return false;
}

} // namespace framework
