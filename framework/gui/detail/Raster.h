// SPDX-License-Identifier: MIT
//
// Which pixels a drawing call sets: lines, polygons, ellipses, rectangles and copies on a picture
// of whole pixels, nothing blended.
//
//   coordinates   device pixels, right and bottom edges exclusive, any int
//   colors       0x00RRGGBB, written as given
//
// Nothing outside the clip box is written or walked over, however far away a shape begins; a line
// that enters the box keeps the phase it has outside.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace framework::raster {

using Color = std::uint32_t;

struct Point
{
    int x = 0;
    int y = 0;

    bool operator==(const Point&) const = default;
};

/// Left and top belong to the box, right and bottom do not.
struct Box
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// A picture that somebody else owns, and the part of it that may be drawn on. Pixel (x, y) is
/// `pixels[y * stride + x]`; `clip` lies in the clip box.
struct Canvas
{
    Color* pixels = nullptr;
    int stride = 0;
    Box clip;
};

/// The part that two boxes share; an empty one lies at the origin.
Box Intersect(const Box& a, const Box& b);

/// A solid pen. Width 0 and 1 draw one pixel, wider ones as many as they say (2 and 3 exactly).
struct Stroke
{
    int width = 1;
    Color color = 0;
};

/// Fills the part of `box` that lies in the clip box.
void FillBox(const Canvas& canvas, const Box& box, Color color);

/// Draws from `from` to `to`. With a one-pixel stroke the last pixel stays unset; a wider stroke
/// covers both ends.
void DrawLine(const Canvas& canvas, Point from, Point to, const Stroke& stroke);

/// Draws the lines from each point to the next and from the last to the first.
void DrawClosedChain(const Canvas& canvas, std::span<const Point> points, const Stroke& stroke);

/// Fills the inside of a polygon by the even-odd rule.
void FillPolygon(const Canvas& canvas, std::span<const Point> points, Color color);

/// The outline of the ellipse inscribed in `box`, once around without gaps; corners may come
/// swapped, an empty box has none.
std::vector<Point> EllipseOutline(const Box& box);

/// Fills the inside of the ellipse in `box`, outline pixels included.
void FillEllipse(const Canvas& canvas, const Box& box, Color color);

/// Draws the outline of the ellipse in `box`.
void DrawEllipse(const Canvas& canvas, const Box& box, const Stroke& stroke);

/// Draws the frame of `box`: lines through its first and last row and column.
void DrawFrame(const Canvas& canvas, const Box& box, const Stroke& stroke);

/// What a copy does with the pixels that are there.
enum class CopyMode {
    Replace, ///< target = source
    Combine, ///< target = target | source
};

/// Copies the pixels of `source` that begin at `origin` into `box` of the target, as far as both
/// clip boxes hold them. The pictures may be the same one.
void Copy(const Canvas& target, const Box& box, const Canvas& source, Point origin, CopyMode mode);

} // namespace framework::raster
