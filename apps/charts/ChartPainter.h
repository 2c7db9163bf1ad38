// SPDX-License-Identifier: MIT
//
// The layout of a chart: where its title, legend, axes and data are drawn.
#pragma once

#include "apps/charts/Chart.h"
#include "apps/charts/Painter.h"

namespace charts {

/// Draws the chart into the frame. The title, the legend, the axes and their ticks lie outside the
/// plotting area, so that nothing covers the data.
void PaintChart(Painter& painter, const Chart& chart, const Frame& frame);

} // namespace charts
