// SPDX-License-Identifier: MIT
#include "apps/cli/live/MergeLogs.h"

#include "field/nmea/ReceiverSentences.h"
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <system_error>

namespace cli {

namespace {

constexpr double kDay = 86400.0; // s

bool HasChecksum(std::string_view line)
{
    const std::size_t star = line.rfind('*');
    if (star == line.npos || line.size() < star + 3) return false;
    unsigned stated = 0;
    const char* const first = line.data() + star + 1;
    const auto read = std::from_chars(first, first + 2, stated, 16);
    return read.ptr == first + 2 && tiltpole::field::Checksum(line.substr(1, star - 1)) == stated;
}

// The time of day of a sentence that has one.
std::optional<UtcTime> TimeOf(std::string_view line)
{
    const std::size_t comma = line.find(',');
    if (comma != 6 || line.front() != '$' || !HasChecksum(line)) return std::nullopt;
    const std::string_view type = line.substr(3, 3);
    if (type != "GGA" && type != "RMC" && type != "GST" && type != "ZDA") return std::nullopt;
    const std::string_view rest = line.substr(comma + 1);
    const std::string_view time = rest.substr(0, rest.find_first_of(",*"));
    constexpr std::size_t kShortest = 6;
    if (time.size() < kShortest) return std::nullopt;
    return ParseUtcTime(
        fmt::format("{}:{}:{}", time.substr(0, 2), time.substr(2, 2), time.substr(4)));
}

// The date of a sentence that has one.
std::optional<std::chrono::sys_days> DateOf(std::string_view line)
{
    const std::string_view text = line.substr(0, line.find_last_not_of("\r\n") + 1);
    const auto sentence = tiltpole::field::ReadSentence(text);
    if (!sentence) return std::nullopt;
    if (sentence->Type() == "ZDA") {
        const auto zda = ReadZda(*sentence);
        return zda ? zda->date : std::nullopt;
    }
    const auto rmc = sentence->Type() == "RMC" ? ReadRmc(*sentence) : std::nullopt;
    return rmc ? rmc->date : std::nullopt;
}

} // namespace

ReceiverLog::ReceiverLog(const std::string& path) : m_path(path), m_file(path, std::ios::binary)
{
    LookAhead();
    m_seconds = m_first.value_or(0.0);
    Next();
}

bool ReceiverLog::Read(std::string& line)
{
    const bool isRead = m_file.is_open() && std::getline(m_file, line);
    if (!m_file.is_open() || m_file.bad())
        throw tables::InputError(m_path,
                                 "cannot be read: " + std::generic_category().message(errno));
    line += '\n';
    return isRead;
}

// A receiver that sends dates at all sends one a second.
void ReceiverLog::LookAhead()
{
    constexpr std::size_t kMostLines = 2000;
    std::string line;
    while (m_ahead.size() < kMostLines && !m_day && Read(line)) {
        const auto time = TimeOf(line);
        if (time && !m_first) m_first = time->seconds;
        if (time) m_day = DateOf(line);
        // The first time may be of the day before that of the first date.
        if (m_day && *m_first - time->seconds > kDay / 2) *m_day -= std::chrono::days(1);
        m_ahead.push_back(line);
    }
}

std::optional<LogStart> ReceiverLog::Start() const
{
    if (!m_first) return std::nullopt;
    return LogStart{*m_first, m_day};
}

void ReceiverLog::Next()
{
    if (!m_ahead.empty()) {
        m_line = std::move(m_ahead.front());
        m_ahead.pop_front();
    } else {
        m_isAtEnd = !Read(m_line);
    }
    if (const auto time = TimeOf(m_line)) m_seconds = std::max(m_seconds, m_days.Next(*time));
}

PoseLog::PoseLog(const std::string& path, double ahead) : m_log(path, {}), m_ahead(ahead)
{
    for (const char* const name : {"utc", "seconds", "Time"}) {
        const auto column = m_log.Rows().Find(name);
        if (column && !m_column) m_column = column;
    }
    if (!m_column) throw m_log.Rows().HeaderError("there is no column utc, seconds or Time");
    Next();
    // GPS time of the first seconds of a day is of the day before in UTC.
    const double day = std::floor(m_seconds / kDay);
    m_midnight = day * kDay;
    m_start.timeOfDay = m_seconds - m_midnight;
    if (m_hasDate) m_start.day.emplace(std::chrono::days(static_cast<int>(day)));
}

field::PoseSample PoseLog::Sample(field::Instant arrival) const
{
    field::PoseSample sample;
    sample.data = m_log.Pose();
    sample.deviceSeconds = m_seconds;
    sample.arrival = arrival;
    return sample;
}

void PoseLog::Next()
{
    m_isAtEnd = !m_log.Next();
    if (m_isAtEnd) return;
    const std::string_view text = m_log.Rows().Field(*m_column);
    const auto time = ParseUtcTime(text);
    if (!time) throw m_log.Rows().Error(fmt::format("'{:.40}' is not a time in UTC", text));
    constexpr double kYear2000 = 946684800.0; // seconds since 1970
    if (time->hasDate && time->seconds < kYear2000)
        throw m_log.Rows().Error(fmt::format(
            "{:.40} seconds since 1970 are before 2000: is the time in seconds?", text));
    const double seconds = m_days.Next(*time) - m_ahead;
    if (m_isBegun && seconds == m_seconds && ++m_equal > kMostEqual)
        throw m_log.Rows().Error("many rows have the same time: it needs decimals of a second");
    if (m_isBegun && seconds < m_seconds) throw m_log.Rows().Error("the time runs back");
    if (seconds != m_seconds) m_equal = 0;
    m_isBegun = true;
    m_hasDate = time->hasDate;
    m_seconds = seconds;
}

std::optional<int> DaysBetween(const LogStart& receiver, const LogStart& pose)
{
    constexpr double kMostApart = 64800.0; // 18 h
    const double later = receiver.timeOfDay - pose.timeOfDay;
    if (!receiver.day || !pose.day) return later > kMostApart ? -1 : later < -kMostApart ? 1 : 0;
    const auto days = static_cast<int>((*receiver.day - *pose.day).count());
    const bool isTogether = days == 0 || std::fabs(days * kDay + later) <= kMostApart;
    return isTogether ? std::optional(days) : std::nullopt;
}

} // namespace cli
