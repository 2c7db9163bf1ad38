// SPDX-License-Identifier: MIT
#include "apps/charts/Picture.h"

#include "apps/charts/ChartPainter.h"
#include "apps/tables/Errors.h"
#include <cairo-svg.h>
#include <memory>
#include <utility>

namespace charts {

namespace {

constexpr double kMargin = 14.0;         // around the picture, points
constexpr double kTitleHeight = 24.0;    // points
constexpr double kSubtitleHeight = 16.0; // of each line
constexpr TextStyle kTitle{.size = 16.0, .bold = true};
constexpr TextStyle kSubtitle{
    .size = 11.0, .color = {0.36, 0.37, 0.39}
};
constexpr double kPixelsPerPoint = 2.0; // of a PNG

bool EndsWith(std::string_view text, std::string_view ending)
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

Picture::Picture(std::string title, const std::string& subtitle, double width, double height)
    : m_title(std::move(title)), m_width(width), m_height(height)
{
    if (subtitle.empty()) return;
    const Surface any(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1), &cairo_surface_destroy);
    m_subtitle = Painter(any.get()).Wrapped(subtitle, kSubtitle, width - 2.0 * kMargin);
}

Frame Picture::Body() const
{
    double top = kMargin;
    if (!m_title.empty()) top += kTitleHeight;
    if (!m_subtitle.empty())
        top += kSubtitleHeight * static_cast<double>(m_subtitle.size()) + kMargin / 2.0;
    return {kMargin, top, m_width - 2.0 * kMargin, m_height - top - kMargin};
}

void Picture::Save(const std::string& path) const
{
    tables::WriteFile(path, Bytes(path));
}

void Picture::Save(tables::OutputFiles& files, const std::string& path) const
{
    files.Write(path, Bytes(path));
}

std::string Picture::Bytes(const std::string& path) const
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
        painter.Text({kMargin, baseline}, m_title,
                     painter.Fitted(m_title, kTitle, m_width - 2.0 * kMargin));
        baseline += kTitleHeight - 4.0;
        for (const std::string& line : m_subtitle) {
            painter.Text({kMargin, baseline}, line, kSubtitle);
            baseline += kSubtitleHeight;
        }
        for (const Placed& placed : m_charts)
            PaintChart(painter, placed.chart, placed.frame);
    }
    if (!asSvg) cairo_surface_write_to_png_stream(surface.get(), Append, &content);
    cairo_surface_finish(surface.get());
    const cairo_status_t status = cairo_surface_status(surface.get());
    if (status != CAIRO_STATUS_SUCCESS) {
        throw tables::InputError(path,
                                 std::string("cannot be drawn: ") + cairo_status_to_string(status));
    }
    return content;
}

bool IsPictureName(std::string_view path)
{
    return EndsWith(path, ".png") || EndsWith(path, ".svg");
}

} // namespace charts
