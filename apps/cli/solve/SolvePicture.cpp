// SPDX-License-Identifier: MIT
#include "apps/cli/solve/SolvePicture.h"

#include "apps/charts/Picture.h"
#include "apps/cli/solve/SolveReport.h"
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace palette = charts::palette;
using charts::Chart;
using charts::Mark;
using charts::PlotPoint;

namespace {

constexpr double kWidth = 1080.0; // points
constexpr double kHeight = 560.0;
constexpr double kGap = 24.0; // between the charts
constexpr double kMillimeters = 1000.0;

// Meters east and north of the estimated tip, or of the first position.
PlotPoint InPlan(const xyhCoord& point, const xyhCoord& origin)
{
    return {point.y - origin.y, point.x - origin.x};
}

xyhCoord OriginOf(const SolvedTip& solved)
{
    if (solved.HasEstimate()) return solved.estimate.tip;
    return solved.rows.empty() ? xyhCoord{} : solved.rows.front().antenna;
}

Chart AntennaChart(const SolvedTip& solved, const xyhCoord& origin)
{
    const char* const of = solved.HasEstimate() ? "estimated tip" : "first position";
    Chart chart("Antenna positions",
                {fmt::format("East of the {} [m]", of), fmt::format("North of the {} [m]", of)});
    chart.KeepEqualScale();
    std::vector<PlotPoint> taken;
    std::vector<PlotPoint> refused;
    for (const AntennaRow& row : solved.rows)
        (row.refusal.empty() ? taken : refused).push_back(InPlan(row.antenna, origin));
    chart.AddPoints("accepted", taken, {palette::kOrange, Mark::Dot, 2.5});
    if (!refused.empty()) chart.AddPoints("rejected", refused, {palette::kGray, Mark::Cross, 3.0});
    if (solved.HasEstimate())
        chart.AddPoints("estimated tip", {InPlan(solved.estimate.tip, origin)},
                        {palette::kBlue, Mark::Target, 5.0});
    return chart;
}

Chart TipChart(const SolvedTip& solved, const xyhCoord& origin)
{
    Chart chart("Tips and 95 % ellipse", {"East [mm]", "North [mm]"});
    chart.KeepEqualScale();
    const quality::TipEstimate& e = solved.estimate;
    chart.AddEllipse("95 % ellipse", {0.0, 0.0}, kMillimeters * e.ellipseMajor,
                     kMillimeters * e.ellipseMinor, e.ellipseAzimuth, {palette::kBlue, 1.2});
    chart.AddPoints("estimated tip",
                    {
                        {0.0, 0.0}
    },
                    {palette::kBlue, Mark::Target, 5.0});
    if (solved.HasSearched()) {
        const PlotPoint at = InPlan(solved.searched, origin);
        chart.AddPoints("searched tip",
                        {
                            {kMillimeters * at.x, kMillimeters * at.y}
        },
                        {palette::kRed, Mark::Plus, 6.0});
    }
    return chart;
}

double Residual(const SolvedTip& solved, const AntennaRow& row)
{
    const xyhCoord& tip = solved.estimate.tip;
    return std::hypot(row.antenna.x - tip.x, row.antenna.y - tip.y, row.antenna.h - tip.h)
           - solved.setup.antennaHeight;
}

Chart ResidualChart(const SolvedTip& solved)
{
    Chart chart("Distance to the tip minus antenna height", {"position, in order", "[mm]"});
    std::vector<PlotPoint> points;
    for (const std::size_t k : solved.taken)
        points.push_back(
            {static_cast<double>(k + 1), kMillimeters * Residual(solved, solved.rows[k])});
    const double last = points.back().x;
    chart.AddLine("",
                  {
                      {1.0,  0.0},
                      {last, 0.0}
    },
                  {palette::kGray, 0.8, true});
    chart.AddPoints("", points, {palette::kOrange, Mark::Dot, 2.5});
    return chart;
}

} // namespace

void SaveSolvePicture(const std::string& path, const SolvedTip& solved)
{
    charts::Picture picture(fmt::format("Tip from {} antenna positions", solved.taken.size()),
                            Recommendation(solved)
                                + fmt::format(" Antenna height {:.3f} m, grade of the search {}.",
                                              solved.setup.antennaHeight, solved.state.nStatus),
                            kWidth, kHeight);
    const xyhCoord origin = OriginOf(solved);
    charts::Frame frame = picture.Body();
    if (!solved.HasEstimate()) {
        picture.Place(AntennaChart(solved, origin), frame);
        picture.Save(path);
        return;
    }
    const double each = (frame.width - 2.0 * kGap) / 3.0;
    frame.width = each;
    picture.Place(AntennaChart(solved, origin), frame);
    frame.x += each + kGap;
    picture.Place(TipChart(solved, origin), frame);
    frame.x += each + kGap;
    picture.Place(ResidualChart(solved), frame);
    picture.Save(path);
}

} // namespace cli
