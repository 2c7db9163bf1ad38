// SPDX-License-Identifier: MIT
#include "apps/cli/measure/MeasurePicture.h"

#include "apps/charts/Picture.h"
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace palette = charts::palette;
using charts::Chart;
using charts::Mark;
using charts::PlotPoint;

namespace {

constexpr double kWidth = 1080.0; // points
constexpr double kPlanWidth = 520.0;
constexpr double kHeight = 640.0;
constexpr double kGap = 24.0; // between the charts

struct TiltClass
{
    double below; // degrees
    const char* name;
    charts::Color color;
};

constexpr TiltClass kClasses[] = {
    {10.0, "tip at a tilt below 10°", palette::kSky   },
    {20.0, "10° to 20°",             palette::kBlue  },
    {91.0, "above 20°",               palette::kPurple},
};

PlotPoint InPlan(const xyhCoordinate& point, const xyhCoordinate& origin)
{
    return {point.y - origin.y, point.x - origin.x};
}

} // namespace

void MeasurePicture::Add(const Measurement& m)
{
    if (!m_origin) {
        m_origin = m_truth.value_or(xyhCoordinate{std::floor(m.tip.x), std::floor(m.tip.y), 0.0});
    }
    const PlotPoint tip = InPlan(m.tip, *m_origin);
    m_antenna.Add(InPlan(m.antenna, *m_origin));
    m_tips.Add(tip);
    std::size_t tiltClass = 0;
    while (m.tilt >= kClasses[tiltClass].below)
        ++tiltClass;
    m_tipsByTilt[tiltClass].Add({1000.0 * tip.x, 1000.0 * tip.y});
}

void MeasurePicture::Save(tables::OutputFiles& files, const std::string& path,
                          MeasureSummary& summary) const
{
    const MeasureSetup& setup = summary.Setup();
    const auto slash = setup.log.find_last_of('/');
    std::string subtitle =
        fmt::format("{} samples at tilts from {:.1f}° to {:.1f}°, {:.3f} m pole", summary.Samples(),
                    summary.Tilts().Min(), summary.Tilts().Max(), setup.poleLength);
    if (m_truth)
        subtitle += fmt::format(
            "; half of the tips are within {:.0f} mm of the true one, 90 % within "
            "{:.0f} mm (dashed circles: 50, 90 and 99 %)",
            1000.0 * summary.PlanErrors().At(0.5), 1000.0 * summary.PlanErrors().At(0.9));
    charts::Picture picture(
        "Antenna and pole tip: "
            + (slash == std::string::npos ? setup.log : setup.log.substr(slash + 1)),
        subtitle, m_truth ? kWidth : kPlanWidth + 2.0 * kGap, kHeight);
    charts::Frame frame = picture.Body();
    if (m_truth) {
        const double each = (frame.width - kGap) / 2.0;
        picture.Place(TipsAroundTruth(summary),
                      {frame.x + each + kGap, frame.y, each, frame.height});
        frame.width = each;
    }
    picture.Place(Plan(), frame);
    picture.Save(files, path);
}

Chart MeasurePicture::Plan() const
{
    const xyhCoordinate origin = m_origin.value_or(xyhCoordinate{});
    Chart plan(
        "Antenna track and tips in plan",
        {m_truth ? "East of the true tip [m]" : fmt::format("E \u2212 {:.0f} [m]", origin.y),
         m_truth ? "North of the true tip [m]" : fmt::format("N \u2212 {:.0f} [m]", origin.x)});
    plan.KeepEqualScale();
    plan.AddPoints("antenna", m_antenna.Points(), {palette::kOrange, Mark::Dot, 1.1});
    plan.AddPoints("tip", m_tips.Points(), {palette::kBlue, Mark::Dot, 1.1});
    if (m_truth)
        plan.AddPoints("true tip",
                       {
                           {0.0, 0.0}
        },
                       {palette::kBlack, Mark::Plus, 7.0});
    return plan;
}

Chart MeasurePicture::TipsAroundTruth(MeasureSummary& summary) const
{
    Chart chart("Tips around the true tip",
                {"East of the true tip [mm]", "North of the true tip [mm]"});
    chart.KeepEqualScale();
    for (std::size_t i = 0; i < kTiltClasses; ++i) {
        chart.AddPoints(kClasses[i].name, m_tipsByTilt[i].Points(),
                        {kClasses[i].color, Mark::Dot, 1.6});
    }
    chart.AddPoints("true tip",
                    {
                        {0.0, 0.0}
    },
                    {palette::kBlack, Mark::Plus, 7.0});
    for (const double fraction : {0.5, 0.9, 0.99}) {
        const double radius = 1000.0 * summary.PlanErrors().At(fraction);
        chart.AddCircle("", {0.0, 0.0}, radius, {palette::kBlack, 0.9, true});
        chart.AddText({0.0, radius}, fmt::format("{:.0f} %: {:.0f} mm", 100.0 * fraction, radius));
    }
    return chart;
}

} // namespace cli
