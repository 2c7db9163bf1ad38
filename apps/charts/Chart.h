// SPDX-License-Identifier: MIT
//
// What a chart shows: a title, labeled axes, series of points and lines, notes beside points.
//
//     Chart plan("Antenna and tip", {"East [m]", "North [m]"});
//     plan.KeepEqualScale();
//     plan.AddPoints("tip", tips, {.color = palette::kBlue});
//
// The first coordinate of a point runs to the right, the second upward: for a plan that is
// {east, north}. Sizes are in points. A Picture (Picture.h) places charts and saves them.
#pragma once

#include "apps/charts/Scale.h"
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace charts {

struct Color
{
    double red, green, blue;
    double alpha = 1.0;

    Color Faint(double opacity) const { return {red, green, blue, opacity}; }
};

// Distinguishable with every kind of color vision (Okabe and Ito, 2008).
namespace palette {
inline constexpr Color kBlack{0.13, 0.13, 0.15};
inline constexpr Color kGray{0.55, 0.56, 0.58};
inline constexpr Color kOrange{0.902, 0.624, 0.0};
inline constexpr Color kSky{0.337, 0.706, 0.914};
inline constexpr Color kGreen{0.0, 0.620, 0.451};
inline constexpr Color kBlue{0.0, 0.447, 0.698};
inline constexpr Color kRed{0.835, 0.369, 0.0};
inline constexpr Color kPurple{0.800, 0.475, 0.655};
} // namespace palette

struct PlotPoint
{
    double x, y;
};

enum class Mark { Dot, Ring, Cross, Plus, Target };

struct PointStyle
{
    Color color = palette::kBlue;
    Mark mark = Mark::Dot;
    double size = 2.0; // half width, points
};

struct LineStyle
{
    Color color = palette::kBlack;
    double width = 1.0;
    bool dashed = false;
};

struct Frame
{
    double x, y, width, height; // from the top left corner, points
};

struct AxisLabels
{
    std::string x, y;
};

struct Chart
{
    struct Series
    {
        std::string name; // legend entry; empty: none
        std::vector<PlotPoint> points;
        std::optional<PointStyle> marks; // nullopt: a line
        LineStyle line;
    };
    struct Annotation
    {
        PlotPoint at;
        std::string text;
        Color color;
    };

    Chart(std::string chartTitle, AxisLabels axisLabels)
        : title(std::move(chartTitle)), labels(std::move(axisLabels))
    {}

    /// Both axes get the same scale, as in a plan.
    void KeepEqualScale() { equalScale = true; }

    /// Sets the ranges of the axes; nullopt: all data that was added.
    void SetRange(std::optional<Range> x, std::optional<Range> y) { given = {x, y}; }

    void AddPoints(std::string name, std::vector<PlotPoint> points, PointStyle style);
    void AddLine(std::string name, std::vector<PlotPoint> points, LineStyle style);
    void AddCircle(std::string name, PlotPoint center, double radius, LineStyle style);

    /// An ellipse by its semi-axes. The first points `turn` degrees clockwise from straight up,
    /// like an azimuth in a plan.
    void AddEllipse(std::string name, PlotPoint center, double first, double second, double turn,
                    LineStyle style);

    /// A text to the upper right of a point.
    void AddText(PlotPoint at, std::string text, Color color = palette::kBlack);

    std::string title;
    AxisLabels labels;
    bool equalScale = false;
    std::array<std::optional<Range>, 2> given; // x, y
    std::vector<Series> series;
    std::vector<Annotation> texts;
};

} // namespace charts
