// SPDX-License-Identifier: MIT
//
// Which pixels a drawing call sets: lines, polygons, ellipses, rectangles and copies on a picture
// of whole pixels, nothing blended.
//
//   coordinates   device pixels, right and bottom edges exclusive, any int
//   colors        0x00RRGGBB, stored unchanged
//
// Nothing outside the clip box is written or iterated over, however far away a shape starts and
// however large it is. A clipped shape sets the same pixels inside the box as the unclipped one.
#pragma once

#include <cstdint>
#include <span>

namespace framework::raster {

using Color = std::uint32_t;

struct Point
{
    int x = 0;
    int y = 0;

    bool operator==(const Point&) const = default;
};

/// Left and top are inclusive, right and bottom exclusive.
struct Box
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// A picture that is not owned, and the part of it that may be drawn on. Pixel (x, y) is
/// `pixels[y * stride + x]`; `clip` must lie inside the picture.
struct Canvas
{
    Color* pixels = nullptr;
    int stride = 0;
    Box clip;
};

/// The intersection of two boxes; an empty one lies at the origin.
Box Intersect(const Box& a, const Box& b);

/// A solid pen. Widths 0 and 1 draw one pixel; of the wider ones 2 and 3 are exact.
struct Stroke
{
    int width = 1;
    Color color = 0;
};

/// Fills the part of `box` that lies in the clip box.
void FillBox(const Canvas& canvas, const Box& box, Color color);

/// Draws from `from` to `to`. With a one-pixel stroke the last pixel is not set; a wider stroke
/// covers both ends.
void DrawLine(const Canvas& canvas, Point from, Point to, const Stroke& stroke);

/// Draws the lines from each point to the next and from the last to the first.
void DrawClosedChain(const Canvas& canvas, std::span<const Point> points, const Stroke& stroke);

/// Fills the inside of a polygon by the even-odd rule.
void FillPolygon(const Canvas& canvas, std::span<const Point> points, Color color);

/// Fills the inside of the ellipse in `box`, outline pixels included. The corners of the box may be
/// swapped; in an empty one there is no ellipse.
void FillEllipse(const Canvas& canvas, const Box& box, Color color);

/// Draws the outline of the ellipse in `box`, once around without gaps.
void DrawEllipse(const Canvas& canvas, const Box& box, const Stroke& stroke);

/// Draws the frame of `box`: lines through its first and last row and column.
void DrawFrame(const Canvas& canvas, const Box& box, const Stroke& stroke);

/// How a copy combines with the existing pixels.
enum class CopyMode {
    Replace, ///< target = source
    Combine, ///< target = target | source
};

/// Copies the pixels of `source` starting at `origin` into `box` of the target, clipped to both
/// clip boxes. Source and target may be the same picture.
void Copy(const Canvas& target, const Box& box, const Canvas& source, Point origin, CopyMode mode);

} // namespace framework::raster
