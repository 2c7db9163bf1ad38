// SPDX-License-Identifier: MIT
#include "framework/gui/detail/RasterParts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace framework::raster {
namespace {

// A run of steps along the major axis; first and last are inclusive.
struct Steps
{
    Huge first;
    Huge last;

    void Limit(Huge low, Huge high)
    {
        first = std::max(first, low);
        last = std::min(last, high);
    }
};

// A line one pixel wide, stepped by Bresenham's algorithm. It sets `major` pixels, one per step. At
// step i the minor axis has moved ceil((2·minor·i − major + bias) / (2·major)) pixels, the closed
// form of the usual error term, so that the walk can start where the line enters the picture.
struct Walk
{
    Wide major; // steps along the longer axis
    Wide minor; // steps along the other one
    int bias;   // 1 in the octants that break ties toward the minor step
    bool steep; // the longer axis is y
    int majorDir;
    int minorDir;

    Walk(Point from, Point to)
    {
        const Wide dx = Wide{to.x} - from.x;
        const Wide dy = Wide{to.y} - from.y;
        steep = std::abs(dx) <= std::abs(dy);
        major = steep ? std::abs(dy) : std::abs(dx);
        minor = steep ? std::abs(dx) : std::abs(dy);
        majorDir = (steep ? dy : dx) < 0 ? -1 : 1;
        minorDir = (steep ? dx : dy) < 0 ? -1 : 1;
        bias = BiasOf(dx, dy);
    }

    // Octants are numbered 1 to 4 below the x axis of the screen and 5 to 8 above it. Octants 3, 5,
    // 6 and 8 carry the bias.
    static int BiasOf(Wide dx, Wide dy)
    {
        if (dy > 0) return dx <= 0 && -dx <= dy ? 1 : 0;
        if (dx < 0) return 1;
        return dx > -dy ? 1 : 0;
    }

    Huge MinorAt(Huge step) const
    {
        return CeilDivide(2 * Huge{minor} * step - major + bias, 2 * Huge{major});
    }

    // The steps at which the minor axis is `low` to `high` pixels from its start.
    Steps StepsWithin(Huge low, Huge high) const
    {
        const Huge half = Huge{major} - bias;
        const Huge twice = 2 * Huge{major};
        if (minor == 0) return low <= 0 && 0 <= high ? Steps{0, major - 1} : Steps{0, -1};
        const Huge first =
            low <= 0 ? 0 : FloorDivide(twice * (low - 1) + half, 2 * Huge{minor}) + 1;
        return {first, FloorDivide(twice * high + half, 2 * Huge{minor})};
    }
};

// Steps from `start` in direction `dir` that lie in [low, high).
Steps InRange(Wide start, int dir, Wide low, Wide high)
{
    return dir > 0 ? Steps{low - start, high - 1 - start} : Steps{start - high + 1, start - low};
}

void DrawThinLine(const Canvas& canvas, Point from, Point to, Color color)
{
    const Walk walk(from, to);
    const Box& clip = canvas.clip;
    if (walk.major == 0) return;

    const Wide majorStart = walk.steep ? from.y : from.x;
    const Wide minorStart = walk.steep ? from.x : from.y;
    const Steps inColumns =
        InRange(from.x, walk.steep ? walk.minorDir : walk.majorDir, clip.left, clip.right);
    const Steps inRows =
        InRange(from.y, walk.steep ? walk.majorDir : walk.minorDir, clip.top, clip.bottom);
    const Steps& along = walk.steep ? inRows : inColumns;
    const Steps& across = walk.steep ? inColumns : inRows;
    Steps steps{0, walk.major - 1};
    steps.Limit(along.first, along.last);
    const Steps seen = walk.StepsWithin(across.first, across.last);
    steps.Limit(seen.first, seen.last);
    if (steps.first > steps.last) return;

    const Huge moved = walk.MinorAt(steps.first);
    Huge error =
        2 * Huge{walk.minor} * (steps.first + 1) - walk.major - 2 * Huge{walk.major} * moved;
    Wide major = majorStart + walk.majorDir * static_cast<Wide>(steps.first);
    Wide minor = minorStart + walk.minorDir * static_cast<Wide>(moved);
    const Wide majorStride = walk.majorDir * (walk.steep ? Wide{canvas.stride} : Wide{1});
    const Wide minorStride = walk.minorDir * (walk.steep ? Wide{1} : Wide{canvas.stride});
    Color* pixel = walk.steep ? RowOf(canvas, major) + minor : RowOf(canvas, minor) + major;

    Wide remainder = static_cast<Wide>(error);
    for (Wide left = static_cast<Wide>(steps.last - steps.first) + 1;;) {
        *pixel = color;
        if (--left == 0) return;
        if (remainder + walk.bias > 0) {
            pixel += minorStride;
            remainder -= 2 * walk.major;
        }
        remainder += 2 * walk.minor;
        pixel += majorStride;
    }
}

// Rounds half away from zero; used for the corners of wide lines.
Wide RoundHalf(double v)
{
    return static_cast<Wide>(v > 0 ? v + 0.5 : v - 0.5);
}

void DrawCap(const Canvas& canvas, Point at, const Stroke& stroke)
{
    const Wide x = at.x;
    const Wide y = at.y;
    if (stroke.width == 3) {
        FillSpan(canvas, y, x - 1, x + 2, stroke.color);
        SetPixel(canvas, x, y - 1, stroke.color);
        SetPixel(canvas, x, y + 1, stroke.color);
        return;
    }
    const Wide half = stroke.width / 2;
    FillArea(canvas, x - half, y - half, x - half + stroke.width, y - half + stroke.width,
             stroke.color);
}

void DrawSlantedBody(const Canvas& canvas, Point from, Point to, const Stroke& stroke)
{
    const double dx = static_cast<double>(to.x) - from.x;
    const double dy = static_cast<double>(to.y) - from.y;
    const double ax = std::fabs(dx);
    const double ay = std::fabs(dy);
    const double length = std::sqrt(ax * ax + ay * ay);
    const double vx = stroke.width * ay / length;
    const double vy = stroke.width * ax / length;
    const Wide nearX = RoundHalf(vx / 2);
    const Wide nearY = RoundHalf(vy / 2);
    const Wide farX = RoundHalf((vx + 1) / 2);
    const Wide farY = RoundHalf((vy + 1) / 2);
    const bool sameSign = (dx > 0) == (dy > 0);
    const WidePoint a{farX, sameSign ? -farY : farY};
    const WidePoint b{-nearX, sameSign ? nearY : -nearY};
    const WidePoint corners[] = {
        {from.x + a.x, from.y + a.y},
        {to.x + a.x,   to.y + a.y  },
        {to.x + b.x,   to.y + b.y  },
        {from.x + b.x, from.y + b.y},
    };
    FillWidePolygon(canvas, corners, stroke.color);
}

void DrawWideLine(const Canvas& canvas, Point from, Point to, const Stroke& stroke)
{
    DrawCap(canvas, from, stroke);
    DrawCap(canvas, to, stroke);
    const Wide half = stroke.width / 2;
    if (from.y == to.y) {
        FillArea(canvas, std::min(from.x, to.x), from.y - half, std::max(from.x, to.x),
                 from.y - half + stroke.width, stroke.color);
    } else if (from.x == to.x) {
        FillArea(canvas, from.x - half, std::min(from.y, to.y), from.x - half + stroke.width,
                 std::max(from.y, to.y), stroke.color);
    } else {
        DrawSlantedBody(canvas, from, to, stroke);
    }
}

} // namespace

void DrawLine(const Canvas& canvas, Point from, Point to, const Stroke& stroke)
{
    if (stroke.width <= 1)
        DrawThinLine(canvas, from, to, stroke.color);
    else
        DrawWideLine(canvas, from, to, stroke);
}

void DrawClosedChain(const Canvas& canvas, std::span<const Point> points, const Stroke& stroke)
{
    for (std::size_t i = 0; i < points.size(); ++i)
        DrawLine(canvas, points[i], points[i + 1 == points.size() ? 0 : i + 1], stroke);
}

void DrawFrame(const Canvas& canvas, const Box& box, const Stroke& stroke)
{
    const Point corners[] = {
        {box.left,      box.top       },
        {box.right - 1, box.top       },
        {box.right - 1, box.bottom - 1},
        {box.left,      box.bottom - 1},
    };
    DrawClosedChain(canvas, corners, stroke);
}

} // namespace framework::raster
