// SPDX-License-Identifier: MIT
#include "field/job/JobTime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace field {

namespace {

using std::chrono::milliseconds;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr std::string_view kForm = "0000-00-00T00:00:00"; // 0 is a digit

// Digits of a number, zeros in front.
std::string Digits(std::int64_t value, std::size_t width)
{
    std::string text(width, '0');
    for (std::size_t i = width; i-- > 0; value /= 10)
        text[i] = static_cast<char>('0' + value % 10);
    return text;
}

int Number(std::string_view text, std::size_t from, std::size_t count)
{
    int value = 0;
    std::from_chars(text.data() + from, text.data() + from + count, value);
    return value;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool HasForm(std::string_view text)
{
    if (text.size() < kForm.size() + 1 || text.back() != 'Z') return false;
    for (std::size_t i = 0; i < kForm.size(); ++i)
        if (kForm[i] == '0' ? !IsDigit(text[i]) : text[i] != kForm[i]) return false;
    const std::string_view rest = text.substr(kForm.size(), text.size() - kForm.size() - 1);
    return rest.empty()
           || (rest.front() == '.' && rest.size() > 1 && rest.size() <= 10
               && std::all_of(rest.begin() + 1, rest.end(), IsDigit));
}

} // namespace

std::string JobTimeText(JobTime time)
{
    constexpr JobTime kFirst = sys_days{year{0} / 1 / 1};
    constexpr JobTime kLast = sys_days{year{9999} / 12 / 31} + milliseconds{86'399'999};
    time = std::clamp(time, kFirst, kLast);
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const year_month_day date{day};
    const std::int64_t ms = (time - day).count();
    return Digits(static_cast<int>(date.year()), 4) + '-'
           + Digits(static_cast<unsigned>(date.month()), 2) + '-'
           + Digits(static_cast<unsigned>(date.day()), 2) + 'T' + Digits(ms / 3'600'000, 2) + ':'
           + Digits(ms / 60'000 % 60, 2) + ':' + Digits(ms / 1000 % 60, 2) + '.'
           + Digits(ms % 1000, 3) + 'Z';
}

std::optional<JobTime> JobTimeOf(std::string_view text)
{
    if (!HasForm(text)) return std::nullopt;
    const year_month_day date{year{Number(text, 0, 4)},
                              std::chrono::month{static_cast<unsigned>(Number(text, 5, 2))},
                              std::chrono::day{static_cast<unsigned>(Number(text, 8, 2))}};
    const int hour = Number(text, 11, 2);
    const int minute = Number(text, 14, 2);
    const int second = Number(text, 17, 2);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    int ms = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t at = kForm.size() + 1 + i;
        ms = ms * 10 + (at < text.size() && IsDigit(text[at]) ? text[at] - '0' : 0);
    }
    return sys_days{date} + std::chrono::hours{hour} + std::chrono::minutes{minute}
           + std::chrono::seconds{second} + milliseconds{ms};
}

} // namespace field
