// SPDX-License-Identifier: MIT
#include "controls/plot/PlotView.h"

#include "controls/drawing/Pixel.h"

#include "framework/core/ParseNumber.h"
#include "framework/core/TextConversion.h"

#include <algorithm>

namespace tiltpole::controls {

void PlotView::ToClient(const CRect& client, long wx, long wy, long& cx, long& cy) const
{
    if (scale < kSmallestScale) {
        cx = 0;
        cy = 0;
        return;
    }
    const double right = static_cast<double>(wx) - originX;
    const double up = static_cast<double>(wy) - originY;
    cx = ToPixel(client.left + right / scale);
    cy = ToPixel(client.bottom - up / scale);
}

void PlotView::ToWorld(const CRect& client, long cy, long& wx, long& wy) const
{
    const double column = static_cast<double>(wx);
    wx = ToInt(originX + (column - client.left) * scale);
    wy = ToInt(originY + (client.bottom - static_cast<double>(cy)) * scale);
}

std::string PlotView::ToLine(const char* key) const
{
    CString line;
    line.Format(L"%hs%ld, %ld, %.6f,\r\n", key, static_cast<long>(originX),
                static_cast<long>(originY), scale);
    return framework::ToUtf8(line.GetString());
}

void PlotView::TakeFrom(std::wstring_view text, const wchar_t* key)
{
    const std::size_t found = text.find(key);
    if (found == std::wstring_view::npos) return;
    text.remove_prefix(found + std::wstring_view(key).size());

    const auto nextField = [&text](std::wstring_view& field) {
        if (text.data() == nullptr) return false;
        const std::size_t comma = text.find(L',');
        field = text.substr(0, comma);
        text = comma == std::wstring_view::npos ? std::wstring_view() : text.substr(comma + 1);
        return true;
    };
    std::wstring_view field;
    nextField(field); // empty where nothing follows
    originX = framework::ParseInteger(field).value;
    if (!nextField(field)) return;
    originY = framework::ParseInteger(field).value;
    if (nextField(field)) scale = framework::ParseDouble(field).value;
}

void PlotExtent::Include(std::int32_t h, std::int32_t v)
{
    minH = std::min(minH, h);
    maxH = std::max(maxH, h);
    minV = std::min(minV, v);
    maxV = std::max(maxV, v);
}

PlotView PlotExtent::FitInto(const CRect& client) const
{
    const std::int64_t spanH = std::int64_t{maxH} - minH;
    const std::int64_t spanV = std::int64_t{maxV} - minV;
    const double horizontal = static_cast<double>(spanH) * 1.0 / client.Width();
    const double vertical = static_cast<double>(spanV) * 1.0 / client.Height();
    PlotView view;
    view.scale = (horizontal > vertical ? horizontal : vertical) * 1.5;
    const auto middleH = static_cast<double>(std::int64_t{minH} + maxH) / 2.0;
    const auto middleV = static_cast<double>(std::int64_t{minV} + maxV) / 2.0;
    view.originX = ToPixel(middleH - client.Width() * view.scale / 2.0);
    view.originY = ToPixel(middleV - client.Height() * view.scale / 2.0);
    return view;
}

} // namespace tiltpole::controls
