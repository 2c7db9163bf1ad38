// SPDX-License-Identifier: MIT
//
// A picture in memory, and conversions of colors and rectangles for the rasterizer.
#pragma once

#include "framework/gui/Types.h"
#include "framework/gui/detail/Raster.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace framework {

constexpr raster::Color ToColor(COLORREF color)
{
    return static_cast<raster::Color>(GetRValue(color) << 16 | GetGValue(color) << 8
                                      | GetBValue(color));
}
constexpr COLORREF ToColorRef(raster::Color color)
{
    return RGB(static_cast<int>(color >> 16), static_cast<int>(color >> 8),
               static_cast<int>(color));
}

constexpr raster::Box ToBox(const RECT& rect)
{
    return {rect.left, rect.top, rect.right, rect.bottom};
}

// Where a rectangle ends, as far as an int can tell.
constexpr int EndOf(int start, int size)
{
    const std::int64_t sum = std::int64_t{start} + size;
    return static_cast<int>(std::clamp<std::int64_t>(sum, INT_MIN, INT_MAX));
}

// A picture of width x height pixels. Its content is undefined until something is drawn.
struct Image
{
    Image(int givenWidth, int givenHeight)
        : width(givenWidth), height(givenHeight),
          pixels(new raster::Color[static_cast<std::size_t>(givenWidth)
                                   * static_cast<std::size_t>(givenHeight)])
    {}

    raster::Canvas View() const
    {
        return {
            pixels.get(), width, {0, 0, width, height}
        };
    }

    int width;
    int height;
    std::unique_ptr<raster::Color[]> pixels;
};

} // namespace framework
