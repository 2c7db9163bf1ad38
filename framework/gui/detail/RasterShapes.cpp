// SPDX-License-Identifier: MIT
#include "framework/gui/detail/RasterParts.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace framework::raster {
namespace {

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

} // namespace

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

void FillPolygon(const Canvas& canvas, std::span<const Point> points, Color color)
{
    std::vector<WidePoint> corners;
    corners.reserve(points.size());
    for (const Point& p : points)
        corners.push_back({p.x, p.y});
    FillWidePolygon(canvas, corners, color);
}

} // namespace framework::raster
