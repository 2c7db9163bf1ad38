// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/OccupyReport.h"
#include "apps/tables/CsvField.h"
#include "field/occupation/AdviceName.h"
#include <cmath>
#include <iterator>

namespace cli {

namespace {

constexpr std::string_view kColumns =
    "point,advice,tip_N_m,tip_E_m,tip_h_m,ellipse_major_m,ellipse_minor_m,ellipse_azimuth_deg,"
    "height_95_m,heading_deg,heading_sd_deg,lean_deg,magnetometer_minus_track_deg,delay_s,epochs,"
    "epochs_used,epochs_doubtful,epochs_late,epochs_unused,samples,samples_late,reason";
constexpr std::string_view kErrorColumns = ",error_N_m,error_E_m,error_plan_m,error_h_m";

// What is not known stays blank.
void AddNumber(fmt::memory_buffer& row, bool known, double value)
{
    row.push_back(',');
    if (known && std::isfinite(value)) fmt::format_to(std::back_inserter(row), "{:.6f}", value);
}

void AddCount(fmt::memory_buffer& row, std::uint64_t count)
{
    fmt::format_to(std::back_inserter(row), ",{}", count);
}

void AddFigures(fmt::memory_buffer& row, const OccupiedPoint& point, const OccupySetup& setup)
{
    const field::OccupationEstimate& e = point.estimate;
    const double figures[] = {e.tip.x,
                              e.tip.y,
                              e.tip.h,
                              e.ellipseMajor,
                              e.ellipseMinor,
                              e.ellipseAzimuth,
                              e.heightHalfInterval};
    for (const double figure : figures)
        AddNumber(row, point.IsUsable(), figure);
    AddNumber(row, e.hasTip && !setup.gyroFree, e.heading);
    AddNumber(row, e.hasTip, e.headingSigma);
    AddNumber(row, e.hasTip, e.lean);
    AddNumber(row, e.hasTip, e.magneticDifference);
    const auto delay = DelayOf(point, setup);
    AddNumber(row, delay.has_value(), delay.value_or(0.0));
}

void AddRow(fmt::memory_buffer& row, const OccupiedPoint& point, const OccupySetup& setup)
{
    const field::OccupationEstimate& e = point.estimate;
    tables::AppendField(row, point.name);
    row.push_back(',');
    tables::AppendField(row, tiltpole::field::AdviceName(e.advice));
    AddFigures(row, point, setup);
    AddCount(row, point.epochs);
    AddCount(row, static_cast<std::uint64_t>(e.epochs));
    AddCount(row, static_cast<std::uint64_t>(e.doubtful));
    AddCount(row, point.lateEpochs);
    AddCount(row, point.UnusedEpochs());
    AddCount(row, point.samples);
    AddCount(row, point.lateSamples);
    row.push_back(',');
    tables::AppendField(row, point.Reason());
    if (!setup.truth.empty()) {
        const TipError error = point.error.value_or(TipError{});
        const bool known = point.error.has_value();
        AddNumber(row, known, error.north);
        AddNumber(row, known, error.east);
        AddNumber(row, known, std::hypot(error.north, error.east));
        AddNumber(row, known, error.height);
    }
    row.push_back('\n');
}

} // namespace

std::string OccupyTable(const OccupyResult& result)
{
    std::string text(kColumns);
    if (!result.setup.truth.empty()) text += kErrorColumns;
    text += '\n';
    fmt::memory_buffer row;
    for (const OccupiedPoint& point : result.points) {
        row.clear();
        AddRow(row, point, result.setup);
        text.append(row.data(), row.size());
    }
    return text;
}

} // namespace cli
