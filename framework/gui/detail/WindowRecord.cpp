// SPDX-License-Identifier: MIT
#include "framework/gui/detail/WindowRecord.h"

#include "framework/gui/MessageMap.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace framework {
namespace {

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

POINT WindowRecord::CornerOnScreen() const
{
    POINT corner{0, 0};
    for (const WindowRecord* window = this; window; window = window->parent) {
        const auto place = window->native ? window->native->PlaceInForeignParent() : std::nullopt;
        corner.x += place ? place->x : window->origin.x;
        corner.y += place ? place->y : window->origin.y;
        if (place) break; // on the screen
        if (window->parent) {
            corner.x += window->parent->FrameWidth();
            corner.y += window->parent->FrameWidth();
        }
    }
    return corner;
}

POINT WindowRecord::ClientOnScreen() const
{
    const POINT corner = CornerOnScreen();
    return {corner.x + FrameWidth(), corner.y + FrameWidth()};
}

bool WindowRecord::IsInside(const WindowRecord& other) const
{
    for (const WindowRecord* window = this; window; window = window->parent)
        if (window == &other) return true;
    return false;
}

// The area common to both sizes keeps its pixels. The rest becomes invalid, or the whole client
// area if the class style says so.
WindowRecord::Sized WindowRecord::SetSize(int newWidth, int newHeight, bool redrawn)
try {
    const int frame = 2 * FrameWidth();
    const int clientWidth = std::max(0, Limited(newWidth) - frame);
    const int clientHeight = std::max(0, Limited(newHeight) - frame);
    const std::shared_ptr<Image> before = image;
    const bool same = before && before->width == clientWidth && before->height == clientHeight;
    if (!same) image = std::make_shared<Image>(clientWidth, clientHeight);
    width = Limited(newWidth);
    height = Limited(newHeight);
    if (same) return Sized::Unchanged;

    const raster::Box all{0, 0, clientWidth, clientHeight};
    raster::FillBox(image->View(), all, windowClass->hasBackground ? windowClass->background : 0);
    if (before) raster::Copy(image->View(), all, before->View(), {0, 0}, raster::CopyMode::Replace);
    for (const auto& context : lent) {
        context->image = image;
        context->clip = context->Whole().clip;
    }
    invalid = raster::Intersect(invalid, all);
    erase = erase && invalid.left < invalid.right;
    if (!redrawn && before) return Sized::Changed;
    const bool redrawAll = !before || (windowClass->style & (CS_HREDRAW | CS_VREDRAW));
    if (redrawAll) {
        Invalidate(all, true);
    } else {
        if (clientWidth > before->width)
            Invalidate({before->width, 0, clientWidth, clientHeight}, true);
        if (clientHeight > before->height)
            Invalidate({0, before->height, clientWidth, clientHeight}, true);
    }
    return Sized::Changed;
} catch (const std::bad_alloc&) {
    return Sized::NoMemory;
}

void WindowRecord::ReportSize()
{
    Send(WM_SIZE, SIZE_RESTORED, PackWords(ClientWidth(), ClientHeight()));
}

void WindowRecord::ReportMove()
{
    Send(WM_MOVE, 0, PackWords(origin.x + FrameWidth(), origin.y + FrameWidth()));
}

void WindowRecord::Invalidate(raster::Box box, bool eraseToo)
{
    if (StayInvalid(box, eraseToo) && native && IsShown()) native->RequestPaint();
}

bool WindowRecord::StayInvalid(raster::Box box, bool eraseToo)
{
    box = raster::Intersect(box, ClientPicture().clip);
    if (box.left >= box.right) return false;
    invalid = Union(invalid, box);
    erase = erase || eraseToo;
    return true;
}

void WindowRecord::Paint()
{
    if (IsShown()) PaintInvalid();
}

void WindowRecord::PaintInvalid()
{
    if (invalid.left >= invalid.right || isPainting || !redraws) return;
    const std::shared_ptr<WindowRecord> kept = shared_from_this();
    const raster::Box box = invalid;
    const bool erased = erase;
    try {
        Send(WM_PAINT, 0, 0);
    } catch (...) {
        isPainting = false; // a host may not have come to EndPaint
        StayInvalid(box, erased);
        throw;
    }
}

DcRecord* WindowRecord::LendContext()
{
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
    PaintInvalid();
}

void WindowRecord::OnNativeResize(int newWidth, int newHeight)
{
    if (SetSize(newWidth, newHeight) == Sized::Changed) ReportSize();
}

void WindowRecord::OnNativeMove(int x, int y)
{
    if (origin.x == x && origin.y == y) return;
    origin = {x, y};
    ReportMove();
}

void WindowRecord::OnNativeShown(bool visible)
{
    SetShown(visible, true);
}

void WindowRecord::SetShown(bool visible, bool redrawn)
{
    if (((style & WS_VISIBLE) != 0) == visible) return;
    const std::shared_ptr<WindowRecord> kept = shared_from_this();
    Send(WM_SHOWWINDOW, visible ? TRUE : FALSE, 0);
    if (isGone) return;
    style = visible ? style | WS_VISIBLE : style & ~WS_VISIBLE;
    if (!visible)
        LeaveFocus(*this);
    else if (redrawn)
        Invalidate({0, 0, ClientWidth(), ClientHeight()}, true);
}

void WindowRecord::OnNativeClose()
{
    Send(WM_CLOSE, 0, 0);
}

void WindowRecord::OnNativeGone()
{
    Destroy(this);
}

void WindowRecord::OnNativeTimer(std::uintptr_t timer)
{
    Send(WM_TIMER, timer, 0);
}

void WindowRecord::OnNativePosted(unsigned message, std::uintptr_t wParam, std::intptr_t lParam)
{
    Send(message, wParam, lParam);
}

} // namespace framework
