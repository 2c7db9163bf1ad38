// SPDX-License-Identifier: MIT
//
// Pictures of results: charts with titles, labelled axes, ticks and a legend, as PNG or SVG.
//
//     Chart plan("Antenna and tip", {"East [m]", "North [m]"});
//     plan.KeepEqualScale();
//     plan.AddPoints("tip", tips, {.colour = palette::kBlue});
//     Picture picture("Tips of replay.csv", 900, 600);
//     picture.Place(plan, {0, 0, 900, 600});
//     picture.Save("tips.svg");
//
// The first coordinate of a point runs to the right, the second upwards: for a plan that is
// {east, north}. Sizes are in points; a PNG has two pixels to the point.
#pragma once

#include "apps/cli/Scale.h"
#include <CLI/CLI.hpp>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct Colour
{
    double red, green, blue;
    double alpha = 1.0;

    Colour Faint(double opacity) const { return {red, green, blue, opacity}; }
};

// Distinguishable with every kind of colour vision (Okabe and Ito, 2008).
namespace palette {
inline constexpr Colour kBlack{0.13, 0.13, 0.15};
inline constexpr Colour kGrey{0.55, 0.56, 0.58};
inline constexpr Colour kOrange{0.902, 0.624, 0.0};
inline constexpr Colour kSky{0.337, 0.706, 0.914};
inline constexpr Colour kGreen{0.0, 0.620, 0.451};
inline constexpr Colour kBlue{0.0, 0.447, 0.698};
inline constexpr Colour kRed{0.835, 0.369, 0.0};
inline constexpr Colour kPurple{0.800, 0.475, 0.655};
} // namespace palette

struct PlotPoint
{
    double x, y;
};

enum class Mark { Dot, Ring, Cross, Plus, Square, Target };

struct PointStyle
{
    Colour colour = palette::kBlue;
    Mark mark = Mark::Dot;
    double size = 2.0; // half width, points
};

struct LineStyle
{
    Colour colour = palette::kBlack;
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
        std::string name; // legend entry; none when empty
        std::vector<PlotPoint> points;
        std::optional<PointStyle> marks; // else a line
        LineStyle line;
    };
    struct Annotation
    {
        PlotPoint at;
        std::string text;
        Colour colour;
    };

    Chart(std::string chartTitle, AxisLabels axisLabels)
        : title(std::move(chartTitle)), labels(std::move(axisLabels))
    {}

    /// One unit is as long to the right as upwards, as a plan needs it.
    void KeepEqualScale() { equalScale = true; }

    /// The range of an axis; without it the axis takes in all that was added.
    void SetRange(std::optional<Range> x, std::optional<Range> y) { given = {x, y}; }

    void AddPoints(std::string name, std::vector<PlotPoint> points, PointStyle style);
    void AddLine(std::string name, std::vector<PlotPoint> points, LineStyle style);
    void AddCircle(std::string name, PlotPoint centre, double radius, LineStyle style);

    /// An ellipse by half axes; the first lies `turn` degrees clockwise from upwards, as azimuths
    /// count in a plan.
    void AddEllipse(std::string name, PlotPoint centre, double first, double second, double turn,
                    LineStyle style);

    /// A text beside a point, to its upper right.
    void AddText(PlotPoint at, std::string text, Colour colour = palette::kBlack);

    std::string title;
    AxisLabels labels;
    bool equalScale = false;
    std::array<std::optional<Range>, 2> given; // x, y
    std::vector<Series> series;
    std::vector<Annotation> texts;
};

class Picture
{
public:
    Picture(std::string title, std::string subtitle, double width, double height)
        : m_title(std::move(title)), m_subtitle(std::move(subtitle)), m_width(width),
          m_height(height)
    {}

    /// Where charts may stand: the picture without its title lines.
    Frame Body() const;

    void Place(Chart chart, Frame frame) { m_charts.push_back({std::move(chart), frame}); }

    /// Replaces the file; its ending says whether it becomes a PNG or an SVG.
    /// @throws InputError when it cannot be written
    void Save(const std::string& path) const;

private:
    struct Placed
    {
        Chart chart;
        Frame frame;
    };

    std::string m_title;
    std::string m_subtitle;
    double m_width;
    double m_height;
    std::vector<Placed> m_charts;
};

/// Command line check: a name that ends in .png or .svg.
CLI::Validator PictureName();

/// Keeps at most `kMost` of any number of points, evenly: each n-th, with n a power of two.
class ThinnedPoints
{
public:
    static constexpr std::size_t kMost = 8192;

    void Add(PlotPoint point);
    const std::vector<PlotPoint>& Points() const { return m_points; }

private:
    std::vector<PlotPoint> m_points;
    std::uint64_t m_seen = 0;
    std::uint64_t m_every = 1;
};

} // namespace cli
