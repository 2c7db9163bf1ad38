// SPDX-License-Identifier: MIT
#include "apps/charts/Chart.h"

#include "survey/Angle.h"
#include <cmath>

namespace charts {

namespace survey = tiltpole::survey;

void Chart::AddPoints(std::string name, std::vector<PlotPoint> points, PointStyle style)
{
    series.push_back({std::move(name), std::move(points), style, {}});
}

void Chart::AddLine(std::string name, std::vector<PlotPoint> points, LineStyle style)
{
    series.push_back({std::move(name), std::move(points), std::nullopt, style});
}

void Chart::AddCircle(std::string name, PlotPoint center, double radius, LineStyle style)
{
    AddEllipse(std::move(name), center, radius, radius, 0.0, style);
}

void Chart::AddEllipse(std::string name, PlotPoint center, double first, double second, double turn,
                       LineStyle style)
{
    constexpr int kSides = 180;
    const double sine = std::sin(survey::Deg2Rad(turn));
    const double cosine = std::cos(survey::Deg2Rad(turn));
    std::vector<PlotPoint> points;
    for (int i = 0; i <= kSides; ++i) {
        const double angle = 2.0 * survey::kPi * i / kSides;
        const double along = first * std::cos(angle);
        const double across = second * std::sin(angle);
        points.push_back(
            {center.x + along * sine + across * cosine, center.y + along * cosine - across * sine});
    }
    AddLine(std::move(name), std::move(points), style);
}

void Chart::AddText(PlotPoint at, std::string text, Color color)
{
    texts.push_back({at, std::move(text), color});
}

} // namespace charts
