// SPDX-License-Identifier: MIT
//
// Text on a device context, drawn with the toolkit's fonts.
#include "framework/gui/DeviceContext.h"
#include "framework/gui/detail/DcRecord.h"
#include "framework/gui/detail/Image.h"

#include <algorithm>
#include <string_view>

namespace raster = framework::raster;
using framework::ToBox;
using framework::ToColor;

namespace {

std::wstring_view ViewOf(LPCTSTR text, int count)
{
    if (!text) return {};
    return count < 0 ? std::wstring_view(text)
                     : std::wstring_view(text, static_cast<std::size_t>(count));
}

framework::TextExtent Measure(const framework::DcRecord& dc, std::wstring_view text)
{
    framework::Toolkit* toolkit = framework::CurrentToolkit();
    return toolkit ? toolkit->Measure(dc.font->font, text) : framework::TextExtent{};
}

// Draws one line with its upper left corner at `at`, clipped to `clip`. In opaque mode the cell is
// filled first.
void DrawTextLine(const framework::DcRecord& dc, std::wstring_view text, raster::Point at,
                  const raster::Box& clip)
{
    framework::Toolkit* toolkit = framework::CurrentToolkit();
    if (!toolkit || text.empty()) return;
    raster::Canvas canvas = dc.Target();
    canvas.clip = raster::Intersect(canvas.clip, clip);
    if (dc.backMode == OPAQUE) {
        const framework::TextExtent cell = toolkit->Measure(dc.font->font, text);
        raster::FillBox(canvas, {at.x, at.y, at.x + cell.width, at.y + cell.height},
                        ToColor(dc.backColor));
    }
    toolkit->DrawText(canvas, dc.font->font, ToColor(dc.textColor), at, text);
}

std::vector<std::wstring_view> LinesOf(std::wstring_view text, UINT format)
{
    std::vector<std::wstring_view> lines;
    while (!(format & DT_SINGLELINE)) {
        const std::size_t end = text.find(L'\n');
        if (end == std::wstring_view::npos) break;
        std::wstring_view line = text.substr(0, end);
        if (line.ends_with(L'\r')) line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(end + 1);
    }
    lines.push_back(text);
    return lines;
}

int LeftOf(const RECT& rect, int width, UINT format)
{
    if (format & DT_CENTER) return rect.left + (rect.right - rect.left - width) / 2;
    if (format & DT_RIGHT) return rect.right - width;
    return rect.left;
}

// Vertical alignment applies to single lines only.
int TopOf(const RECT& rect, int height, UINT format)
{
    if (!(format & DT_SINGLELINE)) return rect.top;
    if (format & DT_VCENTER) return rect.top + (rect.bottom - rect.top - height) / 2;
    if (format & DT_BOTTOM) return rect.bottom - height;
    return rect.top;
}

} // namespace

int CDC::DrawText(LPCTSTR text, int count, LPRECT rect, UINT format)
{
    if (!m_hDC || !rect) return 0;
    const std::vector<std::wstring_view> lines = LinesOf(ViewOf(text, count), format);
    const int lineHeight = Measure(*m_hDC, L"0").height;
    const int height = lineHeight * static_cast<int>(lines.size());
    if (format & DT_CALCRECT) {
        int width = 0;
        for (const std::wstring_view line : lines)
            width = std::max(width, Measure(*m_hDC, line).width);
        rect->right = rect->left + width;
        rect->bottom = rect->top + height;
        return height;
    }
    const raster::Box clip = format & DT_NOCLIP ? m_hDC->Target().clip : ToBox(*rect);
    int top = TopOf(*rect, height, format);
    for (const std::wstring_view line : lines) {
        DrawTextLine(*m_hDC, line, {LeftOf(*rect, Measure(*m_hDC, line).width, format), top}, clip);
        top += lineHeight;
    }
    m_hDC->Touched();
    return height;
}

int CDC::DrawText(const CString& text, LPRECT rect, UINT format)
{
    return DrawText(text.GetString(), text.GetLength(), rect, format);
}

BOOL CDC::ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT count, const int*)
{
    if (!m_hDC) return FALSE;
    raster::Box clip = m_hDC->Target().clip;
    if (rect && (options & ETO_OPAQUE))
        raster::FillBox(m_hDC->Target(), ToBox(*rect), ToColor(m_hDC->backColor));
    if (rect && (options & ETO_CLIPPED)) clip = raster::Intersect(clip, ToBox(*rect));
    DrawTextLine(*m_hDC, ViewOf(text, static_cast<int>(count)), {x, y}, clip);
    m_hDC->Touched();
    return TRUE;
}

BOOL CDC::ExtTextOut(int x, int y, UINT options, LPCRECT rect, const CString& text,
                     const int* spacing)
{
    return ExtTextOut(x, y, options, rect, text.GetString(), static_cast<UINT>(text.GetLength()),
                      spacing);
}

BOOL CDC::TextOut(int x, int y, const CString& text)
{
    return ExtTextOut(x, y, 0, nullptr, text, nullptr);
}

CSize CDC::GetTextExtent(const CString& text) const
{
    if (!m_hDC) return {};
    const framework::TextExtent extent =
        Measure(*m_hDC, ViewOf(text.GetString(), text.GetLength()));
    return {extent.width, extent.height};
}
