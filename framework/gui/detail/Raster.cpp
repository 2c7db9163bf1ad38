// SPDX-License-Identifier: MIT
#include "framework/gui/detail/Raster.h"

#include "framework/gui/detail/RasterParts.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace framework::raster {

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
