// SPDX-License-Identifier: MIT
//
// What lines and shapes of the rasterizer are made of: exact division, rows, spans and areas of a
// picture.
#pragma once

#include "framework/gui/detail/Raster.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace framework::raster {

using Wide = std::int64_t;

// Products of two coordinate differences need 66 bits.
__extension__ using Huge = __int128;

inline Huge FloorDivide(Huge numerator, Huge positive)
{
    const Huge quotient = numerator / positive;
    return quotient * positive > numerator ? quotient - 1 : quotient;
}

inline Huge CeilDivide(Huge numerator, Huge positive)
{
    return -FloorDivide(-numerator, positive);
}

inline Color* RowOf(const Canvas& canvas, Wide y)
{
    return canvas.pixels + y * static_cast<Wide>(canvas.stride);
}

inline void SetPixel(const Canvas& canvas, Wide x, Wide y, Color color)
{
    const Box& clip = canvas.clip;
    if (x < clip.left || y < clip.top || x >= clip.right || y >= clip.bottom) return;
    RowOf(canvas, y)[x] = color;
}

// Sets the pixels [left, right) of row y that lie in the picture.
inline void FillSpan(const Canvas& canvas, Wide y, Wide left, Wide right, Color color)
{
    if (y < canvas.clip.top || y >= canvas.clip.bottom) return;
    left = std::max<Wide>(left, canvas.clip.left);
    right = std::min<Wide>(right, canvas.clip.right);
    if (left < right) std::fill(RowOf(canvas, y) + left, RowOf(canvas, y) + right, color);
}

inline void FillArea(const Canvas& canvas, Wide left, Wide top, Wide right, Wide bottom,
                     Color color)
{
    top = std::max<Wide>(top, canvas.clip.top);
    bottom = std::min<Wide>(bottom, canvas.clip.bottom);
    for (Wide y = top; y < bottom; ++y)
        FillSpan(canvas, y, left, right, color);
}

// A corner of a shape; it may lie a few pixels outside the range of an int.
struct WidePoint
{
    Wide x;
    Wide y;
};

// Fills the inside of a polygon by the even-odd rule.
void FillWidePolygon(const Canvas& canvas, std::span<const WidePoint> points, Color color);

} // namespace framework::raster
