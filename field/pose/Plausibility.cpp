// SPDX-License-Identifier: MIT
#include "field/pose/Plausibility.h"

#include "field/pose/Readings.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

namespace {

constexpr double kLargestCount = 1e6;    // of readings, rates and accelerations
constexpr double kLargestSeconds = 1e10; // three centuries
constexpr int kStuckAfter = 20;          // equal readings
constexpr double kClockBegan = 1.0;      // back by more [s]
constexpr int kClockProven = 3;          // samples

// A product with 0 is NaN where the value is not finite, and cannot overflow a sum.
bool IsFinite(const PoseSample& sample)
{
    const PoseSensorData& data = sample.data;
    double sum = 0.0 * data.dPitch + 0.0 * data.dRoll + 0.0 * sample.heading.value_or(0.0)
                 + 0.0 * sample.deviceSeconds.value_or(0.0);
    for (const auto member : kReadings)
        sum += 0.0 * (data.*member);
    return std::isfinite(sum);
}

bool IsInRange(const PoseSample& sample)
{
    const PoseSensorData& data = sample.data;
    if (std::fabs(data.dPitch) > 90.0 || std::fabs(data.dRoll) > 180.0) return false;
    if (std::fabs(sample.heading.value_or(0.0)) > 360.0) return false;
    if (std::fabs(sample.deviceSeconds.value_or(0.0)) > kLargestSeconds) return false;
    for (const auto member : kReadings) {
        if (std::fabs(data.*member) > kLargestCount) return false;
    }
    return true;
}

} // namespace

std::string_view TextOf(PoseFault fault)
{
    switch (fault) {
    case PoseFault::None:
        return "no fault";
    case PoseFault::NotFinite:
        return "a value is not a number";
    case PoseFault::OutOfRange:
        return "a value is out of range";
    case PoseFault::Stuck:
        return "the magnetometer repeats its reading";
    case PoseFault::TimeBack:
        return "the clock of the sensor does not advance";
    }
    return "";
}

PoseFault Plausibility::Judge(const PoseSample& sample)
{
    m_clockRestarted = false;
    if (!IsFinite(sample)) return PoseFault::NotFinite;
    if (!IsInRange(sample)) return PoseFault::OutOfRange;
    if (sample.deviceSeconds && RunsBack(*sample.deviceSeconds)) return PoseFault::TimeBack;
    return IsStuck(sample) ? PoseFault::Stuck : PoseFault::None;
}

void Plausibility::Restart()
{
    *this = Plausibility();
}

// A sensor that forms its heading may have no magnetometer to show.
bool Plausibility::IsStuck(const PoseSample& sample)
{
    const PoseSensorData& data = sample.data;
    const bool none = data.dMag_x == 0.0 && data.dMag_y == 0.0 && data.dMag_z == 0.0;
    const bool equal = data.dMag_x == m_x && data.dMag_y == m_y && data.dMag_z == m_z;
    m_equal = equal && m_equal > 0 ? std::min(m_equal + 1, kStuckAfter) : 1;
    m_x = data.dMag_x;
    m_y = data.dMag_y;
    m_z = data.dMag_z;
    return m_equal >= kStuckAfter && !(none && sample.heading);
}

bool Plausibility::RunsBack(double seconds)
{
    if (!m_last || seconds > *m_last) {
        m_last = seconds;
        m_otherCount = 0;
        return false;
    }
    if (*m_last - seconds <= kClockBegan) return true;

    m_otherCount = m_otherCount > 0 && seconds > m_other ? m_otherCount + 1 : 1;
    m_other = seconds;
    if (m_otherCount < kClockProven) return true;
    m_last = seconds;
    m_otherCount = 0;
    m_clockRestarted = true;
    return false;
}

} // namespace tiltpole::field
