// SPDX-License-Identifier: MIT
/// @struct tiltpole::controls::PlotView
/// The part of the plane that a scatter plot shows, and the line of text in which it is saved.
#pragma once

#include "framework/core/Rect.h"
#include "framework/core/String.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tiltpole::controls {

/// The smallest usable scale; below it every point maps to pixel (0, 0).
constexpr double kSmallestScale = 1e-6;

struct PlotView
{
    std::int32_t originX = 0; // counts at the left edge
    std::int32_t originY = 0; // counts at the bottom edge
    double scale = 1.0;       // counts per pixel

    /// Counts to pixels; y points up.
    void ToClient(const CRect& client, long wx, long wy, long& cx, long& cy) const;
    /// Pixels to counts. On entry `wx` holds the pixel column.
    void ToWorld(const CRect& client, long cy, long& wx, long& wy) const;

    /// "KEY:x, y, scale,\r\n"
    std::string ToLine(const char* key) const;
    /// Reads the fields after `key`; missing fields keep their values.
    void TakeFrom(std::wstring_view text, const wchar_t* key);
};

/// Minimum and maximum of the readings in both directions.
struct PlotExtent
{
    std::int32_t minH;
    std::int32_t maxH;
    std::int32_t minV;
    std::int32_t maxV;

    void Include(std::int32_t h, std::int32_t v);

    /// The view that shows the extent centered, half again as large for a margin.
    PlotView FitInto(const CRect& client) const;
};

} // namespace tiltpole::controls
