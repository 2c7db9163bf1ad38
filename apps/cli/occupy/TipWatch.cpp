// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/TipWatch.h"

#include "apps/cli/occupy/Turned.h"
#include "survey/Angle.h"
#include <algorithm>
#include <cmath>

namespace cli {

namespace survey = tiltpole::survey;

namespace {

constexpr double kSecondsBack = 4.0; // so far back epochs are compared
constexpr double kSigmas = 4.0;      // of the difference of two epochs
constexpr double kTimeApart = 0.1;   // allowed between the clocks of sensors and antenna [s]

double Distance(const xyhCoordinate& a, const xyhCoordinate& b)
{
    return std::hypot(a.x - b.x, a.y - b.y, a.h - b.h);
}

} // namespace

TipWatch::TipWatch(const field::OccupationSetup& setup)
    : m_poleLength(setup.poleLength),
      m_tolerance(kSigmas * std::sqrt(2.0) * std::hypot(setup.planSigma, setup.heightSigma))
{}

void TipWatch::Clear()
{
    m_seen.clear();
    m_doubtful = false;
    m_started = false;
}

// What stood still in the world turns the other way in the sensor.
void TipWatch::Turn(const field::InertialSample& sample)
{
    if (m_started) {
        const field::SensorVector turn =
            TurnInSensor(m_rate, sample.rate, sample.seconds - m_seconds);
        for (Seen& seen : m_seen)
            seen.up = Turned(seen.up, turn);
    }
    m_started = true;
    m_seconds = sample.seconds;
    m_rate = sample.rate;
}

bool TipWatch::Fits(const Seen& earlier, const Seen& now) const
{
    const double chord =
        m_poleLength
        * std::hypot(earlier.up.x - now.up.x, earlier.up.y - now.up.y, earlier.up.z - now.up.z);
    const double tolerance = m_tolerance + kTimeApart * (earlier.speed + now.speed);
    return std::fabs(Distance(earlier.antenna, now.antenna) - chord) <= tolerance;
}

TipWatch::Finding TipWatch::Look(const field::AntennaEpoch& epoch)
{
    const double speed = m_poleLength * survey::Deg2Rad(std::hypot(m_rate.x, m_rate.y));
    const Seen now{
        m_seconds, epoch.position, {0.0, 0.0, 1.0},
          speed
    };
    while (!m_seen.empty() && m_seen.front().seconds < m_seconds - kSecondsBack)
        m_seen.pop_front();
    const auto unfit = std::count_if(m_seen.begin(), m_seen.end(),
                                     [&](const Seen& seen) { return !Fits(seen, now); });
    if (2 * unfit <= static_cast<std::ptrdiff_t>(m_seen.size())) {
        m_doubtful = false;
        m_seen.push_back(now);
        return Finding::Stays;
    }
    if (!m_doubtful) {
        m_doubtful = true;
        return Finding::Doubtful;
    }
    m_doubtful = false;
    m_seen.assign(1, now);
    return Finding::Moved;
}

} // namespace cli
