// SPDX-License-Identifier: MIT
#include "framework/gui/detail/WindowRecord.h"

#include "framework/gui/MessageMap.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace framework {
namespace {

constexpr std::size_t kLentContexts = 16;
constexpr int kMaximumSide = 32767; // pixels; the limit of the packed sizes in messages

raster::Box Union(const raster::Box& a, const raster::Box& b)
{
    if (a.left >= a.right || a.top >= a.bottom) return b;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

int Limited(int side)
{
    return std::clamp(side, 0, kMaximumSide);
}

// One pixel all around, dark above and left, light below and right.
void AddEdge(std::vector<FramePiece>& pieces, const raster::Box& box, COLORREF dark, COLORREF light)
{
    const auto [l, t, r, b] = box;
    pieces.push_back({
        {l, t, r - 1, t + 1},
        ToColor(dark)
    });
    pieces.push_back({
        {l, t, l + 1, b - 1},
        ToColor(dark)
    });
    pieces.push_back({
        {l, b - 1, r, b},
        ToColor(light)
    });
    pieces.push_back({
        {r - 1, t, r, b},
        ToColor(light)
    });
}

raster::Box Inside(const raster::Box& box)
{
    return {box.left + 1, box.top + 1, box.right - 1, box.bottom - 1};
}

} // namespace

int WindowRecord::FrameWidth() const
{
    int edge = 0;
    if (exStyle & WS_EX_CLIENTEDGE) edge += 2;
    if (exStyle & WS_EX_STATICEDGE) edge += 1;
    if ((style & WS_CHILD) && (style & WS_BORDER)) edge += 1;
    return edge;
}

std::vector<FramePiece> WindowRecord::Frame() const
{
    std::vector<FramePiece> pieces;
    raster::Box box{0, 0, width, height};
    if (exStyle & WS_EX_STATICEDGE) {
        AddEdge(pieces, box, GetSysColor(COLOR_BTNSHADOW), GetSysColor(COLOR_BTNHIGHLIGHT));
        box = Inside(box);
    }
    if (exStyle & WS_EX_CLIENTEDGE) {
        AddEdge(pieces, box, GetSysColor(COLOR_BTNSHADOW), GetSysColor(COLOR_BTNHIGHLIGHT));
        box = Inside(box);
        AddEdge(pieces, box, GetSysColor(COLOR_3DDKSHADOW), GetSysColor(COLOR_3DLIGHT));
        box = Inside(box);
    }
    if ((style & WS_CHILD) && (style & WS_BORDER)) AddEdge(pieces, box, 0, 0);
    return pieces;
}

int WindowRecord::ClientWidth() const
{
    return std::max(0, width - 2 * FrameWidth());
}

int WindowRecord::ClientHeight() const
{
    return std::max(0, height - 2 * FrameWidth());
}

raster::Canvas WindowRecord::ClientPicture() const
{
    return image ? image->View() : raster::Canvas{};
}

bool WindowRecord::IsShown() const
{
    for (const WindowRecord* window = this; window; window = window->parent)
        if (!(window->style & WS_VISIBLE)) return false;
    return true;
}

// The area common to both sizes keeps its pixels. The rest becomes invalid, or the whole client
// area if the class style says so.
void WindowRecord::Resize(int newWidth, int newHeight)
{
    const std::shared_ptr<Image> before = image;
    width = Limited(newWidth);
    height = Limited(newHeight);
    const int clientWidth = ClientWidth();
    const int clientHeight = ClientHeight();
    if (before && before->width == clientWidth && before->height == clientHeight) return;

    image = std::make_shared<Image>(clientWidth, clientHeight);
    const raster::Box all{0, 0, clientWidth, clientHeight};
    raster::FillBox(image->View(), all, windowClass->hasBackground ? windowClass->background : 0);
    if (before) raster::Copy(image->View(), all, before->View(), {0, 0}, raster::CopyMode::Replace);
    for (const auto& context : lent) {
        context->image = image;
        context->clip = all;
    }
    const bool redrawAll = !before || (windowClass->style & (CS_HREDRAW | CS_VREDRAW));
    if (redrawAll) {
        Invalidate(all, true);
    } else {
        if (clientWidth > before->width)
            Invalidate({before->width, 0, clientWidth, clientHeight}, true);
        if (clientHeight > before->height)
            Invalidate({0, before->height, clientWidth, clientHeight}, true);
    }
    Send(WM_SIZE, SIZE_RESTORED, PackWords(clientWidth, clientHeight));
}

void WindowRecord::Invalidate(raster::Box box, bool eraseToo)
{
    if (!image) return;
    box = raster::Intersect(box, image->View().clip);
    if (box.left >= box.right) return;
    invalid = Union(invalid, box);
    erase = erase || eraseToo;
    if (native && IsShown()) native->RequestPaint();
}

void WindowRecord::Paint()
{
    if (invalid.left >= invalid.right || isPainting || !IsShown()) return;
    Send(WM_PAINT, 0, 0);
}

DcRecord* WindowRecord::LendContext()
{
    if (lent.size() == kLentContexts) lent.erase(lent.begin());
    auto context = std::make_unique<DcRecord>();
    context->owner = this;
    context->image = image;
    if (image) context->clip = image->View().clip;
    lent.push_back(std::move(context));
    return lent.back().get();
}

void WindowRecord::OnPictureChanged()
{
    if (isPainting || paintRequested || !native) return;
    paintRequested = true;
    native->RequestPaint();
}

bool WindowRecord::TakeBack(const DcRecord* context)
{
    return std::erase_if(lent, [&](const auto& known) { return known.get() == context; }) != 0;
}

void WindowRecord::OnNativePaint()
{
    paintRequested = false;
    Paint();
}

void WindowRecord::OnNativeResize(int newWidth, int newHeight)
{
    Resize(newWidth, newHeight);
}

void WindowRecord::OnNativeClose()
{
    Send(WM_CLOSE, 0, 0);
}

void WindowRecord::OnNativeTimer(std::uintptr_t timer)
{
    Send(WM_TIMER, timer, 0);
}

void WindowRecord::OnNativeMouse(Mouse what, int x, int y)
{
    const UINT message = what == Mouse::Down ? WM_LBUTTONDOWN
                         : what == Mouse::Up ? WM_LBUTTONUP
                                             : WM_MOUSEMOVE;
    Send(message, 0, PackWords(x - FrameWidth(), y - FrameWidth()));
}

} // namespace framework
