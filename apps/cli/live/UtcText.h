// SPDX-License-Identifier: MIT
//
// Times of day in logs.
#pragma once

#include <optional>
#include <string_view>

namespace cli {

/// A time of a log: seconds since midnight UTC, or since 1970 where the log has dates.
struct UtcTime
{
    double seconds = 0.0;
    bool hasDate = false;
};

/// hh:mm:ss.sss, YYYY-MM-DDThh:mm:ss.sssZ (a space for the T, no Z), or a number of seconds:
/// below 200000 since midnight, else since 1970.
std::optional<UtcTime> ParseUtcTime(std::string_view text);

/// Seconds of days that are added whenever a time of day steps back by more than 12 h.
class DayCounter
{
public:
    /// Seconds since the first midnight, or since 1970.
    double Next(const UtcTime& time)
    {
        constexpr double kDay = 86400.0;
        if (time.hasDate) return time.seconds;
        if (m_last - time.seconds > kDay / 2) m_days += kDay;
        m_last = time.seconds;
        return m_days + time.seconds;
    }

private:
    double m_last = 0.0;
    double m_days = 0.0;
};

} // namespace cli
