// SPDX-License-Identifier: MIT
#include "apps/cli/CalibrationOutput.h"
#include "apps/cli/Plot.h"
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace {

using quality::CalibrationReport;
using quality::CalibrationRun;
using quality::MissingSector;
using quality::TurnCircle;
using quality::TurnFigures;

constexpr double kPerDegree = 0.017453292519943295769;
constexpr double kWidth = 900.0; // points
constexpr double kHeight = 940.0;

struct Reading
{
    double x, y, z; // counts
};

Reading ReadingA(const PoseSensorData& s)
{
    return {s.dMag_x, s.dMag_y, s.dMag_z};
}

Reading ReadingB(const PoseSensorData& s)
{
    return {s.dMag_x_2, s.dMag_y_2, s.dMag_z_2};
}

Reading Corrected(const Reading& r, const Incline_MagneticCorrectParameter& v)
{
    return {r.x - v.x0, v.a * r.x + v.b * r.y - v.y0, v.c * r.x + v.d * r.y + v.e * r.z - v.z0};
}

PlotPoint InPlane(const Reading& r, bool vertical)
{
    return {r.x, vertical ? r.z : r.y};
}

bool IsFinite(const PlotPoint& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

template <class Place>
std::vector<PlotPoint> PointsOf(const std::vector<PoseSensorData>& samples, Place place)
{
    ThinnedPoints points;
    for (const PoseSensorData& s : samples) {
        const PlotPoint p = place(s);
        if (IsFinite(p)) points.Add(p);
    }
    return points.Points();
}

// Azimuths count from upwards clockwise, as the sample filters count them.
PlotPoint OnCircle(const TurnCircle& c, double azimuth, double radius)
{
    return {c.x + radius * std::sin(azimuth * kPerDegree),
            c.second + radius * std::cos(azimuth * kPerDegree)};
}

void MarkMissing(Chart& chart, const TurnFigures& figures, const TurnCircle& circle)
{
    const double radius = 1.12 * circle.radius;
    bool first = true;
    for (const MissingSector& sector : figures.missing) {
        const int width = (sector.to - sector.from + 359) % 360 + 1;
        std::vector<PlotPoint> arc = {OnCircle(circle, sector.from, 0.92 * circle.radius)};
        for (int i = 0; i <= width; ++i)
            arc.push_back(OnCircle(circle, sector.from + i, radius));
        arc.push_back(OnCircle(circle, sector.from + width, 0.92 * circle.radius));
        chart.AddLine(first ? "missing sector" : "", arc, {.colour = palette::kRed, .width = 3.0});
        chart.AddText(OnCircle(circle, sector.from + width / 2.0, 1.14 * circle.radius),
                      sector.Name(), palette::kRed);
        first = false;
    }
}

AxisLabels LabelsOf(bool vertical, const char* unit)
{
    return {fmt::format("x [{}]", unit), fmt::format("{} [{}]", vertical ? "z" : "y", unit)};
}

struct TurnView
{
    const std::vector<PoseSensorData>& recorded;
    const std::vector<PoseSensorData>& used;
    const TurnFigures& figures;
    bool vertical;
    const char* name;
};

Chart RawChart(const TurnView& turn)
{
    Chart chart(fmt::format("{}, raw", turn.name), LabelsOf(turn.vertical, "counts"));
    chart.KeepEqualScale();
    const auto a = [&](const PoseSensorData& s) { return InPlane(ReadingA(s), turn.vertical); };
    const auto b = [&](const PoseSensorData& s) { return InPlane(ReadingB(s), turn.vertical); };
    chart.AddPoints("A, all recorded", PointsOf(turn.recorded, a),
                    {.colour = palette::kGrey.Faint(0.6), .mark = Mark::Ring, .size = 1.5});
    chart.AddPoints("B", PointsOf(turn.used, b), {.colour = palette::kOrange});
    chart.AddPoints("A", PointsOf(turn.used, a), {.colour = palette::kBlue});
    const TurnCircle& c = turn.figures.circle;
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {.colour = palette::kBlack, .mark = Mark::Plus, .size = 5.0});
    if (c.radius > 0.0 && std::isfinite(c.radius)) {
        chart.AddPoints("centre of A",
                        {
                            {c.x, c.second}
        },
                        {.colour = palette::kBlue, .mark = Mark::Cross, .size = 4.0});
        MarkMissing(chart, turn.figures, c);
    }
    return chart;
}

// B's x and y are put into the sense of A, so that both should lie on one another.
Chart CorrectedChart(const TurnView& turn, const quality::Calibration& calibration)
{
    Chart chart(fmt::format("{}, corrected", turn.name), LabelsOf(turn.vertical, "counts"));
    chart.KeepEqualScale();
    const auto a = [&](const PoseSensorData& s) {
        return InPlane(Corrected(ReadingA(s), calibration.correctionA), turn.vertical);
    };
    const auto b = [&](const PoseSensorData& s) {
        const Reading r = Corrected(ReadingB(s), calibration.correctionB);
        return InPlane({-r.x, -r.y, r.z}, turn.vertical);
    };
    const std::vector<PlotPoint> points = PointsOf(turn.used, a);
    double radius = 0.0;
    for (const PlotPoint& p : points)
        radius += std::hypot(p.x, p.y) / static_cast<double>(points.size());
    chart.AddPoints("B, x and y turned round", PointsOf(turn.used, b),
                    {.colour = palette::kOrange});
    chart.AddPoints("A", points, {.colour = palette::kBlue});
    chart.AddPoints("",
                    {
                        {0.0, 0.0}
    },
                    {.colour = palette::kBlack, .mark = Mark::Plus, .size = 5.0});
    if (radius > 0.0) {
        chart.AddCircle("circle about zero", {0.0, 0.0}, radius,
                        {.colour = palette::kGrey, .dashed = true});
        MarkMissing(chart, turn.figures, {0.0, 0.0, radius});
    }
    return chart;
}

std::string Subtitle(const CalibrationReport& report)
{
    std::string text = fmt::format("{}: {}", Name(report.verdict), Explain(report.reason));
    if (!report.weak && report.a.heading)
        text += fmt::format(" Heading error {:.2f} degrees RMS.", report.headingError);
    return text;
}

} // namespace

void SaveCalibrationPicture(const std::string& path, const CalibrationReport& report,
                            const CalibrationRun& run)
{
    const TurnView turns[] = {
        {run.recorded.horizontal, run.used.horizontal, report.horizontal, false, "Horizontal turn"},
        {run.recorded.vertical,   run.used.vertical,   report.vertical,   true,  "Vertical turn"  },
    };
    Picture picture("Calibration of the magnetometers", Subtitle(report), kWidth, kHeight);
    const Frame body = picture.Body();
    const double width = body.width / 2.0;
    const double height = body.height / 2.0;
    constexpr double kGap = 12.0;
    for (int row = 0; row < 2; ++row) {
        const TurnView& turn = turns[row];
        picture.Place(RawChart(turn), {body.x, body.y + row * height, width, height - kGap});
        picture.Place(CorrectedChart(turn, run.calibration),
                      {body.x + width, body.y + row * height, width, height - kGap});
    }
    picture.Save(path);
}

} // namespace cli
