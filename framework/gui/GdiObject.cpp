// SPDX-License-Identifier: MIT
#include "framework/gui/GdiObject.h"

#include "framework/gui/detail/GdiRecord.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>

IMPLEMENT_DYNCREATE(CGdiObject, CObject)
IMPLEMENT_DYNAMIC(CPen, CGdiObject)
IMPLEMENT_DYNAMIC(CBrush, CGdiObject)
IMPLEMENT_DYNAMIC(CFont, CGdiObject)
IMPLEMENT_DYNAMIC(CBitmap, CGdiObject)

namespace framework {
namespace {

constexpr std::size_t kStockObjects = DEFAULT_GUI_FONT + 1;

template <class Wrapper>
std::unique_ptr<CGdiObject> Lend(GdiRecord* record)
{
    auto lent = std::make_unique<Wrapper>();
    lent->m_hObject = record;
    return lent;
}

std::unique_ptr<CGdiObject> LendFor(GdiRecord* record)
{
    switch (record->kind) {
    case GdiKind::Pen:
        return Lend<CPen>(record);
    case GdiKind::Brush:
        return Lend<CBrush>(record);
    case GdiKind::Font:
        return Lend<CFont>(record);
    case GdiKind::Bitmap:
        return Lend<CBitmap>(record);
    }
    return nullptr;
}

GdiRecord* MakePen(COLORREF color, int width, bool isNull)
{
    auto* record = new GdiRecord(GdiKind::Pen);
    record->stroke = {width, ToColor(color)};
    record->isNull = isNull;
    return record;
}

GdiRecord* MakeBrush(COLORREF color, bool isNull)
{
    auto* record = new GdiRecord(GdiKind::Brush);
    record->fill = ToColor(color);
    record->isNull = isNull;
    return record;
}

GdiRecord* MakeStock(int index)
{
    switch (index) {
    case WHITE_BRUSH:
        return MakeBrush(RGB(255, 255, 255), false);
    case LTGRAY_BRUSH:
        return MakeBrush(RGB(192, 192, 192), false);
    case GRAY_BRUSH:
        return MakeBrush(RGB(128, 128, 128), false);
    case DKGRAY_BRUSH:
        return MakeBrush(RGB(64, 64, 64), false);
    case BLACK_BRUSH:
        return MakeBrush(RGB(0, 0, 0), false);
    case NULL_BRUSH:
        return MakeBrush(0, true);
    case WHITE_PEN:
        return MakePen(RGB(255, 255, 255), 1, false);
    case BLACK_PEN:
        return MakePen(RGB(0, 0, 0), 1, false);
    case NULL_PEN:
        return MakePen(0, 1, true);
    case SYSTEM_FONT:
    case DEFAULT_GUI_FONT:
        return new GdiRecord(GdiKind::Font);
    default:
        return nullptr;
    }
}

} // namespace

GdiRecord::GdiRecord(GdiKind givenKind) : kind(givenKind) {}

GdiRecord::~GdiRecord()
{
    if (temporary) temporary->m_hObject = nullptr;
}

void GdiReference::Release(GdiRecord* record)
{
    if (record && --record->references == 0) delete record;
}

// Stock objects are created once and never deleted, even if a caller tries to.
GdiRecord* StockRecord(int index)
{
    static const std::array<GdiRecord*, kStockObjects> stock = [] {
        std::array<GdiRecord*, kStockObjects> made{};
        for (std::size_t i = 0; i < made.size(); ++i)
            made.at(i) = MakeStock(static_cast<int>(i));
        return made;
    }();
    const auto at = static_cast<std::size_t>(index);
    return at < stock.size() ? stock.at(at) : nullptr;
}

GdiRecord* EmptyBitmap()
{
    static GdiRecord* const empty = new GdiRecord(GdiKind::Bitmap);
    return empty;
}

namespace {

bool IsStock(const GdiRecord* record)
{
    if (record == EmptyBitmap()) return true;
    for (int index = WHITE_BRUSH; index <= DEFAULT_GUI_FONT; ++index)
        if (record == StockRecord(index)) return true;
    return false;
}

template <class Wrapper>
Wrapper* Wrapped(GdiRecord* record)
{
    return dynamic_cast<Wrapper*>(CGdiObject::FromHandle(record));
}

} // namespace
} // namespace framework

using framework::GdiKind;
using framework::GdiRecord;

COLORREF GetSysColor(int index)
{
    switch (index & ~SYS_COLOR_INDEX_FLAG) {
    case COLOR_WINDOW:
        return RGB(255, 255, 255);
    case COLOR_BTNFACE:
        return RGB(192, 192, 192);
    case COLOR_BTNSHADOW:
        return RGB(128, 128, 128);
    case COLOR_BTNHIGHLIGHT:
        return RGB(255, 255, 255);
    case COLOR_3DLIGHT:
        return RGB(192, 192, 192);
    default:
        return RGB(0, 0, 0);
    }
}

CGdiObject::~CGdiObject()
{
    DeleteObject();
}

CGdiObject* CGdiObject::FromHandle(HGDIOBJ handle)
{
    if (!handle) return nullptr;
    if (handle->attached) return handle->attached;
    if (!handle->temporary) handle->temporary = framework::LendFor(handle);
    return handle->temporary.get();
}

BOOL CGdiObject::Attach(HGDIOBJ handle)
{
    if (!handle || m_hObject) return FALSE;
    m_hObject = handle;
    handle->attached = this;
    return TRUE;
}

HGDIOBJ CGdiObject::Detach()
{
    GdiRecord* const handle = m_hObject;
    if (handle && handle->attached == this) handle->attached = nullptr;
    m_hObject = nullptr;
    return handle;
}

BOOL CGdiObject::DeleteObject()
{
    GdiRecord* const handle = Detach();
    if (!handle) return FALSE;
    if (!framework::IsStock(handle)) framework::GdiReference::Release(handle);
    return TRUE;
}

BOOL CGdiObject::CreateStockObject(int index)
{
    if (m_hObject) return FALSE;
    m_hObject = framework::StockRecord(index);
    return m_hObject != nullptr;
}

BOOL CGdiObject::Hold(HGDIOBJ made)
{
    DeleteObject();
    return Attach(made);
}

BOOL CPen::CreatePen(int style, int width, COLORREF color)
{
    if (style != PS_SOLID && style != PS_NULL) return FALSE;
    return Hold(framework::MakePen(color, width, style == PS_NULL));
}

CPen* CPen::FromHandle(HPEN handle)
{
    return framework::Wrapped<CPen>(handle);
}

BOOL CBrush::CreateSolidBrush(COLORREF color)
{
    return Hold(framework::MakeBrush(color, false));
}

CBrush* CBrush::FromHandle(HBRUSH handle)
{
    return framework::Wrapped<CBrush>(handle);
}

BOOL CFont::CreateFontIndirect(const LOGFONT* font)
{
    if (!font) return FALSE;
    auto record = std::make_unique<GdiRecord>(GdiKind::Font);
    record->font.height = font->lfHeight;
    record->font.weight = font->lfWeight;
    record->font.italic = font->lfItalic != 0;
    for (int i = 0; i < LF_FACESIZE && font->lfFaceName[i]; ++i)
        record->font.face += font->lfFaceName[i];
    return Hold(record.release());
}

BOOL CFont::CreateFont(int height, int width, int escapement, int orientation, int weight,
                       BYTE italic, BYTE underline, BYTE strikeOut, BYTE charSet, BYTE outPrecision,
                       BYTE clipPrecision, BYTE quality, BYTE pitchAndFamily, LPCTSTR face)
{
    LOGFONT font;
    font.lfHeight = height;
    font.lfWidth = width;
    font.lfEscapement = escapement;
    font.lfOrientation = orientation;
    font.lfWeight = weight;
    font.lfItalic = italic;
    font.lfUnderline = underline;
    font.lfStrikeOut = strikeOut;
    font.lfCharSet = charSet;
    font.lfOutPrecision = outPrecision;
    font.lfClipPrecision = clipPrecision;
    font.lfQuality = quality;
    font.lfPitchAndFamily = pitchAndFamily;
    for (int i = 0; face && face[i] && i < LF_FACESIZE - 1; ++i)
        font.lfFaceName[i] = face[i];
    return CreateFontIndirect(&font);
}

BOOL CFont::CreatePointFont(int tenths, LPCTSTR face, CDC*)
{
    constexpr double pixelsPerTenth = 96.0 / 720.0;
    LOGFONT font;
    font.lfHeight = -static_cast<LONG>(std::lround(tenths * pixelsPerTenth));
    for (int i = 0; face && face[i] && i < LF_FACESIZE - 1; ++i)
        font.lfFaceName[i] = face[i];
    return CreateFontIndirect(&font);
}

CFont* CFont::FromHandle(HFONT handle)
{
    return framework::Wrapped<CFont>(handle);
}

CSize CBitmap::GetSize() const
{
    if (!m_hObject || !m_hObject->image) return {0, 0};
    return {m_hObject->image->width, m_hObject->image->height};
}

CBitmap* CBitmap::FromHandle(HBITMAP handle)
{
    return framework::Wrapped<CBitmap>(handle);
}

HGDIOBJ GetStockObject(int index)
{
    return framework::StockRecord(index);
}
