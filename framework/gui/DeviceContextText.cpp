// SPDX-License-Identifier: MIT
//
// Text on a device context, drawn with the toolkit's fonts.
#include "framework/gui/DeviceContext.h"
#include "framework/gui/detail/DcRecord.h"
#include "framework/gui/detail/Image.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace raster = framework::raster;
using framework::EndOf;
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

// Whether a box lies outside a clip by more than characters reach beyond their cells.
bool IsFarFrom(const raster::Box& box, const raster::Box& clip, int reach)
{
    return box.left > EndOf(clip.right, reach) || box.top > EndOf(clip.bottom, reach)
           || box.right < EndOf(clip.left, -reach) || box.bottom < EndOf(clip.top, -reach);
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
    const framework::TextExtent cell = toolkit->Measure(dc.font->font, text);
    const raster::Box box{at.x, at.y, EndOf(at.x, cell.width), EndOf(at.y, cell.height)};
    if (IsFarFrom(box, canvas.clip, cell.height)) return;
    if (dc.backMode == OPAQUE) raster::FillBox(canvas, box, ToColor(dc.backColor));
    toolkit->DrawText(canvas, dc.font->font, ToColor(dc.textColor), at, text);
}

// The upper left corner of a line that is placed at `at`.
raster::Point Aligned(const framework::DcRecord& dc, std::wstring_view line, raster::Point at)
{
    if (dc.textAlign == (TA_LEFT | TA_TOP)) return at;
    const framework::TextExtent cell = Measure(dc, line);
    if ((dc.textAlign & TA_CENTER) == TA_CENTER)
        at.x = EndOf(at.x, -(cell.width / 2));
    else if (dc.textAlign & TA_RIGHT)
        at.x = EndOf(at.x, -cell.width);
    if ((dc.textAlign & TA_BASELINE) == TA_BASELINE)
        at.y = EndOf(at.y, -cell.ascent);
    else if (dc.textAlign & TA_BOTTOM)
        at.y = EndOf(at.y, -cell.height);
    return at;
}

// One line as it is drawn, and which of its characters is underlined.
struct TextLine
{
    std::wstring text;
    std::size_t underlined = std::wstring::npos;
};

// "&" underlines the character that follows it and is not drawn itself; "&&" draws one "&".
TextLine WithoutPrefixes(std::wstring_view text)
{
    TextLine line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'&') {
            if (++i == text.size()) break;
            if (text[i] != L'&') line.underlined = line.text.size();
        }
        line.text += text[i];
    }
    return line;
}

// The part of `text` that fits into `width`: whole words, but at least one.
std::wstring_view FirstWords(const framework::DcRecord& dc, std::wstring_view text, int width)
{
    std::size_t end = text.find(L' ');
    while (end != std::wstring_view::npos) {
        const std::size_t next = text.find(L' ', end + 1);
        if (Measure(dc, text.substr(0, next)).width > width) return text.substr(0, end);
        end = next;
    }
    return text;
}

std::vector<TextLine> LinesOf(const framework::DcRecord& dc, std::wstring_view text, int width,
                              UINT format)
{
    std::vector<TextLine> lines;
    const auto add = [&](std::wstring_view line) {
        lines.push_back(format & DT_NOPREFIX ? TextLine{std::wstring(line)}
                                             : WithoutPrefixes(line));
    };
    const bool wraps = (format & DT_WORDBREAK) && !(format & DT_SINGLELINE);
    for (bool isLast = false; !isLast;) {
        const std::size_t end = format & DT_SINGLELINE ? std::wstring_view::npos : text.find(L'\n');
        isLast = end == std::wstring_view::npos;
        std::wstring_view line = text.substr(0, end);
        if (!isLast) text.remove_prefix(end + 1);
        if (!isLast && line.ends_with(L'\r')) line.remove_suffix(1);
        while (wraps) {
            const std::wstring_view words = FirstWords(dc, line, width);
            if (words.size() == line.size()) break;
            add(words);
            line.remove_prefix(words.size() + 1);
        }
        add(line);
    }
    return lines;
}

int Limited(std::int64_t number)
{
    return static_cast<int>(std::clamp<std::int64_t>(number, INT_MIN, INT_MAX));
}

int Distance(int begin, int end)
{
    return Limited(std::int64_t{end} - begin);
}

// Of the distance from `begin` to `end`, toward zero; negative where `size` is more.
int HalfOfWhatIsFree(int begin, int end, int size)
{
    return Limited((std::int64_t{end} - begin - size) / 2);
}

int LeftOf(const RECT& rect, int width, UINT format)
{
    if (format & DT_CENTER) return EndOf(rect.left, HalfOfWhatIsFree(rect.left, rect.right, width));
    if (format & DT_RIGHT) return EndOf(rect.right, -width);
    return rect.left;
}

// Vertical alignment applies to single lines only.
int TopOf(const RECT& rect, int height, UINT format)
{
    if (!(format & DT_SINGLELINE)) return rect.top;
    if (format & DT_VCENTER)
        return EndOf(rect.top, HalfOfWhatIsFree(rect.top, rect.bottom, height));
    if (format & DT_BOTTOM) return EndOf(rect.bottom, -height);
    return rect.top;
}

} // namespace

int CDC::DrawText(LPCTSTR text, int count, LPRECT rect, UINT format)
{
    if (!m_hDC || !rect) return 0;
    const std::vector<TextLine> lines =
        LinesOf(*m_hDC, ViewOf(text, count), Distance(rect->left, rect->right), format);
    const framework::TextExtent cell = Measure(*m_hDC, L"0");
    const int height = cell.height * static_cast<int>(lines.size());
    if (format & DT_CALCRECT) {
        int width = 0;
        for (const TextLine& line : lines)
            width = std::max(width, Measure(*m_hDC, line.text).width);
        rect->right = EndOf(rect->left, width);
        rect->bottom = EndOf(rect->top, height);
        return height;
    }
    const raster::Box clip = format & DT_NOCLIP ? m_hDC->Target().clip : ToBox(*rect);
    int top = TopOf(*rect, height, format);
    for (const TextLine& line : lines) {
        const int left = LeftOf(*rect, Measure(*m_hDC, line.text).width, format);
        DrawTextLine(*m_hDC, line.text, {left, top}, clip);
        if (line.underlined < line.text.size()) {
            const std::wstring_view all = line.text;
            const int from = EndOf(left, Measure(*m_hDC, all.substr(0, line.underlined)).width);
            const int to = EndOf(left, Measure(*m_hDC, all.substr(0, line.underlined + 1)).width);
            raster::Canvas canvas = m_hDC->Target();
            canvas.clip = raster::Intersect(canvas.clip, clip);
            const int under = EndOf(top, cell.ascent + 1);
            raster::FillBox(canvas, {from, under, to, EndOf(under, 1)}, ToColor(m_hDC->textColor));
        }
        top = EndOf(top, cell.height);
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
    const std::wstring_view line = ViewOf(text, static_cast<int>(count));
    DrawTextLine(*m_hDC, line, Aligned(*m_hDC, line, {x, y}), clip);
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

BOOL CDC::GetTextMetrics(LPTEXTMETRIC metrics) const
{
    if (!m_hDC || !metrics) return FALSE;
    const framework::TextExtent usual = Measure(*m_hDC, L"x");
    const framework::FontRequest& font = m_hDC->font->font;
    *metrics = {};
    metrics->tmHeight = usual.height;
    metrics->tmAscent = usual.ascent;
    metrics->tmDescent = usual.height - usual.ascent;
    metrics->tmAveCharWidth = usual.width;
    metrics->tmMaxCharWidth = Measure(*m_hDC, L"W").width;
    metrics->tmWeight = font.weight > 0 ? font.weight : FW_NORMAL;
    metrics->tmItalic = font.italic;
    return TRUE;
}
