// SPDX-License-Identifier: MIT
#include "apps/cli/SummaryLine.h"
#include "apps/cli/occupy/OccupyReport.h"
#include "apps/cli/occupy/TrueTips.h"
#include "field/occupation/AdviceName.h"
#include <algorithm>
#include <cmath>
#include <fmt/ranges.h>

namespace cli {

namespace {

constexpr double kMillimeters = 1000.0;

constexpr const char* kLegend =
    "major, minor, at: semi-axes of the 95 % ellipse in plan, azimuth of the major one. +/- h: "
    "half\n"
    "of the 95 % interval of the height.\n"
    "doubtful: less than half of their weight counted. late: not later than the one before.\n"
    "unused: outside of the samples' time, thinned, or nothing was computed. heading: of the\n"
    "pole at the end, by the track. magnetometer: its heading minus that. delay: of the antenna\n"
    "behind the sensors. own motion: the sensor's height above the tip for which its\n"
    "accelerations fit a planted pole and were taken off.\n";

// With a blank before it, however wide it is.
std::string NumberOrDash(bool known, double value, int width, int decimals)
{
    if (!known || !std::isfinite(value)) return fmt::format(" {:>{}}", "-", width - 1);
    return fmt::format(" {:{}.{}f}", value, width - 1, decimals);
}

std::size_t WidthOfNames(const OccupyResult& result)
{
    std::size_t width = std::string_view("point").size();
    for (const OccupiedPoint& point : result.points)
        width = std::max(width, point.name.size());
    return width;
}

std::string CountText(const OccupyResult& result)
{
    const auto count = [&](field::OccupationAdvice advice) {
        return std::count_if(result.points.begin(), result.points.end(),
                             [&](const OccupiedPoint& p) { return p.estimate.advice == advice; });
    };
    return fmt::format("{}: {} store, {} move, {} refuse", result.points.size(),
                       count(field::OccupationAdvice::Store), count(field::OccupationAdvice::Move),
                       count(field::OccupationAdvice::Refuse));
}

std::string FieldText(const OccupySetup& setup)
{
    if (!setup.field) return {};
    return Line("field", fmt::format("watched: {:.0f} counts, dip {:.1f} degrees expected",
                                     setup.field->strength, setup.field->dip));
}

std::string MethodText(const OccupySetup& setup)
{
    std::string config = setup.config.empty() ? "identity" : setup.config;
    if (!setup.calibration.empty()) config = "as calibrated";
    const std::string magnetometer =
        setup.occupation.useMagnetometer
            ? fmt::format("{}, heading bias {:.4f} degrees", config, setup.occupation.magneticBias)
            : "not used";
    return Line("method", setup.gyroFree ? "antenna track, pitch and roll"
                                         : "antenna track, gyros and accelerometers")
           + Line("magnetometer", magnetometer) + FieldText(setup);
}

std::string CalibrationText(const OccupySetup& setup)
{
    if (setup.calibration.empty()) return {};
    const SpotSidecar& spot = setup.spot;
    const std::string age = AgeOf(spot);
    std::string text =
        Line("calibration", fmt::format("{}, made {}{}", setup.calibration, spot.madeUtc,
                                        age.empty() ? "" : fmt::format(" ({} ago)", age)));
    const xyhCoordinate& place = spot.result.tip;
    text += Line("", fmt::format("at N {:.3f}  E {:.3f}  h {:.3f} m", place.x, place.y, place.h));
    if (setup.occupation.delay != 0.0)
        text += Line("", fmt::format("antenna {:.1f} ms behind the sensors",
                                     -kMillimeters * setup.occupation.delay));
    return text
           + Line("", fmt::format("axis {:.3f} to x, {:.3f} to y degrees", spot.result.axisX,
                                  spot.result.axisY));
}

std::string HeaderText(const OccupyResult& result)
{
    const field::OccupationSetup& setup = result.setup.occupation;
    std::string text = Line("log", result.setup.log);
    if (!result.columns.empty()) text += Line("columns", result.columns);
    text += Line("points", CountText(result));
    if (result.toldApart) text += Line("", "told apart by motion: the log does not name them");
    if (result.otherRows > 0)
        text += Line("rows of no point", fmt::format("{}, {} of them with an antenna position",
                                                     result.otherRows, result.otherEpochs));
    text +=
        Line("pole", fmt::format("{:.3f} m, known to {:.1f} mm; sensor type {}", setup.poleLength,
                                 kMillimeters * setup.poleSigma, setup.sensorType));
    text += Line("antenna",
                 fmt::format("{:.1f} mm in plan, {:.1f} mm in height",
                             kMillimeters * setup.planSigma, kMillimeters * setup.heightSigma));
    if (!result.setup.gyroFree)
        text += Line("sensor", fmt::format("parallel to the pole to {:.2f} degrees, accelerometers "
                                           "good to {:.2f} degrees",
                                           setup.axisSigma, setup.accelerometerSigma));
    return text + CalibrationText(result.setup) + MethodText(result.setup);
}

std::string TipRow(const OccupiedPoint& point, std::size_t width)
{
    const field::OccupationEstimate& e = point.estimate;
    const bool known = point.IsUsable();
    return fmt::format("{:<{}}  {:<6}{}{}{}{}{}{}{}  {}\n", point.name, width,
                       tiltpole::field::AdviceName(e.advice), NumberOrDash(known, e.tip.x, 15, 4),
                       NumberOrDash(known, e.tip.y, 14, 4), NumberOrDash(known, e.tip.h, 11, 4),
                       NumberOrDash(known, kMillimeters * e.ellipseMajor, 7, 1),
                       NumberOrDash(known, kMillimeters * e.ellipseMinor, 7, 1),
                       NumberOrDash(known, e.ellipseAzimuth, 5, 0),
                       NumberOrDash(known, kMillimeters * e.heightHalfInterval, 7, 1),
                       point.Reason());
}

std::string TipRows(const OccupyResult& result)
{
    const std::size_t width = WidthOfNames(result);
    std::string text = "\n";
    text +=
        fmt::format("{:<{}}  {:<6}{:>15}{:>14}{:>11}{:>7}{:>7}{:>5}{:>7}  {}\n", "point", width,
                    "advice", "tip N", "tip E", "tip h", "major", "minor", "at", "+/- h", "reason");
    text += fmt::format("{:<{}}  {:<6}{:>15}{:>14}{:>11}{:>7}{:>7}{:>5}{:>7}\n", "", width, "", "m",
                        "m", "m", "mm", "mm", "deg", "mm");
    for (const OccupiedPoint& point : result.points)
        text += TipRow(point, width);
    return text;
}

std::string BasisRow(const OccupiedPoint& point, const OccupySetup& setup, std::size_t width)
{
    const field::OccupationEstimate& e = point.estimate;
    const auto delay = DelayOf(point, setup);
    const bool heading = e.hasTip && !setup.gyroFree;
    return fmt::format("{:<{}} {:>7} {:>5} {:>9} {:>5} {:>7} {:>8} {:>5} {:>5}{}{}{}{}{}\n",
                       point.name, width, point.epochs, e.epochs, e.doubtful, point.lateEpochs,
                       point.UnusedEpochs(), point.samples, point.lateSamples, e.gaps,
                       NumberOrDash(heading, e.heading, 9, 1),
                       NumberOrDash(e.hasTip, e.headingSigma, 6, 1),
                       NumberOrDash(e.hasTip, e.magneticDifference, 14, 1),
                       NumberOrDash(delay.has_value(), kMillimeters * delay.value_or(0.0), 7, 1),
                       NumberOrDash(e.sensorHeight > 0.0, e.sensorHeight, 12, 2));
}

// "point 3: 2 late, 1 outside of the samples' time" for each point that lacks epochs.
std::string LeftOutRows(const OccupyResult& result)
{
    std::string text;
    for (const OccupiedPoint& point : result.points) {
        std::vector<std::string> parts;
        const auto add = [&](std::uint64_t count, const char* why) {
            if (count > 0) parts.push_back(fmt::format("{} {}", count, why));
        };
        const std::uint64_t unused = point.UnusedEpochs();
        const std::uint64_t outside = std::min(unused, point.outsideEpochs);
        add(point.repeatedEpochs, "held over from the row before");
        add(point.lateEpochs, "not later than the one before");
        add(outside, "before the first sample or after the last");
        const std::uint64_t disturbed =
            std::min(unused - outside, point.estimate.epochs > 0 ? point.disturbedEpochs : 0);
        add(disturbed, "in a disturbed field");
        add(unused - outside - disturbed, point.estimate.epochs > 0
                                              ? "thinned in a long occupation"
                                              : "of an occupation without a tip");
        if (!parts.empty())
            text += Line(text.empty() ? "epochs left out" : "",
                         fmt::format("point {}: {}", point.name, fmt::join(parts, ", ")));
    }
    return text;
}

// "point 3: 41 % of the time has no vote; 1.2 to 3.4 s after its start, 28 % too strong"
std::string DisturbedRows(const OccupyResult& result)
{
    std::string text;
    for (const OccupiedPoint& point : result.points) {
        if (point.field.disturbances.empty()) continue;
        std::vector<std::string> spans;
        for (const field::DisturbedSpan& span : point.field.disturbances)
            spans.push_back(fmt::format("{:.1f} to {:.1f} s after its start, {}",
                                        span.from - point.from, span.to - point.from,
                                        TextOf(span)));
        text += Line(text.empty() ? "disturbed field" : "",
                     fmt::format("point {}: {:.0f} % of the time without a vote; {}", point.name,
                                 100.0 * point.estimate.disturbedPart, fmt::join(spans, "; ")));
    }
    return text;
}

std::string BasisRows(const OccupyResult& result)
{
    const std::size_t width = WidthOfNames(result);
    std::string text =
        fmt::format("\n{:<{}}{:>8}{:>6}{:>10}{:>6}{:>8}{:>9}{:>6}{:>6}{:>9}{:>6}"
                    "{:>14}{:>7}{:>12}\n",
                    "point", width, "epochs", "used", "doubtful", "late", "unused", "samples",
                    "late", "gaps", "heading", "+/-", "magnetometer", "delay", "own motion");
    text += fmt::format("{:<{}}{:>8}{:>6}{:>10}{:>6}{:>8}{:>9}{:>6}{:>6}{:>9}{:>6}{:>14}{:>7}{:>12}"
                        "\n",
                        "", width, "", "", "", "", "", "", "", "", "deg", "deg", "deg", "ms", "m");
    for (const OccupiedPoint& point : result.points)
        text += BasisRow(point, result.setup, width);
    return text + kLegend + LeftOutRows(result) + DisturbedRows(result);
}

std::string ErrorRow(std::string_view label, tables::Percentiles& errors)
{
    return fmt::format("  {:<22}{:8}{:9.1f}{:9.1f}{:9.1f}{:9.1f}\n", label, errors.Count(),
                       kMillimeters * errors.At(0.5), kMillimeters * errors.At(0.9),
                       kMillimeters * errors.At(0.99), kMillimeters * errors.Max());
}

std::string ErrorRows(const OccupyResult& result)
{
    ErrorSummary all = SummaryOf(result, false);
    ErrorSummary stored = SummaryOf(result, true);
    ErrorSummary samples = SummaryOfSamples(result);
    ErrorSummary means = SummaryOfMeans(result);
    std::string text = fmt::format("\n{:<24}{:>8}{:>9}{:>9}{:>9}{:>9}\n", "horizontal error [mm]",
                                   "tips", "p50", "p90", "p99", "max");
    const auto add = [&](tables::Percentiles ErrorSummary::*errors) {
        if (samples.Count() > 0) text += ErrorRow("single samples", samples.*errors);
        if (means.Count() > 0) text += ErrorRow("mean of a point", means.*errors);
        text += ErrorRow("occupation", all.*errors);
        text += ErrorRow("occupation, stored", stored.*errors);
    };
    add(&ErrorSummary::plan);
    text += "error of height [mm]\n";
    add(&ErrorSummary::height);
    const auto share = [](std::uint64_t part, const ErrorSummary& of) {
        return fmt::format("{} of {}", part, of.Count());
    };
    text += Line("95 % ellipse holds",
                 share(all.inEllipse, all) + "; stored: " + share(stored.inEllipse, stored));
    text += Line("95 % of height holds",
                 share(all.inInterval, all) + "; stored: " + share(stored.inInterval, stored));
    return text;
}

struct Refusal
{
    std::string reason;
    std::string first; // point
    std::size_t points;
};

} // namespace

std::string OccupyText(const OccupyResult& result)
{
    std::string text = HeaderText(result) + TipRows(result) + BasisRows(result);
    if (!result.setup.truth.empty()) text += ErrorRows(result);
    return text;
}

std::string RefusalText(const OccupyResult& result)
{
    std::vector<Refusal> refusals;
    for (const OccupiedPoint& point : result.points) {
        if (!point.IsRefused()) continue;
        const std::string reason = point.Reason();
        const auto known = std::find_if(refusals.begin(), refusals.end(),
                                        [&](const Refusal& r) { return r.reason == reason; });
        if (known == refusals.end()) {
            refusals.push_back({reason, point.name, 1});
        } else {
            ++known->points;
        }
    }
    std::string text;
    for (const auto& [reason, first, points] : refusals) {
        const std::string more = points > 1 ? fmt::format(" and {} more", points - 1) : "";
        text += fmt::format("{}: point {}{}: {}\n", result.setup.log, first, more, reason);
    }
    return text;
}

} // namespace cli
