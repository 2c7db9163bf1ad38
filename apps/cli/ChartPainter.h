// SPDX-License-Identifier: MIT
//
// Draws a chart with cairo: everything that knows about fonts, pixels and where things stand.
#pragma once

#include "apps/cli/Plot.h"
#include <cairo.h>

namespace cli {

enum class Align { Left, Centre, Right };

struct TextStyle
{
    double size = 10.0;
    bool bold = false;
    Colour colour = palette::kBlack;
    Align align = Align::Left;
    bool halo = false;    // a light rim, to be read on top of data
    bool upright = false; // reads upwards instead of to the right
};

/// A drawing context for the lifetime of one picture, in points from the top left corner.
class Painter
{
public:
    explicit Painter(cairo_surface_t* surface) : m_context(cairo_create(surface), &cairo_destroy) {}

    cairo_t* Get() const { return m_context.get(); }

    void Clear();
    void Use(const Colour& colour);
    void Text(PlotPoint baseline, const std::string& text, const TextStyle& style);
    double TextWidth(const std::string& text, const TextStyle& style);
    void Line(const std::vector<PlotPoint>& points, const LineStyle& style);
    void MarkAt(PlotPoint at, const PointStyle& style);

private:
    void UseFont(const TextStyle& style);

    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> m_context;
};

/// Draws the chart into the frame: title, legend, axes and ticks stand outside the plotting area,
/// so that nothing covers the data.
void PaintChart(Painter& painter, const Chart& chart, const Frame& frame);

} // namespace cli
