// SPDX-License-Identifier: MIT
#include "apps/cli/live/UtcText.h"

#include "apps/tables/Numbers.h"
#include <algorithm>
#include <chrono>

namespace cli {

namespace {

constexpr double kDay = 86400.0;

bool AreDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return '0' <= c && c <= '9'; });
}

int TwoDigits(std::string_view text)
{
    return 10 * (text[0] - '0') + (text[1] - '0');
}

// 58, 58. or 58.123, two characters at least; 60 is a leap second.
std::optional<double> SecondOf(std::string_view text)
{
    const bool isForm = AreDigits(text.substr(0, 2))
                        && (text.size() == 2 || (text[2] == '.' && AreDigits(text.substr(3))));
    if (!isForm) return std::nullopt;
    const auto value = tables::ParseNumber(text);
    return value && *value < 61.0 ? value : std::nullopt;
}

// hh:mm:ss.s or hhmmss.s
std::optional<double> TimeOfDay(std::string_view text)
{
    const std::size_t gap = text.size() > 2 && text[2] == ':' ? 1 : 0;
    const std::size_t minute = 2 + gap, second = 4 + 2 * gap;
    if (text.size() < second + 2) return std::nullopt;
    if (gap == 1 && text[5] != ':') return std::nullopt;
    if (!AreDigits(text.substr(0, 2)) || !AreDigits(text.substr(minute, 2))) return std::nullopt;
    const int hours = TwoDigits(text.substr(0, 2));
    const int minutes = TwoDigits(text.substr(minute, 2));
    const auto seconds = SecondOf(text.substr(second));
    if (!seconds || hours > 23 || minutes > 59) return std::nullopt;
    return 3600.0 * hours + 60.0 * minutes + *seconds;
}

// YYYY-MM-DD
std::optional<double> DayText(std::string_view text)
{
    const bool isForm = AreDigits(text.substr(0, 4)) && text[4] == '-'
                        && AreDigits(text.substr(5, 2)) && text[7] == '-'
                        && AreDigits(text.substr(8, 2));
    if (!isForm) return std::nullopt;
    const std::chrono::year_month_day date{
        std::chrono::year(100 * TwoDigits(text) + TwoDigits(text.substr(2))),
        std::chrono::month(static_cast<unsigned>(TwoDigits(text.substr(5)))),
        std::chrono::day(static_cast<unsigned>(TwoDigits(text.substr(8))))};
    if (!date.ok()) return std::nullopt;
    return kDay * static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count());
}

} // namespace

std::optional<UtcTime> ParseUtcTime(std::string_view text)
{
    constexpr std::size_t kDate = 10;
    constexpr double kMostOfDay = 200000.0;
    if (text.size() > kDate + 1 && (text[kDate] == 'T' || text[kDate] == ' ')) {
        const auto day = DayText(text.substr(0, kDate));
        std::string_view rest = text.substr(kDate + 1);
        if (rest.ends_with('Z')) rest.remove_suffix(1);
        const auto time = TimeOfDay(rest);
        if (!day || !time) return std::nullopt;
        return UtcTime{*day + *time, true};
    }
    if (text.find(':') != text.npos) {
        const auto time = TimeOfDay(text);
        return time ? std::optional(UtcTime{*time, false}) : std::nullopt;
    }
    const auto seconds = tables::ParseNumber(text);
    if (!seconds || *seconds < 0.0) return std::nullopt;
    return UtcTime{*seconds, *seconds >= kMostOfDay};
}

} // namespace cli
