// SPDX-License-Identifier: MIT
#include "apps/charts/Painter.h"

#include "survey/Angle.h"
#include <algorithm>

namespace charts {

using tiltpole::survey::kPi;

namespace {

constexpr Color kWhite{1.0, 1.0, 1.0};
constexpr double kBoxMargin = 2.0; // around a boxed text, points

} // namespace

void Painter::Clear()
{
    cairo_set_source_rgb(Get(), 1.0, 1.0, 1.0);
    cairo_paint(Get());
}

void Painter::Use(const Color& color)
{
    cairo_set_source_rgba(Get(), color.red, color.green, color.blue, color.alpha);
}

void Painter::UseFont(const TextStyle& style)
{
    cairo_select_font_face(Get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           style.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(Get(), style.size);
}

double Painter::TextWidth(const std::string& text, const TextStyle& style)
{
    UseFont(style);
    cairo_text_extents_t extents;
    cairo_text_extents(Get(), text.c_str(), &extents);
    return extents.x_advance;
}

TextStyle Painter::Fitted(const std::string& text, TextStyle style, double width)
{
    const double needed = TextWidth(text, style);
    if (needed > width) style.size *= width / needed;
    return style;
}

std::vector<std::string> Painter::Wrapped(const std::string& text, const TextStyle& style,
                                          double width)
{
    std::vector<std::string> lines(1);
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        const std::string word = text.substr(at, end - at);
        const std::string longer = lines.back().empty() ? word : lines.back() + ' ' + word;
        if (!lines.back().empty() && TextWidth(longer, style) > width) {
            lines.push_back(word);
        } else {
            lines.back() = longer;
        }
        at = end + 1;
    }
    return lines;
}

void Painter::Text(PlotPoint baseline, const std::string& text, const TextStyle& style)
{
    if (text.empty()) return;
    double shift = 0.0;
    if (style.align != Align::Left) shift = -TextWidth(text, style);
    if (style.align == Align::Center) shift /= 2.0;

    UseFont(style);
    Use(style.color);
    cairo_save(Get());
    cairo_translate(Get(), baseline.x, baseline.y);
    if (style.upright) cairo_rotate(Get(), -kPi / 2.0);
    if (style.boxed) {
        cairo_text_extents_t extents;
        cairo_text_extents(Get(), text.c_str(), &extents);
        Use(kWhite);
        cairo_rectangle(Get(), shift + extents.x_bearing - kBoxMargin,
                        extents.y_bearing - kBoxMargin, extents.width + 2.0 * kBoxMargin,
                        extents.height + 2.0 * kBoxMargin);
        cairo_fill(Get());
        Use(style.color);
    }
    cairo_move_to(Get(), shift, 0.0);
    cairo_show_text(Get(), text.c_str());
    cairo_restore(Get());
}

void Painter::Line(const std::vector<PlotPoint>& points, const LineStyle& style)
{
    static constexpr double kDash[] = {4.0, 3.0};
    Use(style.color);
    cairo_set_line_width(Get(), style.width);
    cairo_set_line_join(Get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_dash(Get(), kDash, style.dashed ? 2 : 0, 0.0);
    cairo_new_path(Get()); // text leaves a current point
    for (const PlotPoint& point : points)
        cairo_line_to(Get(), point.x, point.y);
    cairo_stroke(Get());
    cairo_set_dash(Get(), kDash, 0, 0.0);
}

void Painter::MarkAt(PlotPoint at, const PointStyle& style)
{
    cairo_t* const context = Get();
    const auto circle = [&](double radius) {
        cairo_new_sub_path(context);
        cairo_arc(context, at.x, at.y, radius, 0.0, 2.0 * kPi);
    };
    const auto stroke = [&](double dx, double dy) {
        cairo_move_to(context, at.x - dx, at.y - dy);
        cairo_line_to(context, at.x + dx, at.y + dy);
    };
    Use(style.color);
    cairo_set_line_width(context, std::max(1.0, 0.3 * style.size));
    cairo_new_path(context);
    switch (style.mark) {
    case Mark::Dot:
        circle(style.size);
        cairo_fill(context);
        return;
    case Mark::Ring:
        circle(style.size);
        break;
    case Mark::Target:
        circle(0.55 * style.size);
        [[fallthrough]];
    case Mark::Plus:
        stroke(style.size, 0.0);
        stroke(0.0, style.size);
        break;
    case Mark::Cross:
        stroke(style.size, style.size);
        stroke(style.size, -style.size);
        break;
    }
    cairo_stroke(context);
}

} // namespace charts
