// SPDX-License-Identifier: MIT
#include "controls/tilt/TiltView.h"

#include "controls/drawing/Pixel.h"

#include <algorithm>
#include <cstdint>

namespace tiltpole::controls {
namespace {

constexpr double kSmallestScale = 0.000001; // meters per pixel; below it nothing is mapped
constexpr double kFinestZoom = 0.01;
constexpr double kMargin = 1.2;

} // namespace

void TiltView::ToClient(const CRect& client, double x, double y, long& cx, long& cy) const
{
    if (scale < kSmallestScale) {
        cx = 0;
        cy = 0;
        return;
    }
    cx = Shifted(client.left, ToPixel((y - originY) / scale));
    cy = Shifted(client.bottom, -std::int64_t{ToPixel((x - originX) / scale)});
}

void TiltView::ToWorld(const CRect& client, long row, long column, double& x, double& y) const
{
    x = originX + (client.bottom - static_cast<double>(row)) * scale;
    y = originY + (static_cast<double>(column) - client.left) * scale;
}

void TiltExtent::Include(double x, double y)
{
    minX = std::min(minX, x);
    maxX = std::max(maxX, x);
    minY = std::min(minY, y);
    maxY = std::max(maxY, y);
}

TiltView TiltExtent::FitInto(const CRect& client) const
{
    const double sx = (maxX - minX) / client.Height();
    const double sy = (maxY - minY) / client.Width();
    TiltView view;
    view.scale = (sx > sy ? sx : sy) * kMargin;
    if (view.scale < kFinestZoom) view.scale = kFinestZoom;
    view.originX = (minX + maxX) / 2 - client.Height() * view.scale / 2;
    view.originY = (minY + maxY) / 2 - client.Width() * view.scale / 2;
    return view;
}

bool ZoomsAt(int count)
{
    if (count < 10) return count % 2 == 0;
    if (count < 30) return count % 5 == 0;
    if (count < 60) return count % 10 == 0;
    return count % 60 == 0;
}

} // namespace tiltpole::controls
