// SPDX-License-Identifier: MIT
#include "framework/gui/detail/Raster.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace framework::raster {
namespace {

using Wide = std::int64_t;

// Products of two coordinate differences need 66 bits.
__extension__ using Huge = __int128;

Huge FloorDivide(Huge numerator, Huge positive)
{
    const Huge quotient = numerator / positive;
    return quotient * positive > numerator ? quotient - 1 : quotient;
}

Huge CeilDivide(Huge numerator, Huge positive)
{
    return -FloorDivide(-numerator, positive);
}

Color* RowOf(const Canvas& canvas, Wide y)
{
    return canvas.pixels + y * static_cast<Wide>(canvas.stride);
}

void SetPixel(const Canvas& canvas, Wide x, Wide y, Color color)
{
    const Box& clip = canvas.clip;
    if (x < clip.left || y < clip.top || x >= clip.right || y >= clip.bottom) return;
    RowOf(canvas, y)[x] = color;
}

// Sets the pixels [left, right) of row y that lie in the picture.
void FillSpan(const Canvas& canvas, Wide y, Wide left, Wide right, Color color)
{
    if (y < canvas.clip.top || y >= canvas.clip.bottom) return;
    left = std::max<Wide>(left, canvas.clip.left);
    right = std::min<Wide>(right, canvas.clip.right);
    if (left < right) std::fill(RowOf(canvas, y) + left, RowOf(canvas, y) + right, color);
}

void FillArea(const Canvas& canvas, Wide left, Wide top, Wide right, Wide bottom, Color color)
{
    top = std::max<Wide>(top, canvas.clip.top);
    bottom = std::min<Wide>(bottom, canvas.clip.bottom);
    for (Wide y = top; y < bottom; ++y)
        FillSpan(canvas, y, left, right, color);
}

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
    if (walk.major == 0 || clip.left >= clip.right || clip.top >= clip.bottom) return;

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

// A corner of a shape; it may lie a few pixels outside the range of an int.
struct WidePoint
{
    Wide x;
    Wide y;
};

// Where the edge from `a` down to `b` crosses row y: the first column on or right of it.
Wide Crossing(const WidePoint& a, const WidePoint& b, Wide y)
{
    const Huge across = Huge{b.x - a.x} * (y - a.y);
    return a.x + static_cast<Wide>(CeilDivide(across, b.y - a.y));
}

// Insertion sort, for a few elements.
void SortFew(Wide* first, const Wide* last)
{
    for (Wide* next = first; next != last; ++next)
        std::rotate(std::upper_bound(first, next, *next), next, next + 1);
}

void FillWidePolygon(const Canvas& canvas, std::span<const WidePoint> points, Color color)
{
    if (points.empty()) return;
    const auto [highest, lowest] =
        std::minmax_element(points.begin(), points.end(),
                            [](const WidePoint& a, const WidePoint& b) { return a.y < b.y; });
    const Wide top = std::max<Wide>(highest->y, canvas.clip.top);
    const Wide bottom = std::min<Wide>(lowest->y, canvas.clip.bottom);

    std::vector<Wide> many(points.size() > 8 ? points.size() : 0);
    Wide few[8];
    Wide* const crossings = many.empty() ? few : many.data();
    for (Wide y = top; y < bottom; ++y) {
        std::size_t count = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const WidePoint& p = points[i];
            const WidePoint& q = points[i + 1 == points.size() ? 0 : i + 1];
            if (p.y <= y && y < q.y)
                crossings[count++] = Crossing(p, q, y);
            else if (q.y <= y && y < p.y)
                crossings[count++] = Crossing(q, p, y);
        }
        if (many.empty())
            SortFew(few, few + count);
        else
            std::sort(many.data(), many.data() + count);
        for (std::size_t i = 0; i + 1 < count; i += 2)
            FillSpan(canvas, y, crossings[i], crossings[i + 1], color);
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

// Calls quadrant(x0, y0, x1, y1) for each step of the outline: the four points (x1, y0), (x0, y0),
// (x0, y1), (x1, y1) lie on it. The steps go from the widest row to the tips. Integer ellipse in a
// rectangle after A. Zingl, "A Rasterizing Algorithm for Drawing Curves" (2012), both step tests
// on the same doubled error.
template <class Quadrants>
void WalkEllipse(const Box& given, Quadrants quadrants)
{
    const Wide left = std::min(given.left, given.right);
    const Wide top = std::min(given.top, given.bottom);
    const Wide right = Wide{std::max(given.left, given.right)} - 1;
    const Wide bottom = Wide{std::max(given.top, given.bottom)} - 1;
    if (right < left || bottom < top) return;

    const Huge width = right - left;
    const Huge height = bottom - top;
    const Huge odd = height % 2;
    Huge dx = 4 * (1 - width) * height * height;
    Huge dy = 4 * (odd + 1) * width * width;
    Huge error = dx + dy + odd * width * width;
    Wide x0 = left;
    Wide x1 = right;
    Wide y0 = top + static_cast<Wide>((height + 1) / 2);
    Wide y1 = y0 - static_cast<Wide>(odd);
    do {
        quadrants(x0, y0, x1, y1);
        const Huge twice = 2 * error;
        if (twice <= dy) {
            ++y0;
            --y1;
            error += dy += 8 * width * width;
        }
        if (twice >= dx) {
            ++x0;
            --x1;
            error += dx += 8 * height * height;
        }
    } while (x0 <= x1);
    for (; y0 - y1 <= height; ++y0, --y1)
        quadrants(x0 - 1, y0, x1 + 1, y1);
}

} // namespace

Box Intersect(const Box& a, const Box& b)
{
    const Box shared{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                     std::min(a.bottom, b.bottom)};
    return shared.left < shared.right && shared.top < shared.bottom ? shared : Box{};
}

void FillBox(const Canvas& canvas, const Box& box, Color color)
{
    FillArea(canvas, box.left, box.top, box.right, box.bottom, color);
}

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

void FillPolygon(const Canvas& canvas, std::span<const Point> points, Color color)
{
    std::vector<WidePoint> corners;
    corners.reserve(points.size());
    for (const Point& p : points)
        corners.push_back({p.x, p.y});
    FillWidePolygon(canvas, corners, color);
}

std::vector<Point> EllipseOutline(const Box& box)
{
    std::vector<Point> quarters[4];
    WalkEllipse(box, [&](Wide x0, Wide y0, Wide x1, Wide y1) {
        const auto at = [](Wide x, Wide y) {
            return Point{static_cast<int>(x), static_cast<int>(y)};
        };
        quarters[0].push_back(at(x1, y0));
        quarters[1].push_back(at(x0, y0));
        quarters[2].push_back(at(x0, y1));
        quarters[3].push_back(at(x1, y1));
    });
    std::vector<Point> outline;
    for (int i = 0; i < 4; ++i) {
        if (i % 2 == 1) std::reverse(quarters[i].begin(), quarters[i].end());
        outline.insert(outline.end(), quarters[i].begin(), quarters[i].end());
    }
    return outline;
}

void FillEllipse(const Canvas& canvas, const Box& box, Color color)
{
    WalkEllipse(box, [&](Wide x0, Wide y0, Wide x1, Wide y1) {
        FillSpan(canvas, y0, x0, x1 + 1, color);
        FillSpan(canvas, y1, x0, x1 + 1, color);
    });
}

void DrawEllipse(const Canvas& canvas, const Box& box, const Stroke& stroke)
{
    const std::vector<Point> outline = EllipseOutline(box);
    if (stroke.width > 1) {
        DrawClosedChain(canvas, outline, stroke);
        return;
    }
    for (const Point& p : outline)
        SetPixel(canvas, p.x, p.y, stroke.color);
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

void Copy(const Canvas& target, const Box& box, const Canvas& source, Point origin, CopyMode mode)
{
    const Wide shiftX = Wide{origin.x} - box.left;
    const Wide shiftY = Wide{origin.y} - box.top;
    const Box& to = target.clip;
    const Box& from = source.clip;
    const Wide left = std::max({Wide{box.left}, Wide{to.left}, from.left - shiftX});
    const Wide top = std::max({Wide{box.top}, Wide{to.top}, from.top - shiftY});
    const Wide right = std::min({Wide{box.right}, Wide{to.right}, from.right - shiftX});
    const Wide bottom = std::min({Wide{box.bottom}, Wide{to.bottom}, from.bottom - shiftY});
    if (left >= right || top >= bottom) return;

    const bool upwards = target.pixels == source.pixels && shiftY < 0;
    for (Wide i = 0; i < bottom - top; ++i) {
        const Wide y = upwards ? bottom - 1 - i : top + i;
        Color* put = RowOf(target, y) + left;
        const Color* take = RowOf(source, y + shiftY) + left + shiftX;
        if (mode == CopyMode::Replace) {
            std::memmove(put, take, static_cast<std::size_t>(right - left) * sizeof(Color));
        } else {
            for (Wide x = 0; x < right - left; ++x)
                put[x] |= take[x];
        }
    }
}

} // namespace framework::raster
