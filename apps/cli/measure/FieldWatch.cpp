// SPDX-License-Identifier: MIT
#include "apps/cli/measure/FieldWatch.h"

#include "apps/cli/SummaryLine.h"
#include "apps/tables/Numbers.h"
#include "survey/Correction.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace cli {

namespace survey = tiltpole::survey;

namespace {

constexpr std::size_t kMostListed = 10;
constexpr double kSecondsOfRow = 0.1; // where a log has no time

std::optional<std::size_t> ColumnNamed(const tables::SampleLog& log, std::string_view name)
{
    const auto& carried = log.CarriedColumns();
    const auto found = std::ranges::find_if(
        carried, [&](std::size_t column) { return log.Rows().Columns()[column] == name; });
    if (found == carried.end()) return std::nullopt;
    return *found;
}

field::SensorVector VectorOf(const survey::Reading& reading)
{
    return {reading.x, reading.y, reading.z};
}

} // namespace

FieldWatch::FieldWatch(const FieldWatchSetup& setup, const tables::SampleLog& log)
    : m_setup(setup), m_log(log), m_secondsColumn(ColumnNamed(log, "seconds")),
      m_hasTime(ColumnNamed(log, "Time").has_value()), m_monitor(m_setup.expected)
{}

field::MonitorVerdict FieldWatch::Add(const PoseSensorData& sample)
{
    field::MonitorSample now;
    now.seconds = Seconds(sample);
    now.tilt.pitch = sample.dPitch;
    now.tilt.roll = sample.dRoll;
    now.tilt.meaning = m_setup.meaning;
    now.tilt.sensorType = m_setup.sensorType;
    now.a = VectorOf(Corrected(m_setup.a, ReadingOf(sample, survey::Magnetometer::A)));
    const auto b = Corrected(m_setup.b, ReadingOf(sample, survey::Magnetometer::B));
    now.b = field::SensorVector{-b.x, -b.y, b.z}; // x and y of B are opposed
    const field::MonitorVerdict verdict = m_monitor.Add(now);
    ++m_samples;
    m_disturbed += verdict.disturbed ? 1 : 0;
    m_strength.Add(verdict.shape.strength);
    if (std::isfinite(verdict.shape.dip)) m_dip.Add(verdict.shape.dip);
    return verdict;
}

// Fractions of a second come from `seconds` only; rows without any time count as a tenth each.
double FieldWatch::Seconds(const PoseSensorData& sample)
{
    const double ofDay = sample.nHour * 3600.0 + sample.nMinute * 60.0 + sample.nSecond;
    if (m_secondsColumn) {
        const auto seconds = tables::ParseNumber(m_log.Rows().Field(*m_secondsColumn));
        if (seconds && m_samples == 0) m_dayOffset = ofDay - *seconds;
        if (seconds) return *seconds;
    }
    if (m_hasTime) return ofDay;
    return kSecondsOfRow * static_cast<double>(m_samples);
}

std::string FieldWatch::TimeText(double seconds) const
{
    if (m_secondsColumn && !m_hasTime) return fmt::format("{:.1f} s", seconds);
    if (!m_hasTime) return fmt::format("sample {:.0f}", seconds / kSecondsOfRow + 1.0);
    const auto whole = static_cast<long>(seconds + m_dayOffset);
    return fmt::format("{:02}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string FieldWatch::Text()
{
    const std::string dip =
        m_dip.Count() > 0 ? fmt::format("dip {:.1f} degrees", m_dip.At(0.5)) : "dip not known";
    std::string text =
        Line("field",
             fmt::format("{:.0f} counts, {}, median; expected {:.0f}, {:.1f}", m_strength.At(0.5),
                         dip, m_setup.expected.strength, m_setup.expected.dip));
    text += Line("disturbed field", fmt::format("{} samples ({:.1f} %)", m_disturbed,
                                                100.0 * static_cast<double>(m_disturbed)
                                                    / static_cast<double>(m_samples)));
    const auto& spans = m_monitor.Spans();
    for (std::size_t i = 0; i < std::min(spans.size(), kMostListed); ++i)
        text += Line("", fmt::format("{} to {}, {}", TimeText(spans[i].from), TimeText(spans[i].to),
                                     TextOf(spans[i])));
    if (spans.size() > kMostListed)
        text += Line("", fmt::format("and {} more", spans.size() - kMostListed));
    return text;
}

nlohmann::ordered_json FieldWatch::Json()
{
    nlohmann::ordered_json spans = nlohmann::ordered_json::array();
    for (const field::DisturbedSpan& span : m_monitor.Spans())
        spans.push_back({
            {"from",   TimeText(span.from)},
            {"to",     TimeText(span.to)  },
            {"reason", TextOf(span)       }
        });
    nlohmann::ordered_json json;
    json["expected_strength"] = m_setup.expected.strength;
    json["expected_dip_deg"] = m_setup.expected.dip;
    json["disturbed_samples"] = m_disturbed;
    json["spans"] = spans;
    return json;
}

} // namespace cli
