// SPDX-License-Identifier: MIT
//
// The state of a device context: saved and restored, clipped, alignment; and contexts of whole
// windows.
#include "framework/gui/DeviceContext.h"
#include "framework/gui/Wnd.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <algorithm>
#include <utility>

IMPLEMENT_DYNAMIC(CWindowDC, CDC)

namespace raster = framework::raster;
using framework::DcState;
using framework::GdiReference;

namespace {

int RegionOf(const raster::Box& box)
{
    return box.left < box.right && box.top < box.bottom ? SIMPLEREGION : NULLREGION;
}

// Inverts the bits of `mask` in the part of `box` that may be drawn on.
void Invert(const raster::Canvas& canvas, const raster::Box& box, raster::Color mask)
{
    const raster::Box part = raster::Intersect(box, canvas.clip);
    for (int y = part.top; y < part.bottom; ++y)
        for (int x = part.left; x < part.right; ++x)
            canvas.pixels[static_cast<std::ptrdiff_t>(y) * canvas.stride + x] ^= mask;
}

constexpr raster::Color kWhite = 0xFFFFFF;

} // namespace

int CDC::SaveDC()
{
    if (!m_hDC) return 0;
    m_hDC->saved.push_back(
        DcState{GdiReference(m_hDC->bitmap.Get()), GdiReference(m_hDC->pen.Get()),
                GdiReference(m_hDC->brush.Get()), GdiReference(m_hDC->font.Get()), m_hDC->textColor,
                m_hDC->backColor, m_hDC->backMode, m_hDC->textAlign, m_hDC->position, m_hDC->clip});
    return static_cast<int>(m_hDC->saved.size());
}

BOOL CDC::RestoreDC(int saved)
{
    if (!m_hDC) return FALSE;
    const int kept = static_cast<int>(m_hDC->saved.size());
    const int level = saved < 0 ? kept + 1 + saved : saved;
    if (level < 1 || level > kept) return FALSE;
    DcState& state = m_hDC->saved[static_cast<std::size_t>(level - 1)];
    // It stays where it is if another context has it by now.
    if (state.bitmap.Get() && state.bitmap.Get() != m_hDC->bitmap.Get())
        SelectObject(CBitmap::FromHandle(state.bitmap.Get()));
    m_hDC->pen = std::move(state.pen);
    m_hDC->brush = std::move(state.brush);
    m_hDC->font = std::move(state.font);
    m_hDC->textColor = state.textColor;
    m_hDC->backColor = state.backColor;
    m_hDC->backMode = state.backMode;
    m_hDC->textAlign = state.textAlign;
    m_hDC->position = state.position;
    m_hDC->clip = state.clip;
    m_hDC->saved.erase(m_hDC->saved.begin() + (level - 1), m_hDC->saved.end());
    return TRUE;
}

int CDC::IntersectClipRect(int left, int top, int right, int bottom)
{
    if (!m_hDC) return 0;
    m_hDC->clip = raster::Intersect(m_hDC->clip, {left, top, right, bottom});
    return RegionOf(m_hDC->Target().clip);
}

int CDC::IntersectClipRect(LPCRECT rect)
{
    return rect ? IntersectClipRect(rect->left, rect->top, rect->right, rect->bottom) : 0;
}

int CDC::GetClipBox(LPRECT rect) const
{
    if (!m_hDC || !rect) return 0;
    const raster::Box box = m_hDC->Target().clip;
    *rect = {box.left, box.top, box.right, box.bottom};
    return RegionOf(box);
}

BOOL CDC::PatBlt(int x, int y, int width, int height, DWORD operation)
{
    if (!m_hDC) return FALSE;
    const raster::Canvas canvas = m_hDC->Target();
    const int right = framework::EndOf(x, width);
    const int bottom = framework::EndOf(y, height);
    const raster::Box box{std::min(x, right), std::min(y, bottom), std::max(x, right),
                          std::max(y, bottom)};
    const framework::GdiReference& brush = m_hDC->brush;
    switch (operation) {
    case PATCOPY:
        if (!brush->isNull) raster::FillBox(canvas, box, brush->fill);
        break;
    case PATINVERT:
        if (!brush->isNull) Invert(canvas, box, brush->fill);
        break;
    case DSTINVERT:
        Invert(canvas, box, kWhite);
        break;
    case BLACKNESS:
        raster::FillBox(canvas, box, 0);
        break;
    case WHITENESS:
        raster::FillBox(canvas, box, kWhite);
        break;
    default:
        return FALSE;
    }
    m_hDC->Touched();
    return TRUE;
}

UINT CDC::SetTextAlign(UINT flags)
{
    return m_hDC ? std::exchange(m_hDC->textAlign, flags) : GDI_ERROR;
}

UINT CDC::GetTextAlign() const
{
    return m_hDC ? m_hDC->textAlign : GDI_ERROR;
}

CWindowDC::CWindowDC(CWnd* window) : m_hWnd(window ? window->m_hWnd : nullptr)
{
    if (!m_hWnd) return;
    framework::DcRecord* const context = m_hWnd->LendContext();
    context->origin = {m_hWnd->FrameWidth(), m_hWnd->FrameWidth()};
    context->clip = context->Whole().clip;
    Attach(context);
}

CWindowDC::~CWindowDC()
{
    framework::DcRecord* const handle = Detach();
    if (framework::Windows().Holds(m_hWnd)) m_hWnd->TakeBack(handle);
}
