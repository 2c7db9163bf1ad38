// SPDX-License-Identifier: MIT
#include "apps/cli/measure/TipTable.h"

#include "apps/tables/CsvField.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace cli {

namespace {

constexpr std::array<std::string_view, 12> kColumns{
    "antenna_N_m",   "antenna_E_m",   "antenna_h_m",   "tip_N_m",  "tip_E_m", "tip_h_m",
    "heading_A_deg", "heading_B_deg", "heading_Y_deg", "tilt_deg", "still",   "interference"};
constexpr std::array<std::string_view, 4> kErrorColumns{"error_N_m", "error_E_m", "error_plan_m",
                                                        "error_h_m"};

constexpr std::array<std::string_view, 3> kFieldColumns{"field_strength", "field_dip_deg",
                                                        "field_disturbed"};

// A carried column keeps its name unless a column of the table has the same name.
std::string CarriedName(const std::string& name)
{
    const bool taken =
        std::find(kColumns.begin(), kColumns.end(), name) != kColumns.end()
        || std::find(kErrorColumns.begin(), kErrorColumns.end(), name) != kErrorColumns.end()
        || std::find(kFieldColumns.begin(), kFieldColumns.end(), name) != kFieldColumns.end();
    return taken ? "log_" + name : name;
}

std::string_view Text(const fmt::memory_buffer& buffer)
{
    return {buffer.data(), buffer.size()};
}

} // namespace

double PlanError(const xyhCoordinate& tip, const xyhCoordinate& truth)
{
    return std::hypot(tip.x - truth.x, tip.y - truth.y);
}

TipTable::TipTable(tables::Output& output, const tables::SampleLog& log,
                   std::optional<xyhCoordinate> truth, bool watched)
    : m_output(output), m_log(log), m_truth(truth)
{
    for (const std::size_t column : log.CarriedColumns()) {
        tables::AppendField(m_row, CarriedName(log.Rows().Columns()[column]));
        m_row.push_back(',');
    }
    fmt::format_to(std::back_inserter(m_row), "{}", fmt::join(kColumns, ","));
    if (watched) fmt::format_to(std::back_inserter(m_row), ",{}", fmt::join(kFieldColumns, ","));
    if (truth) fmt::format_to(std::back_inserter(m_row), ",{}", fmt::join(kErrorColumns, ","));
    m_row.push_back('\n');
    m_output.Write(Text(m_row));
}

void TipTable::Add(const Measurement& m)
{
    m_row.clear();
    for (const std::size_t column : m_log.CarriedColumns()) {
        tables::AppendField(m_row, m_log.Rows().Field(column));
        m_row.push_back(',');
    }
    const auto out = std::back_inserter(m_row);
    fmt::format_to(out, "{:.6f},{:.6f},{:.6f},{:.6f},{:.6f},{:.6f},", m.antenna.x, m.antenna.y,
                   m.antenna.h, m.tip.x, m.tip.y, m.tip.h);
    fmt::format_to(out, "{:.6f},{:.6f},{:.6f},{:.6f},{:d},{:d}", m.pose.dYaw, m.pose.dYaw_2,
                   m.pose.dYaw_Y, m.tilt, m.still, m.interference);
    if (m.field) {
        fmt::format_to(out, ",{:.6f},", m.field->shape.strength);
        if (std::isfinite(m.field->shape.dip)) fmt::format_to(out, "{:.6f}", m.field->shape.dip);
        fmt::format_to(out, ",{:d}", m.field->disturbed);
    }
    if (m_truth) {
        fmt::format_to(out, ",{:.6f},{:.6f},{:.6f},{:.6f}", m.tip.x - m_truth->x,
                       m.tip.y - m_truth->y, PlanError(m.tip, *m_truth), m.tip.h - m_truth->h);
    }
    m_row.push_back('\n');
    m_output.Write(Text(m_row));
}

} // namespace cli
