// SPDX-License-Identifier: MIT
#include "apps/cli/Plot.h"

#include "apps/cli/ChartPainter.h"
#include "apps/cli/Errors.h"
#include "apps/cli/Output.h"
#include <algorithm>
#include <cairo-svg.h>
#include <cmath>
#include <numbers>

namespace cli {

namespace {

constexpr double kMargin = 14.0;        // around the picture, points
constexpr double kTitleHeight = 24.0;   // of each title line, points
constexpr double kPixelsPerPoint = 2.0; // of a PNG

bool EndsWith(const std::string& text, const std::string& ending)
{
    return text.size() > ending.size()
           && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

cairo_status_t Append(void* content, const unsigned char* data, unsigned length)
{
    static_cast<std::string*>(content)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

} // namespace

void Chart::AddPoints(std::string name, std::vector<PlotPoint> points, PointStyle style)
{
    series.push_back({std::move(name), std::move(points), style, {}});
}

void Chart::AddLine(std::string name, std::vector<PlotPoint> points, LineStyle style)
{
    series.push_back({std::move(name), std::move(points), std::nullopt, style});
}

void Chart::AddCircle(std::string name, PlotPoint centre, double radius, LineStyle style)
{
    AddEllipse(std::move(name), centre, radius, radius, 0.0, style);
}

void Chart::AddEllipse(std::string name, PlotPoint centre, double first, double second, double turn,
                       LineStyle style)
{
    constexpr int kSides = 180;
    const double sine = std::sin(turn * std::numbers::pi / 180.0);
    const double cosine = std::cos(turn * std::numbers::pi / 180.0);
    std::vector<PlotPoint> points;
    for (int i = 0; i <= kSides; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / kSides;
        const double along = first * std::cos(angle);
        const double across = second * std::sin(angle);
        points.push_back(
            {centre.x + along * sine + across * cosine, centre.y + along * cosine - across * sine});
    }
    AddLine(std::move(name), std::move(points), style);
}

void Chart::AddText(PlotPoint at, std::string text, Colour colour)
{
    texts.push_back({at, std::move(text), colour});
}

Frame Picture::Body() const
{
    double top = kMargin;
    if (!m_title.empty()) top += kTitleHeight;
    if (!m_subtitle.empty()) top += kTitleHeight;
    return {kMargin, top, m_width - 2.0 * kMargin, m_height - top - kMargin};
}

void Picture::Save(const std::string& path) const
{
    std::string content;
    const bool asSvg = EndsWith(path, ".svg");
    const Surface surface(
        asSvg ? cairo_svg_surface_create_for_stream(Append, &content, m_width, m_height)
              : cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                           static_cast<int>(kPixelsPerPoint * m_width),
                                           static_cast<int>(kPixelsPerPoint * m_height)),
        &cairo_surface_destroy);
    {
        Painter painter(surface.get());
        if (!asSvg) cairo_scale(painter.Get(), kPixelsPerPoint, kPixelsPerPoint);
        painter.Clear();
        double baseline = kMargin + 0.6 * kTitleHeight;
        painter.Text({kMargin, baseline}, m_title, {.size = 16.0, .bold = true});
        baseline += kTitleHeight;
        painter.Text({kMargin, baseline}, m_subtitle, {.size = 11.0, .colour = palette::kGrey});
        for (const Placed& placed : m_charts)
            PaintChart(painter, placed.chart, placed.frame);
    }
    if (!asSvg) cairo_surface_write_to_png_stream(surface.get(), Append, &content);
    cairo_surface_finish(surface.get());
    const cairo_status_t status = cairo_surface_status(surface.get());
    if (status != CAIRO_STATUS_SUCCESS) {
        throw InputError(path, std::string("cannot be drawn: ") + cairo_status_to_string(status));
    }
    WriteFile(path, content);
}

CLI::Validator PictureName()
{
    return {[](std::string& path) {
                return EndsWith(path, ".png") || EndsWith(path, ".svg")
                           ? std::string{}
                           : "'" + path + "' does not end in .png or .svg";
            },
            "", "picture name"};
}

void ThinnedPoints::Add(PlotPoint point)
{
    if (m_seen++ % m_every != 0) return;
    if (m_points.size() == kMost) {
        for (std::size_t i = 0; i < kMost / 2; ++i)
            m_points[i] = m_points[2 * i];
        m_points.resize(kMost / 2);
        m_every *= 2;
        if ((m_seen - 1) % m_every != 0) return;
    }
    m_points.push_back(point);
}

} // namespace cli
