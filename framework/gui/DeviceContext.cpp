// SPDX-License-Identifier: MIT
#include "framework/gui/DeviceContext.h"

#include "framework/gui/detail/DcRecord.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

IMPLEMENT_DYNCREATE(CDC, CObject)
IMPLEMENT_DYNAMIC(CClientDC, CDC)
IMPLEMENT_DYNAMIC(CPaintDC, CDC)

namespace raster = framework::raster;
using framework::DcRecord;
using framework::GdiReference;
using framework::ToBox;
using framework::ToColor;

namespace framework {

DcRecord::DcRecord()
    : pen(StockRecord(BLACK_PEN)), brush(StockRecord(WHITE_BRUSH)), font(StockRecord(SYSTEM_FONT))
{}

DcRecord::~DcRecord()
{
    if (bitmap.Get()) bitmap->selectedInto = nullptr;
    if (attached) attached->m_hDC = nullptr;
    if (temporary) temporary->m_hDC = nullptr;
}

raster::Canvas DcRecord::Whole() const
{
    if (!image) return {};
    raster::Canvas canvas = image->View();
    canvas.pixels -= static_cast<std::ptrdiff_t>(origin.y) * canvas.stride + origin.x;
    canvas.clip = {origin.x, origin.y, origin.x + image->width, origin.y + image->height};
    return canvas;
}

raster::Canvas DcRecord::Target() const
{
    raster::Canvas canvas = Whole();
    canvas.clip = raster::Intersect(canvas.clip, clip);
    return canvas;
}

void DcRecord::Touched() const
{
    if (owner) owner->OnPictureChanged();
}

namespace {

constexpr int kMaximumBitmapSide = 32768; // pixels

constexpr raster::Box kEverything{INT_MIN, INT_MIN, INT_MAX, INT_MAX};

template <class Wrapper>
Wrapper* SelectedObject(const GdiReference& slot)
{
    return static_cast<Wrapper*>(CGdiObject::FromHandle(slot.Get()));
}

GdiReference* SlotOf(DcRecord& dc, GdiKind kind)
{
    switch (kind) {
    case GdiKind::Pen:
        return &dc.pen;
    case GdiKind::Brush:
        return &dc.brush;
    case GdiKind::Font:
        return &dc.font;
    case GdiKind::Bitmap:
        return &dc.bitmap;
    }
    return nullptr;
}

// A bitmap can be selected into one memory context at a time and supplies its picture.
bool TakeBitmap(DcRecord& dc, GdiRecord& bitmap)
{
    if (dc.owner || (bitmap.selectedInto && bitmap.selectedInto != &dc)) return false;
    if (dc.bitmap.Get()) dc.bitmap->selectedInto = nullptr;
    bitmap.selectedInto = bitmap.image ? &dc : nullptr;
    dc.image = bitmap.image;
    dc.clip = kEverything;
    return true;
}

HGDIOBJ Select(HDC dc, HGDIOBJ object)
{
    if (!dc || !object) return nullptr;
    GdiReference* slot = SlotOf(*dc, object->kind);
    CGdiObject::FromHandle(slot->Get()); // made before anything changes: the caller returns it
    if (object->kind == GdiKind::Bitmap && !TakeBitmap(*dc, *object)) return nullptr;
    dc->retired = std::exchange(*slot, GdiReference(object));
    return dc->retired.Get();
}

std::vector<raster::Point> ToPoints(const POINT* points, int count)
{
    std::vector<raster::Point> converted;
    converted.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        converted.push_back({points[i].x, points[i].y});
    return converted;
}

} // namespace
} // namespace framework

CDC::~CDC()
{
    DeleteDC();
}

CDC* CDC::FromHandle(HDC handle)
{
    if (!handle) return nullptr;
    if (handle->attached) return handle->attached;
    if (!handle->temporary) {
        handle->temporary = std::make_unique<CDC>();
        handle->temporary->m_hDC = handle;
    }
    return handle->temporary.get();
}

BOOL CDC::Attach(HDC handle)
{
    if (!handle || m_hDC) return FALSE;
    m_hDC = handle;
    handle->attached = this;
    return TRUE;
}

HDC CDC::Detach()
{
    DcRecord* const handle = m_hDC;
    if (handle && handle->attached == this) handle->attached = nullptr;
    m_hDC = nullptr;
    return handle;
}

BOOL CDC::CreateCompatibleDC(CDC*)
{
    if (m_hDC) return FALSE;
    auto record = std::make_unique<DcRecord>();
    record->bitmap = GdiReference(framework::EmptyBitmap());
    return Attach(record.release());
}

BOOL CDC::DeleteDC()
{
    DcRecord* const handle = Detach();
    if (!handle) return FALSE;
    if (handle->owner)
        handle->owner->TakeBack(handle);
    else
        delete handle;
    return TRUE;
}

CPen* CDC::SelectObject(CPen* pen)
{
    return pen ? CPen::FromHandle(framework::Select(m_hDC, pen->m_hObject)) : nullptr;
}

CBrush* CDC::SelectObject(CBrush* brush)
{
    return brush ? CBrush::FromHandle(framework::Select(m_hDC, brush->m_hObject)) : nullptr;
}

CFont* CDC::SelectObject(CFont* font)
{
    return font ? CFont::FromHandle(framework::Select(m_hDC, font->m_hObject)) : nullptr;
}

CBitmap* CDC::SelectObject(CBitmap* bitmap)
{
    return bitmap ? CBitmap::FromHandle(framework::Select(m_hDC, bitmap->m_hObject)) : nullptr;
}

CGdiObject* CDC::SelectObject(CGdiObject* object)
{
    return object ? CGdiObject::FromHandle(framework::Select(m_hDC, object->m_hObject)) : nullptr;
}

CGdiObject* CDC::SelectStockObject(int index)
{
    return CGdiObject::FromHandle(framework::Select(m_hDC, framework::StockRecord(index)));
}

CPen* CDC::GetCurrentPen() const
{
    return m_hDC ? framework::SelectedObject<CPen>(m_hDC->pen) : nullptr;
}

CBrush* CDC::GetCurrentBrush() const
{
    return m_hDC ? framework::SelectedObject<CBrush>(m_hDC->brush) : nullptr;
}

CFont* CDC::GetCurrentFont() const
{
    return m_hDC ? framework::SelectedObject<CFont>(m_hDC->font) : nullptr;
}

CBitmap* CDC::GetCurrentBitmap() const
{
    return m_hDC ? framework::SelectedObject<CBitmap>(m_hDC->bitmap) : nullptr;
}

COLORREF CDC::SetTextColor(COLORREF color)
{
    return m_hDC ? std::exchange(m_hDC->textColor, color) : CLR_INVALID;
}

COLORREF CDC::GetTextColor() const
{
    return m_hDC ? m_hDC->textColor : CLR_INVALID;
}

COLORREF CDC::SetBkColor(COLORREF color)
{
    return m_hDC ? std::exchange(m_hDC->backColor, color) : CLR_INVALID;
}

COLORREF CDC::GetBkColor() const
{
    return m_hDC ? m_hDC->backColor : CLR_INVALID;
}

int CDC::SetBkMode(int mode)
{
    return m_hDC ? std::exchange(m_hDC->backMode, mode) : 0;
}

int CDC::GetBkMode() const
{
    return m_hDC ? m_hDC->backMode : 0;
}

CPoint CDC::GetCurrentPosition() const
{
    return m_hDC ? CPoint(m_hDC->position) : CPoint();
}

CPoint CDC::MoveTo(int x, int y)
{
    if (!m_hDC) return {};
    return std::exchange(m_hDC->position, POINT{x, y});
}

BOOL CDC::LineTo(int x, int y)
{
    if (!m_hDC) return FALSE;
    const POINT from = std::exchange(m_hDC->position, POINT{x, y});
    if (!m_hDC->pen->isNull)
        raster::DrawLine(m_hDC->Target(), {from.x, from.y}, {x, y}, m_hDC->pen->stroke);
    m_hDC->Touched();
    return TRUE;
}

BOOL CDC::Polyline(const POINT* points, int count)
{
    if (!m_hDC || !points || count < 2) return FALSE;
    if (m_hDC->pen->isNull) return TRUE;
    for (int i = 1; i < count; ++i)
        raster::DrawLine(m_hDC->Target(), {points[i - 1].x, points[i - 1].y},
                         {points[i].x, points[i].y}, m_hDC->pen->stroke);
    m_hDC->Touched();
    return TRUE;
}

BOOL CDC::Polygon(const POINT* points, int count)
{
    if (!m_hDC || !points || count < 2) return FALSE;
    const std::vector<raster::Point> corners = framework::ToPoints(points, count);
    if (!m_hDC->brush->isNull) raster::FillPolygon(m_hDC->Target(), corners, m_hDC->brush->fill);
    if (!m_hDC->pen->isNull) raster::DrawClosedChain(m_hDC->Target(), corners, m_hDC->pen->stroke);
    m_hDC->Touched();
    return TRUE;
}

BOOL CDC::Rectangle(int left, int top, int right, int bottom)
{
    if (!m_hDC) return FALSE;
    const raster::Box box{std::min(left, right), std::min(top, bottom), std::max(left, right),
                          std::max(top, bottom)};
    if (box.left == box.right || box.top == box.bottom) return TRUE;
    const bool outlined = !m_hDC->pen->isNull;
    // Without an outline the last row and column are not filled.
    const int edge = outlined ? 0 : 1;
    if (!m_hDC->brush->isNull)
        raster::FillBox(m_hDC->Target(), {box.left, box.top, box.right - edge, box.bottom - edge},
                        m_hDC->brush->fill);
    if (outlined) raster::DrawFrame(m_hDC->Target(), box, m_hDC->pen->stroke);
    m_hDC->Touched();
    return TRUE;
}

BOOL CDC::Rectangle(LPCRECT rect)
{
    return rect ? Rectangle(rect->left, rect->top, rect->right, rect->bottom) : FALSE;
}

BOOL CDC::Ellipse(int left, int top, int right, int bottom)
{
    if (!m_hDC) return FALSE;
    const raster::Box box{left, top, right, bottom};
    if (!m_hDC->brush->isNull) raster::FillEllipse(m_hDC->Target(), box, m_hDC->brush->fill);
    if (!m_hDC->pen->isNull) raster::DrawEllipse(m_hDC->Target(), box, m_hDC->pen->stroke);
    m_hDC->Touched();
    return TRUE;
}

BOOL CDC::Ellipse(LPCRECT rect)
{
    return rect ? Ellipse(rect->left, rect->top, rect->right, rect->bottom) : FALSE;
}

void CDC::FillRect(LPCRECT rect, CBrush* brush)
{
    if (!m_hDC || !rect || !brush || !brush->m_hObject || brush->m_hObject->isNull) return;
    raster::FillBox(m_hDC->Target(), ToBox(*rect), brush->m_hObject->fill);
    m_hDC->Touched();
}

void CDC::FillSolidRect(LPCRECT rect, COLORREF color)
{
    if (!m_hDC || !rect) return;
    SetBkColor(color);
    raster::FillBox(m_hDC->Target(), ToBox(*rect), ToColor(color));
    m_hDC->Touched();
}

void CDC::FillSolidRect(int x, int y, int width, int height, COLORREF color)
{
    const CRect rect(x, y, framework::EndOf(x, width), framework::EndOf(y, height));
    FillSolidRect(&rect, color);
}

COLORREF CDC::SetPixel(int x, int y, COLORREF color)
{
    if (GetPixel(x, y) == CLR_INVALID) return CLR_INVALID;
    raster::FillBox(m_hDC->Target(), {x, y, x + 1, y + 1}, ToColor(color));
    m_hDC->Touched();
    return color;
}

COLORREF CDC::GetPixel(int x, int y) const
{
    if (!m_hDC) return CLR_INVALID;
    const raster::Canvas canvas = m_hDC->Target();
    const raster::Box& clip = canvas.clip;
    if (x < clip.left || y < clip.top || x >= clip.right || y >= clip.bottom) return CLR_INVALID;
    return framework::ToColorRef(canvas.pixels[static_cast<std::ptrdiff_t>(y) * canvas.stride + x]);
}

BOOL CDC::BitBlt(int x, int y, int width, int height, CDC* source, int sourceX, int sourceY,
                 DWORD operation)
{
    if (!m_hDC || !source || !source->m_hDC) return FALSE;
    if (operation != SRCCOPY && operation != SRCPAINT) return FALSE;
    // The whole source picture is readable: its clip restricts drawing only.
    const raster::Canvas from = source->m_hDC->Whole();
    const raster::Box box{x, y, framework::EndOf(x, width), framework::EndOf(y, height)};
    raster::Copy(m_hDC->Target(), box, from, {sourceX, sourceY},
                 operation == SRCCOPY ? raster::CopyMode::Replace : raster::CopyMode::Combine);
    m_hDC->Touched();
    return TRUE;
}

CWnd* CDC::GetWindow() const
{
    return m_hDC && m_hDC->owner ? m_hDC->owner->Window() : nullptr;
}

BOOL CBitmap::CreateCompatibleBitmap(CDC* dc, int width, int height)
{
    if (!dc || !dc->GetSafeHdc()) return FALSE;
    if (width < 0 || height < 0 || width > framework::kMaximumBitmapSide
        || height > framework::kMaximumBitmapSide)
        return FALSE;
    if (width == 0 || height == 0) width = height = 1;
    try {
        auto record = std::make_unique<framework::GdiRecord>(framework::GdiKind::Bitmap);
        record->image = std::make_shared<framework::Image>(width, height);
        return Hold(record.release());
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}
