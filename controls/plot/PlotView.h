// SPDX-License-Identifier: MIT
//
// Which part of the plane of readings a scatter plot shows, and the line of text that keeps it.
#pragma once

#include "framework/core/Rect.h"
#include "framework/core/String.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tiltpole::controls {

/// The smallest scale that still maps; below it every point falls on pixel (0, 0).
constexpr double kSmallestScale = 1e-6;

struct PlotView
{
    std::int32_t originX = 0; // counts at the left edge
    std::int32_t originY = 0; // counts at the bottom edge
    double scale = 1.0;       // counts per pixel

    /// Counts to pixels; y grows upwards.
    void ToClient(const CRect& client, long wx, long wy, long& cx, long& cy) const;
    /// Pixels to counts. `wx` holds the pixel column when called.
    void ToWorld(const CRect& client, long cy, long& wx, long& wy) const;

    /// "KEY:x, y, scale,\r\n"
    std::string ToLine(const char* key) const;
    /// Takes over the fields behind `key`; what is missing stays as it was.
    void TakeFrom(std::wstring_view text, const wchar_t* key);
};

/// Least and greatest reading in both directions.
struct PlotExtent
{
    std::int32_t minH;
    std::int32_t maxH;
    std::int32_t minV;
    std::int32_t maxV;

    void Include(std::int32_t h, std::int32_t v);

    /// The view that shows all of it in the middle, with half of its size as margin.
    PlotView FitInto(const CRect& client) const;
};

} // namespace tiltpole::controls
