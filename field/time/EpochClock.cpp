// SPDX-License-Identifier: MIT
#include "field/time/EpochClock.h"

#include "field/North.h"
#include "framework/core/ParseNumber.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr double kDay = 86400.0;           // [s]
constexpr double kHalfDay = 43200.0;       // [s]
constexpr double kSameTime = 1e-6;         // [s]
constexpr double kLongestFirstStep = 10.0; // that is taken for a period [s]
constexpr double kAgree = 0.1;             // of steps, part of the step

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

int TwoDigits(std::string_view text, std::size_t at)
{
    return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

bool HasTimeForm(std::string_view utc)
{
    constexpr std::size_t kWhole = 6;    // hhmmss
    constexpr std::size_t kLongest = 20; // far more decimals than a receiver writes
    if (utc.size() < kWhole || utc.size() > kLongest) return false;
    if (!std::all_of(utc.begin(), utc.begin() + kWhole, IsDigit)) return false;
    if (utc.size() == kWhole) return true;
    return utc[kWhole] == '.' && std::all_of(utc.begin() + kWhole + 1, utc.end(), IsDigit);
}

} // namespace

std::optional<double> SecondsOfDay(std::string_view utc)
{
    if (!HasTimeForm(utc)) return std::nullopt;
    const int hour = TwoDigits(utc, 0);
    const int minute = TwoDigits(utc, 2);
    const int second = TwoDigits(utc, 4);
    const bool leap = hour == 23 && minute == 59 && second == 60;
    if (hour > 23 || minute > 59 || (second > 59 && !leap)) return std::nullopt;
    return hour * 3600 + minute * 60 + framework::ParseDouble(utc.substr(4)).value;
}

EpochClock::Result EpochClock::Advance(std::string_view utc,
                                       std::optional<std::chrono::sys_days> date)
{
    const std::optional<double> time = SecondsOfDay(utc);
    if (!time) return {};
    if (!m_last) {
        m_last = time;
        if (date) m_date = date;
        return {Step::First, m_base + *time, 0.0};
    }

    const double before = m_base + *m_last;
    if (*time - *m_last < -kHalfDay) Turn(1);
    if (*time - *m_last > kHalfDay) Turn(-1);
    if (date) m_date = date;
    m_last = time;
    const double now = m_base + *time;
    const double change = now - before;
    if (std::fabs(change) < kSameTime) return {Step::Repeated, now, change};

    const double limit = m_period > 0.0 ? 1.5 * m_period + 1.0 : kLongestFirstStep;
    if (change > 0.0) Learn(change);
    const bool next = change > 0.0 && change <= limit + kSameTime;
    return {next ? Step::Next : Step::Jump, now, change};
}

std::optional<double> EpochClock::DecimalYear() const
{
    if (!m_date || !m_last) return std::nullopt;
    return ::field::DecimalYear(*m_date, *m_last);
}

std::optional<double> EpochClock::UnixSeconds() const
{
    if (!m_date || !m_last) return std::nullopt;
    return static_cast<double>(m_date->time_since_epoch().count()) * kDay + *m_last;
}

void EpochClock::Restart()
{
    m_last.reset();
    m_base = 0.0;
    m_period = 0.0;
    m_step = 0.0;
}

// The day after `m_last`'s has begun (1), or the day before has come back (-1). A day that ends
// within its leap second has one second more.
void EpochClock::Turn(int days)
{
    const double leap = days > 0 && *m_last >= kDay ? 1.0 : 0.0;
    m_base += days * kDay + leap;
    if (m_date) *m_date += std::chrono::days(days);
}

void EpochClock::Learn(double step)
{
    const bool first = m_period == 0.0 && step <= kLongestFirstStep;
    const bool agreed = std::fabs(step - m_step) <= kAgree * step;
    if (first || agreed) m_period = step;
    m_step = step;
}

} // namespace tiltpole::field
