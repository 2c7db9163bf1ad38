// SPDX-License-Identifier: MIT
//
// Drawing with cairo: text, lines and marks, in points from the top left corner.
#pragma once

#include "apps/charts/Chart.h"
#include <cairo.h>
#include <memory>
#include <string>
#include <vector>

namespace charts {

enum class Align { Left, Center, Right };

struct TextStyle
{
    double size = 10.0;
    bool bold = false;
    Color color = palette::kBlack;
    Align align = Align::Left;
    bool boxed = false;   // on a white box, legible on top of data
    bool upright = false; // runs upward instead of to the right
};

/// A drawing context for the lifetime of one picture, in points from the top left corner.
class Painter
{
public:
    explicit Painter(cairo_surface_t* surface) : m_context(cairo_create(surface), &cairo_destroy) {}

    cairo_t* Get() const { return m_context.get(); }

    void Clear();
    void Use(const Color& color);
    void Text(PlotPoint baseline, const std::string& text, const TextStyle& style);
    double TextWidth(const std::string& text, const TextStyle& style);
    /// The style with the size reduced, if needed, until the text is no wider.
    TextStyle Fitted(const std::string& text, TextStyle style, double width);
    /// The text in lines that are no wider, broken at blanks.
    std::vector<std::string> Wrapped(const std::string& text, const TextStyle& style, double width);
    void Line(const std::vector<PlotPoint>& points, const LineStyle& style);
    void MarkAt(PlotPoint at, const PointStyle& style);

private:
    void UseFont(const TextStyle& style);

    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> m_context;
};

} // namespace charts
