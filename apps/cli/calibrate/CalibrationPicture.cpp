// SPDX-License-Identifier: MIT
#include "apps/charts/Picture.h"
#include "apps/charts/ThinnedPoints.h"
#include "apps/cli/calibrate/CalibrationOutput.h"
#include "survey/Angle.h"
#include "survey/Correction.h"
#include "survey/Reading.h"
#include "survey/TurnAxis.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace palette = charts::palette;
namespace survey = tiltpole::survey;
using charts::Chart;
using charts::Mark;
using charts::PlotPoint;

namespace {

using quality::CalibrationReport;
using quality::CalibrationRun;
using quality::MissingSector;
using quality::TurnCircle;
using quality::TurnFigures;
using survey::Corrected;
using survey::Magnetometer;
using survey::Reading;
using survey::ReadingOf;
using survey::TurnAxis;

constexpr double kWidth = 900.0; // points
constexpr double kHeight = 940.0;

PlotPoint InPlane(const Reading& r, TurnAxis axis)
{
    return {r.x, axis == TurnAxis::Vertical ? r.z : r.y};
}

bool IsFinite(const PlotPoint& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

template <class Place>
std::vector<PlotPoint> PointsOf(const std::vector<PoseSensorData>& samples, Place place)
{
    charts::ThinnedPoints points;
    for (const PoseSensorData& s : samples) {
        const PlotPoint p = place(s);
        if (IsFinite(p)) points.Add(p);
    }
    return points.Points();
}

// Azimuths count clockwise from straight up, as in the sample filters.
PlotPoint OnCircle(const TurnCircle& c, double azimuth, double radius)
{
    return {c.x + radius * std::sin(survey::Deg2Rad(azimuth)),
            c.second + radius * std::cos(survey::Deg2Rad(azimuth))};
}

// The circle of B's readings: as wide as they are.
TurnCircle CircleOf(const std::vector<PlotPoint>& points)
{
    if (points.empty()) return {};
    const auto [left, right] =
        std::minmax_element(points.begin(), points.end(),
                            [](const PlotPoint& p, const PlotPoint& q) { return p.x < q.x; });
    const auto [low, high] =
        std::minmax_element(points.begin(), points.end(),
                            [](const PlotPoint& p, const PlotPoint& q) { return p.y < q.y; });
    return {(left->x + right->x) / 2.0, (low->y + high->y) / 2.0,
            (right->x - left->x + high->y - low->y) / 4.0};
}

// A sector of A as B's readings have it: B's x and y are reversed, its z is not.
MissingSector AtB(const MissingSector& sector, TurnAxis axis)
{
    if (axis == TurnAxis::Horizontal) return {(sector.from + 180) % 360, (sector.to + 180) % 360};
    return {(720 - sector.to) % 360, (720 - sector.from) % 360};
}

// `of` is the letter of the magnetometer before the names, or empty.
void MarkMissing(Chart& chart, const std::vector<MissingSector>& missing, const TurnCircle& circle,
                 const std::string& of, bool first = true)
{
    if (!(circle.radius > 0.0) || !std::isfinite(circle.radius)) return;
    const double radius = 1.12 * circle.radius;
    for (const MissingSector& sector : missing) {
        const int width = (sector.to - sector.from + 359) % 360 + 1;
        std::vector<PlotPoint> arc = {OnCircle(circle, sector.from, 0.92 * circle.radius)};
        for (int i = 0; i <= width; ++i)
            arc.push_back(OnCircle(circle, sector.from + i, radius));
        arc.push_back(OnCircle(circle, sector.from + width, 0.92 * circle.radius));
        chart.AddLine(first ? "missing sector" : "", arc, {.color = palette::kRed, .width = 3.0});
        chart.AddText(OnCircle(circle, sector.from + width / 2.0, 1.14 * circle.radius),
                      of + sector.Name(), palette::kRed);
        first = false;
    }
}

charts::AxisLabels LabelsOf(TurnAxis axis, const char* unit)
{
    return {fmt::format("x [{}]", unit),
            fmt::format("{} [{}]", axis == TurnAxis::Vertical ? "z" : "y", unit)};
}

struct TurnView
{
    const std::vector<PoseSensorData>& recorded;
    const std::vector<PoseSensorData>& used;
    const TurnFigures& figures;
    TurnAxis axis;
    const char* name;
};

Chart RawChart(const TurnView& turn)
{
    Chart chart(fmt::format("{}, raw", turn.name), LabelsOf(turn.axis, "counts"));
    chart.KeepEqualScale();
    const auto a = [&](const PoseSensorData& s) {
        return InPlane(ReadingOf(s, Magnetometer::A), turn.axis);
    };
    const auto b = [&](const PoseSensorData& s) {
        return InPlane(ReadingOf(s, Magnetometer::B), turn.axis);
    };
    chart.AddPoints("A, all recorded", PointsOf(turn.recorded, a),
                    {.color = palette::kGray.Faint(0.6), .mark = Mark::Ring, .size = 1.5});
    chart.AddPoints("B", PointsOf(turn.used, b), {.color = palette::kOrange});
    chart.AddPoints("A", PointsOf(turn.used, a), {.color = palette::kBlue});
    const TurnCircle& c = turn.figures.circle;
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {.color = palette::kBlack, .mark = Mark::Plus, .size = 5.0});
    // Readings that are no turn have a circle that is far wider than they are, and hides them.
    const double widest = 3.0 * CircleOf(PointsOf(turn.recorded, a)).radius;
    if (c.radius > 0.0 && c.radius < widest) {
        chart.AddPoints("center of A",
                        {
                            {c.x, c.second}
        },
                        {.color = palette::kBlue, .mark = Mark::Cross, .size = 4.0});
        MarkMissing(chart, turn.figures.missing, c, "A ");
        std::vector<MissingSector> missingAtB;
        for (const MissingSector& sector : turn.figures.missing)
            missingAtB.push_back(AtB(sector, turn.axis));
        MarkMissing(chart, missingAtB, CircleOf(PointsOf(turn.used, b)), "B ", false);
    }
    return chart;
}

// The signs of B's x and y are reversed, so that a good calibration puts B on top of A.
Chart CorrectedChart(const TurnView& turn, const quality::Calibration& calibration)
{
    Chart chart(fmt::format("{}, corrected", turn.name), LabelsOf(turn.axis, "counts"));
    chart.KeepEqualScale();
    const auto a = [&](const PoseSensorData& s) {
        return InPlane(Corrected(calibration.correctionA, ReadingOf(s, Magnetometer::A)),
                       turn.axis);
    };
    const auto b = [&](const PoseSensorData& s) {
        const Reading r = Corrected(calibration.correctionB, ReadingOf(s, Magnetometer::B));
        return InPlane({-r.x, -r.y, r.z}, turn.axis);
    };
    const std::vector<PlotPoint> points = PointsOf(turn.used, a);
    double radius = 0.0;
    for (const PlotPoint& p : points)
        radius += std::hypot(p.x, p.y) / static_cast<double>(points.size());
    chart.AddPoints("B, x and y reversed", PointsOf(turn.used, b), {.color = palette::kOrange});
    chart.AddPoints("A", points, {.color = palette::kBlue});
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {.color = palette::kBlack, .mark = Mark::Plus, .size = 5.0});
    if (radius > 0.0) {
        chart.AddCircle("circle about zero", {0.0, 0.0}, radius,
                        {.color = palette::kGray, .dashed = true});
        MarkMissing(chart, turn.figures.missing, {0.0, 0.0, radius}, "");
    }
    return chart;
}

std::string Subtitle(const CalibrationReport& report)
{
    return fmt::format("{}. {}", Headline(report), Explain(report.reason));
}

} // namespace

void SaveCalibrationPicture(tables::OutputFiles& files, const std::string& path,
                            const CalibrationReport& report, const CalibrationRun& run)
{
    const TurnView turns[] = {
        {run.recorded.horizontal, run.used.horizontal, report.horizontal, TurnAxis::Horizontal,
         "Horizontal turn"},
        {run.recorded.vertical,   run.used.vertical,   report.vertical,   TurnAxis::Vertical,
         "Vertical turn"  },
    };
    charts::Picture picture("Calibration of the magnetometers", Subtitle(report), kWidth, kHeight);
    const charts::Frame body = picture.Body();
    // A refused calibration corrects nothing that is worth a look.
    const bool corrected = report.verdict != quality::Verdict::Refused && run.solverAnswer == 1;
    const double width = corrected ? body.width / 2.0 : body.width;
    const double height = body.height / 2.0;
    constexpr double kGap = 12.0;
    for (int row = 0; row < 2; ++row) {
        const TurnView& turn = turns[row];
        picture.Place(RawChart(turn), {body.x, body.y + row * height, width, height - kGap});
        if (!corrected) continue;
        picture.Place(CorrectedChart(turn, run.calibration),
                      {body.x + width, body.y + row * height, width, height - kGap});
    }
    picture.Save(files, path);
}

} // namespace cli
