// SPDX-License-Identifier: MIT
#include "apps/cli/ChartPainter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace cli {

namespace {

constexpr Colour kGridColour{0.90, 0.91, 0.92};
constexpr Colour kHaloColour{1.0, 1.0, 1.0, 0.9};
constexpr double kHaloWidth = 4.0;
constexpr TextStyle kTitleText{.size = 12.5, .bold = true};
constexpr TextStyle kLegendText{.size = 10.5};
constexpr TextStyle kTickText{
    .size = 10.0, .colour = {0.30, 0.31, 0.33}
};
constexpr TextStyle kLabelText{.size = 11.0, .align = Align::Centre};
constexpr double kLineHeight = 17.0;
constexpr double kTickGap = 6.0;        // between axis and tick text
constexpr double kLegendMark = 18.0;    // width of the sample before a legend text
constexpr double kLegendGap = 16.0;     // between legend entries
constexpr double kPointsPerTick = 62.0; // room a tick of the lower axis wants
constexpr double kPointsPerRow = 38.0;  // room a tick of the left axis wants
constexpr double kPadding = 0.06;       // free share of an axis at each end

// The plotting area and the ranges its sides stand for.
struct Area
{
    Frame frame;
    Range x, y;

    PlotPoint At(PlotPoint p) const
    {
        return {frame.x + frame.width * (p.x - x.low) / x.Width(),
                frame.y + frame.height * (y.high - p.y) / y.Width()};
    }
};

Range RangeOf(const Chart& chart, double PlotPoint::*coordinate)
{
    Range range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const Chart::Series& series : chart.series) {
        for (const PlotPoint& point : series.points) {
            range.low = std::min(range.low, point.*coordinate);
            range.high = std::max(range.high, point.*coordinate);
        }
    }
    return Padded(range, kPadding);
}

// A legend entry is a sample of the series and its name; entries flow into rows.
struct LegendEntry
{
    const Chart::Series* series;
    PlotPoint at; // left end of the baseline, from the legend's top left corner
};

std::vector<LegendEntry> LayLegend(Painter& painter, const Chart& chart, double width)
{
    std::vector<LegendEntry> entries;
    double x = 0.0;
    double y = 0.75 * kLineHeight;
    for (const Chart::Series& series : chart.series) {
        if (series.name.empty()) continue;
        const double needed = kLegendMark + painter.TextWidth(series.name, kLegendText);
        if (x > 0.0 && x + needed > width) {
            x = 0.0;
            y += kLineHeight;
        }
        entries.push_back({
            &series, {x, y}
        });
        x += needed + kLegendGap;
    }
    return entries;
}

void PaintLegend(Painter& painter, const std::vector<LegendEntry>& entries, PlotPoint corner)
{
    for (const auto& [series, at] : entries) {
        const double x = corner.x + at.x;
        const double middle = corner.y + at.y - 0.35 * kLegendText.size;
        if (series->marks) {
            PointStyle sample = *series->marks;
            sample.size = std::clamp(sample.size, 3.0, 5.0);
            sample.colour.alpha = 1.0;
            painter.MarkAt({x + 6.0, middle}, sample);
        } else {
            painter.Line(
                {
                    {x,        middle},
                    {x + 13.0, middle}
            },
                series->line);
        }
        painter.Text({x + kLegendMark, corner.y + at.y}, series->name, kLegendText);
    }
}

// Equal scale: the axis that would be stretched gets a wider range instead.
void EqualiseScale(Area& area)
{
    const double unit =
        std::max(area.x.Width() / area.frame.width, area.y.Width() / area.frame.height);
    area.x = Widened(area.x, unit * area.frame.width);
    area.y = Widened(area.y, unit * area.frame.height);
}

int Most(double length, double each)
{
    return std::max(3, static_cast<int>(length / each));
}

void PaintAxes(Painter& painter, const Chart& chart, const Area& area, const Frame& outer)
{
    const Frame& f = area.frame;
    const auto xTicks = Ticks(area.x, Most(f.width, kPointsPerTick));
    const auto xTexts = TickTexts(xTicks);
    TextStyle style = kTickText;
    style.align = Align::Centre;
    for (std::size_t i = 0; i < xTicks.size(); ++i) {
        const double x = area.At({xTicks[i], area.y.low}).x;
        painter.Line(
            {
                {x, f.y           },
                {x, f.y + f.height}
        },
            {kGridColour, 0.8});
        painter.Text({x, f.y + f.height + kTickGap + kTickText.size}, xTexts[i], style);
    }
    const auto yTicks = Ticks(area.y, Most(f.height, kPointsPerRow));
    const auto yTexts = TickTexts(yTicks);
    style.align = Align::Right;
    for (std::size_t i = 0; i < yTicks.size(); ++i) {
        const double y = area.At({area.x.low, yTicks[i]}).y;
        painter.Line(
            {
                {f.x,           y},
                {f.x + f.width, y}
        },
            {kGridColour, 0.8});
        painter.Text({f.x - kTickGap, y + 0.36 * kTickText.size}, yTexts[i], style);
    }
    painter.Text({f.x + f.width / 2.0, f.y + f.height + kTickGap + 2.9 * kTickText.size},
                 chart.labels.x, kLabelText);
    TextStyle upright = kLabelText;
    upright.upright = true;
    painter.Text({outer.x + kLabelText.size, f.y + f.height / 2.0}, chart.labels.y, upright);
}

void PaintSeries(Painter& painter, const Chart& chart, const Area& area)
{
    cairo_t* const context = painter.Get();
    cairo_save(context);
    cairo_rectangle(context, area.frame.x, area.frame.y, area.frame.width, area.frame.height);
    cairo_clip(context);
    for (const Chart::Series& series : chart.series) {
        std::vector<PlotPoint> points;
        points.reserve(series.points.size());
        for (const PlotPoint& point : series.points)
            points.push_back(area.At(point));
        if (!series.marks) {
            painter.Line(points, series.line);
        } else {
            for (const PlotPoint& point : points)
                painter.MarkAt(point, *series.marks);
        }
    }
    for (const Chart::Annotation& note : chart.texts) {
        const PlotPoint at = area.At(note.at);
        painter.Text({at.x + 6.0, at.y - 6.0}, note.text,
                     {.size = 10.0, .colour = note.colour, .halo = true});
    }
    cairo_restore(context);
}

// The room left for the left axis: its widest tick text and its label. The ticks depend on the
// height only, which is known before the width.
double LeftMargin(Painter& painter, const Range& y, double height)
{
    double widest = 0.0;
    for (const std::string& text : TickTexts(Ticks(y, Most(height, kPointsPerRow)))) {
        widest = std::max(widest, painter.TextWidth(text, kTickText));
    }
    return widest + kTickGap + 1.9 * kLabelText.size;
}

} // namespace

void PaintChart(Painter& painter, const Chart& chart, const Frame& frame)
{
    const auto legend = LayLegend(painter, chart, frame.width);
    const double titleHeight = chart.title.empty() ? 0.0 : kLineHeight + 3.0;
    const double legendHeight = legend.empty() ? 0.0 : legend.back().at.y + 0.55 * kLineHeight;
    const double below = kTickGap + 3.3 * kTickText.size;

    Area area;
    area.x = chart.given[0].value_or(RangeOf(chart, &PlotPoint::x));
    area.y = chart.given[1].value_or(RangeOf(chart, &PlotPoint::y));
    area.frame.y = frame.y + titleHeight + legendHeight + 4.0;
    area.frame.height = frame.y + frame.height - below - area.frame.y;
    double left = LeftMargin(painter, area.y, area.frame.height);
    for (int pass = 0; pass < 2; ++pass) { // equal scale may change the ticks and so the margin
        area.frame.x = frame.x + left;
        area.frame.width = frame.width - left - 2.0 * kTickGap;
        if (chart.equalScale) EqualiseScale(area);
        left = LeftMargin(painter, area.y, area.frame.height);
    }

    painter.Text({frame.x, frame.y + 0.8 * kLineHeight}, chart.title, kTitleText);
    PaintLegend(painter, legend, {frame.x, frame.y + titleHeight});
    PaintAxes(painter, chart, area, frame);
    PaintSeries(painter, chart, area);
    const Frame& f = area.frame;
    painter.Line(
        {
            {f.x,           f.y           },
            {f.x,           f.y + f.height},
            {f.x + f.width, f.y + f.height},
            {f.x + f.width, f.y           },
            {f.x,           f.y           }
    },
        {palette::kGrey, 0.8});
}

void Painter::Clear()
{
    cairo_set_source_rgb(Get(), 1.0, 1.0, 1.0);
    cairo_paint(Get());
}

void Painter::Use(const Colour& colour)
{
    cairo_set_source_rgba(Get(), colour.red, colour.green, colour.blue, colour.alpha);
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

void Painter::Text(PlotPoint baseline, const std::string& text, const TextStyle& style)
{
    if (text.empty()) return;
    double shift = 0.0;
    if (style.align != Align::Left) shift = -TextWidth(text, style);
    if (style.align == Align::Centre) shift /= 2.0;

    UseFont(style);
    Use(style.colour);
    cairo_save(Get());
    cairo_translate(Get(), baseline.x, baseline.y);
    if (style.upright) cairo_rotate(Get(), -std::numbers::pi / 2.0);
    if (style.halo) {
        cairo_move_to(Get(), shift, 0.0);
        cairo_text_path(Get(), text.c_str());
        Use(kHaloColour);
        cairo_set_line_width(Get(), kHaloWidth);
        cairo_set_line_join(Get(), CAIRO_LINE_JOIN_ROUND);
        cairo_stroke(Get());
        Use(style.colour);
    }
    cairo_move_to(Get(), shift, 0.0);
    cairo_show_text(Get(), text.c_str());
    cairo_restore(Get());
}

void Painter::Line(const std::vector<PlotPoint>& points, const LineStyle& style)
{
    static constexpr double kDash[] = {4.0, 3.0};
    Use(style.colour);
    cairo_set_line_width(Get(), style.width);
    cairo_set_line_join(Get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_dash(Get(), kDash, style.dashed ? 2 : 0, 0.0);
    cairo_new_path(Get()); // a text leaves its end behind
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
        cairo_arc(context, at.x, at.y, radius, 0.0, 2.0 * std::numbers::pi);
    };
    const auto stroke = [&](double dx, double dy) {
        cairo_move_to(context, at.x - dx, at.y - dy);
        cairo_line_to(context, at.x + dx, at.y + dy);
    };
    Use(style.colour);
    cairo_set_line_width(context, std::max(1.0, 0.3 * style.size));
    cairo_new_path(context);
    switch (style.mark) {
    case Mark::Dot:
        circle(style.size);
        cairo_fill(context);
        return;
    case Mark::Square:
        cairo_rectangle(context, at.x - style.size, at.y - style.size, 2.0 * style.size,
                        2.0 * style.size);
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

} // namespace cli
