// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/OccupyPicture.h"

#include "apps/charts/Picture.h"
#include "apps/charts/ThinnedPoints.h"
#include "apps/cli/occupy/OccupationLog.h"
#include "apps/tables/Statistics.h"
#include "field/occupation/AdviceName.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace palette = charts::palette;
using charts::Chart;
using charts::Frame;
using charts::Mark;
using charts::Picture;
using charts::PlotPoint;

namespace {

constexpr double kWidth = 1080.0; // points
constexpr double kMargins = 92.0; // title, subtitle and edges
constexpr double kOverview = 360.0;
constexpr double kView = 320.0;
constexpr double kGap = 24.0;
constexpr double kMillimeters = 1000.0;
constexpr double kNarrowest = 30.0; // of a view, half [mm]

PlotPoint InPlan(const xyhCoordinate& point, const xyhCoordinate& origin, double scale)
{
    return {scale * (point.y - origin.y), scale * (point.x - origin.x)};
}

// What the tips of a point are compared with.
std::optional<xyhCoordinate> ReferenceOf(const OccupiedPoint& point)
{
    if (point.truth) return point.truth;
    if (point.estimate.hasTip) return point.estimate.tip;
    return std::nullopt;
}

// Tips of many points about their references [mm].
struct Scatter
{
    charts::ThinnedPoints points;
    tables::Percentiles distances;

    void Add(const xyhCoordinate& tip, const xyhCoordinate& reference)
    {
        const PlotPoint at = InPlan(tip, reference, kMillimeters);
        points.Add(at);
        distances.Add(std::hypot(at.x, at.y));
    }
};

struct Overview
{
    Scatter single;
    Scatter mean;
    Scatter occupied; // empty where no truth is known
};

Overview OverviewOf(const OccupyResult& result)
{
    Overview overview;
    for (const OccupiedPoint& point : result.points) {
        const auto reference = ReferenceOf(point);
        if (!reference) continue;
        for (const xyhCoordinate& tip : point.singleTips)
            overview.single.Add(tip, *reference);
        if (const auto mean = point.MeanTip()) overview.mean.Add(*mean, *reference);
        if (point.truth && point.estimate.hasTip)
            overview.occupied.Add(point.estimate.tip, *reference);
    }
    return overview;
}

Chart ScatterChart(const char* name, Scatter& scatter, double range, charts::PointStyle style,
                   const char* reference)
{
    Chart chart(fmt::format("{}: half in {:.0f} mm, 90 % in {:.0f} mm", name,
                            scatter.distances.At(0.5), scatter.distances.At(0.9)),
                {fmt::format("East of the {} [mm]", reference),
                 fmt::format("North of the {} [mm]", reference)});
    chart.KeepEqualScale();
    chart.SetRange(charts::Range{-range, range}, charts::Range{-range, range});
    chart.AddPoints("", scatter.points.Points(), style);
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {palette::kBlack, Mark::Plus, 6.0});
    for (const double share : {0.5, 0.9})
        chart.AddCircle("", {0.0, 0.0}, scatter.distances.At(share), {palette::kBlack, 0.9, true});
    return chart;
}

void PlaceOverview(Picture& picture, const OccupyResult& result, Frame frame)
{
    Overview overview = OverviewOf(result);
    const bool known = overview.occupied.distances.Count() > 0;
    const char* const reference = known ? "true tip" : "occupation's tip";
    const double range =
        1.1
        * std::max({overview.single.distances.At(0.99), overview.mean.distances.Max(),
                    overview.occupied.distances.Max(), kNarrowest});
    frame.width = (frame.width - 2.0 * kGap) / 3.0;
    const auto place = [&](const char* name, Scatter& scatter, const charts::PointStyle& style) {
        if (scatter.distances.Count() == 0) return;
        picture.Place(ScatterChart(name, scatter, range, style, reference), frame);
        frame.x += frame.width + kGap;
    };
    place("Single samples", overview.single, {palette::kSky, Mark::Dot, 1.4});
    place("Mean of a point", overview.mean, {palette::kPurple, Mark::Dot, 2.6});
    place("Occupation", overview.occupied, {palette::kBlue, Mark::Dot, 2.6});
}

std::vector<PlotPoint> InPlan(const std::vector<xyhCoordinate>& places, const xyhCoordinate& origin,
                              double scale)
{
    charts::ThinnedPoints points;
    for (const xyhCoordinate& place : places)
        points.Add(InPlan(place, origin, scale));
    return points.Points();
}

Chart TrackChart(const OccupiedPoint& point, const xyhCoordinate& origin)
{
    Chart chart(
        fmt::format("Point {}: {}", point.name, tiltpole::field::AdviceName(point.estimate.advice)),
        {"East [m]", "North [m]"});
    chart.KeepEqualScale();
    std::vector<xyhCoordinate> track;
    for (const AntennaFix& fix : point.track)
        track.push_back(fix.position);
    chart.AddLine("", InPlan(track, origin, 1.0), {palette::kOrange.Faint(0.4), 0.7});
    chart.AddPoints("antenna", InPlan(track, origin, 1.0), {palette::kOrange, Mark::Dot, 1.6});
    chart.AddPoints("single samples", InPlan(point.singleTips, origin, 1.0),
                    {palette::kSky, Mark::Dot, 1.2});
    if (point.estimate.hasTip)
        chart.AddPoints("tip", {InPlan(point.estimate.tip, origin, 1.0)},
                        {palette::kBlue, Mark::Target, 5.0});
    return chart;
}

Chart CloseChart(const OccupiedPoint& point, const xyhCoordinate& origin)
{
    const field::OccupationEstimate& e = point.estimate;
    Chart chart(e.hasTip ? fmt::format("Ellipse {:.0f} \u00d7 {:.0f} mm",
                                       kMillimeters * e.ellipseMajor, kMillimeters * e.ellipseMinor)
                         : "No tip",
                {"East [mm]", "North [mm]"});
    chart.KeepEqualScale();
    chart.AddPoints("single samples", InPlan(point.singleTips, origin, kMillimeters),
                    {palette::kSky, Mark::Dot, 1.4});
    if (const auto mean = point.MeanTip())
        chart.AddPoints("their mean", {InPlan(*mean, origin, kMillimeters)},
                        {palette::kPurple, Mark::Cross, 4.0});
    if (e.hasTip) {
        const PlotPoint tip = InPlan(e.tip, origin, kMillimeters);
        chart.AddEllipse("95 % ellipse", tip, kMillimeters * e.ellipseMajor,
                         kMillimeters * e.ellipseMinor, e.ellipseAzimuth, {palette::kBlue, 1.2});
        chart.AddPoints("tip", {tip}, {palette::kBlue, Mark::Target, 5.0});
    }
    if (point.truth)
        chart.AddPoints("true tip", {InPlan(*point.truth, origin, kMillimeters)},
                        {palette::kBlack, Mark::Plus, 6.0});
    return chart;
}

void PlaceView(Picture& picture, const OccupiedPoint& point, Frame frame)
{
    xyhCoordinate origin;
    if (point.estimate.hasTip) {
        origin = point.estimate.tip;
    } else if (!point.singleTips.empty()) {
        origin = point.singleTips.front();
    } else if (!point.track.empty()) {
        origin = point.track.front().position;
    }
    frame.width = (frame.width - kGap) / 2.0;
    picture.Place(TrackChart(point, origin), frame);
    frame.x += frame.width + kGap;
    picture.Place(CloseChart(point, origin), frame);
}

std::string Subtitle(const OccupyResult& result, bool overview)
{
    const auto stored =
        std::count_if(result.points.begin(), result.points.end(), [](const OccupiedPoint& point) {
            return point.estimate.advice == field::OccupationAdvice::Store;
        });
    std::string text = fmt::format("{} points, {} to store; {:.3f} m pole.", result.points.size(),
                                   stored, result.setup.occupation.poleLength);
    if (overview) text += " Dashed circles hold half and 90 % of the tips.";
    return text;
}

} // namespace

void SaveOccupyPicture(tables::OutputFiles& files, const std::string& path,
                       const OccupyResult& result)
{
    const std::size_t count = result.points.size();
    const bool overview = count > 1;
    const std::size_t views = count <= kMostViews ? count : 0;
    const std::size_t columns = std::min<std::size_t>(views, 2);
    const std::size_t rows = (views + 1) / 2;
    const double width = columns == 1 ? 0.5 * kWidth + 120.0 : kWidth;
    const auto slash = result.setup.log.find_last_of('/');
    Picture picture(
        "Occupied points: "
            + (slash == std::string::npos ? result.setup.log : result.setup.log.substr(slash + 1)),
        Subtitle(result, overview), width,
        kMargins + (overview ? kOverview : 0.0)
            + static_cast<double>(rows) * (kView + (overview ? kGap : 0.0)));
    Frame body = picture.Body();
    if (overview) {
        PlaceOverview(picture, result, {body.x, body.y, body.width, kOverview});
        body.y += kOverview + kGap;
    }
    for (std::size_t i = 0; i < views; ++i) {
        const double each = columns == 1 ? body.width : (body.width - kGap) / 2.0;
        const std::size_t line = i / 2;
        const double column = static_cast<double>(i % 2);
        const double row = static_cast<double>(line);
        PlaceView(picture, result.points[i],
                  {body.x + column * (each + kGap), body.y + row * (kView + kGap), each, kView});
    }
    picture.Save(files, path);
}

} // namespace cli
