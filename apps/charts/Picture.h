// SPDX-License-Identifier: MIT
//
// One or more charts below a title, saved as PNG or SVG.
//
//     Picture picture("Antenna and tip", "Tips of replay.csv", 900, 600);
//     picture.Place(plan, picture.Body());
//     picture.Save("tips.svg");
//
// Sizes are in points; a PNG has two pixels to the point.
#pragma once

#include "apps/charts/Chart.h"
#include "apps/tables/Output.h"
#include <string>
#include <string_view>
#include <vector>

namespace charts {

class Picture
{
public:
    /// @param subtitle  below the title, in as many lines as it needs
    Picture(std::string title, const std::string& subtitle, double width, double height);

    /// The area for charts: the picture without its margins and title lines.
    Frame Body() const;

    void Place(Chart chart, Frame frame) { m_charts.push_back({std::move(chart), frame}); }

    /// Replaces the file: an SVG where its name ends in .svg, otherwise a PNG.
    /// @throws InputError when it cannot be written
    void Save(const std::string& path) const;
    /// The same as one of the files of a command.
    void Save(tables::OutputFiles& files, const std::string& path) const;

private:
    std::string Bytes(const std::string& path) const;

    struct Placed
    {
        Chart chart;
        Frame frame;
    };

    std::string m_title;
    std::vector<std::string> m_subtitle; // lines
    double m_width;
    double m_height;
    std::vector<Placed> m_charts;
};

/// Whether a picture can have this name: it ends in .png or .svg.
bool IsPictureName(std::string_view path);

} // namespace charts
