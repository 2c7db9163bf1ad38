// SPDX-License-Identifier: MIT
#include "field/time/LeastDelay.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr Instant kSlice = std::chrono::milliseconds(250);
constexpr Instant kWindow = std::chrono::seconds(30);
constexpr Instant kWindowSlow = std::chrono::seconds(60);
constexpr double kSlowPeriod = 0.21; // above it the samples come less often than 5 Hz [s]
constexpr Instant kLateFor = std::chrono::seconds(2);
constexpr double kLongestTime = 9e9; // in nanoseconds still an Instant [s]

double SecondsOf(Instant time)
{
    return std::chrono::duration<double>(time).count();
}

} // namespace

bool LeastDelay::Add(double deviceSeconds, Instant arrival)
{
    if (m_count == 0) Begin(deviceSeconds, arrival);
    Follow(deviceSeconds);
    double offset = SecondsOf(arrival - m_hostBase) - (deviceSeconds - m_deviceBase);
    const bool restarted = IsLateForLong(offset, arrival);
    if (restarted) {
        Restart();
        Begin(deviceSeconds, arrival);
        offset = 0.0;
    }
    Keep(offset, arrival);
    return restarted;
}

std::optional<Instant> LeastDelay::HostTime(double deviceSeconds) const
{
    if (m_count == 0) return std::nullopt;
    const double seconds = deviceSeconds - m_deviceBase + Front().offset;
    if (!(std::fabs(seconds) < kLongestTime)) return std::nullopt;
    return m_hostBase + Instant(std::llround(seconds * 1e9));
}

void LeastDelay::Restart()
{
    m_front = 0;
    m_count = 0;
    m_period = 0.0;
    m_lateSince.reset();
}

void LeastDelay::Begin(double deviceSeconds, Instant arrival)
{
    m_deviceBase = deviceSeconds;
    m_lastDevice = deviceSeconds;
    m_hostBase = arrival;
}

void LeastDelay::Follow(double deviceSeconds)
{
    constexpr double kWeight = 1.0 / 16.0;
    const double step = deviceSeconds - m_lastDevice;
    m_lastDevice = deviceSeconds;
    if (!(step > 0.0)) return;
    m_period = m_period == 0.0 ? step : m_period + kWeight * (step - m_period);
}

bool LeastDelay::IsLateForLong(double offset, Instant arrival)
{
    if (m_count == 0 || offset - Front().offset <= kLate) {
        m_lateSince.reset();
        return false;
    }
    if (!m_lateSince) m_lateSince = arrival;
    return arrival - *m_lateSince >= kLateFor;
}

void LeastDelay::Keep(double offset, Instant arrival)
{
    std::int64_t index = (arrival - m_hostBase) / kSlice;
    if (m_count > 0) index = std::max(index, Back().index);
    const std::int64_t oldest = index - (m_period > kSlowPeriod ? kWindowSlow : kWindow) / kSlice;
    while (m_count > 0 && Front().index < oldest) {
        m_front = (m_front + 1) % kSlices;
        --m_count;
    }
    if (m_count > 0 && Back().index == index && Back().offset <= offset) return;

    while (m_count > 0 && Back().offset >= offset)
        --m_count;
    ++m_count;
    Back() = {index, offset};
}

} // namespace tiltpole::field
