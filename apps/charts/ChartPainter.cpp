// SPDX-License-Identifier: MIT
#include "apps/charts/ChartPainter.h"

#include <algorithm>
#include <limits>

namespace charts {

namespace {

constexpr Color kGridColor{0.90, 0.91, 0.92};
constexpr TextStyle kTitleText{.size = 12.5, .bold = true};
constexpr TextStyle kLegendText{.size = 10.5};
constexpr TextStyle kTickText{
    .size = 10.0, .color = {0.30, 0.31, 0.33}
};
constexpr TextStyle kLabelText{.size = 11.0, .align = Align::Center};
constexpr double kLineHeight = 17.0;
constexpr double kTickGap = 6.0;        // between axis and tick text
constexpr double kLegendMark = 18.0;    // width of the sample before a legend text
constexpr double kLegendGap = 16.0;     // between legend entries
constexpr double kPointsPerTick = 62.0; // space for a tick of the lower axis
constexpr double kPointsPerRow = 38.0;  // space for a tick of the left axis
constexpr double kPadding = 0.06;       // unused part of an axis at each end

// The plotting area and the ranges that it shows.
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

// A legend entry is a sample of the series and its name; entries wrap into rows.
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
            sample.color.alpha = 1.0;
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

// Equal scale: widens the range of the axis that would be stretched.
void EqualizeScale(Area& area)
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
    style.align = Align::Center;
    for (std::size_t i = 0; i < xTicks.size(); ++i) {
        const double x = area.At({xTicks[i], area.y.low}).x;
        painter.Line(
            {
                {x, f.y           },
                {x, f.y + f.height}
        },
            {kGridColor, 0.8});
        const double half = painter.TextWidth(xTexts[i], style) / 2.0;
        const double inside = std::clamp(x, outer.x + half, outer.x + outer.width - half);
        painter.Text({inside, f.y + f.height + kTickGap + kTickText.size}, xTexts[i], style);
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
            {kGridColor, 0.8});
        painter.Text({f.x - kTickGap, y + 0.36 * kTickText.size}, yTexts[i], style);
    }
    painter.Text({f.x + f.width / 2.0, f.y + f.height + kTickGap + 2.9 * kTickText.size},
                 chart.labels.x, painter.Fitted(chart.labels.x, kLabelText, f.width));
    TextStyle upright = painter.Fitted(chart.labels.y, kLabelText, f.height);
    upright.upright = true;
    painter.Text({outer.x + kLabelText.size, f.y + f.height / 2.0}, chart.labels.y, upright);
}

// To the upper right of its point, or where that leaves the plotting area, as near as inside it.
void PaintNote(Painter& painter, const Chart::Annotation& note, const Area& area)
{
    constexpr double kGap = 6.0;
    constexpr double kInside = 4.0;
    const TextStyle style{.size = 10.0, .color = note.color, .boxed = true};
    const Frame& f = area.frame;
    const double width = painter.TextWidth(note.text, style);
    PlotPoint at = area.At(note.at);
    if (at.x < f.x || at.x > f.x + f.width || at.y < f.y || at.y > f.y + f.height) return;
    at.x = std::clamp(at.x + kGap, f.x + kInside,
                      std::max(f.x + kInside, f.x + f.width - width - kInside));
    at.y = std::clamp(at.y - kGap, f.y + style.size + kInside, f.y + f.height - kInside);
    painter.Text(at, note.text, style);
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
    for (const Chart::Annotation& note : chart.texts)
        PaintNote(painter, note, area);
    cairo_restore(context);
}

// Width of the left axis: its widest tick text and its label. The ticks depend only on the height,
// which is known before the width.
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
    for (int pass = 0; pass < 2; ++pass) { // equal scale may change the ticks and thus the margin
        area.frame.x = frame.x + left;
        area.frame.width = frame.width - left - 2.0 * kTickGap;
        if (chart.equalScale) EqualizeScale(area);
        left = LeftMargin(painter, area.y, area.frame.height);
    }

    painter.Text({frame.x, frame.y + 0.8 * kLineHeight}, chart.title,
                 painter.Fitted(chart.title, kTitleText, frame.width));
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
        {palette::kGray, 0.8});
}

} // namespace charts
