// SPDX-License-Identifier: MIT
#include "field/gate/StepWatch.h"

#include "field/Geodesy.h"

#include <algorithm>
#include <cmath>

namespace tiltpole::field {

using survey::Point3;

namespace {

constexpr double kSigmas = 5.0;
constexpr double kReach = 3.0;       // of a pole that is carried, without a speed [m/s]
constexpr double kReachBeside = 1.0; // beside the receiver's speed, which is smoothed [m/s]
constexpr double kStillGap = 3.0;    // stillness at both ends says nothing of a longer pause [s]

bool BothStill(const StepEpoch& before, const StepEpoch& now)
{
    return before.still && now.still && now.seconds - before.seconds <= kStillGap;
}

Point3 AntennaStep(const StepEpoch& before, const StepEpoch& now)
{
    return survey::PointOf(::field::Difference(before.antenna, now.antenna));
}

// NaN only where a coordinate is. A heading that alone turns must not look like a step, so the
// smaller one counts: that of the antenna or that of the tip.
double Unexplained(const StepEpoch& before, const StepEpoch& now)
{
    const Point3 antenna = AntennaStep(before, now);
    const double step = survey::Length(antenna);
    if (!before.lean || !now.lean) return step;
    const double tip = survey::Length(antenna - (*now.lean - *before.lean));
    return tip < step ? tip : step;
}

} // namespace

StepWatch::Motion StepWatch::Between(const StepEpoch& before, const StepEpoch& now) const
{
    const double seconds = now.seconds - before.seconds;
    const bool still = BothStill(before, now);
    double reach = still ? 0.0 : kReach;
    if (before.speed && now.speed)
        reach = std::max(*before.speed, *now.speed) + (still ? 0.0 : kReachBeside);

    Motion motion;
    motion.step = Unexplained(before, now);
    motion.allowed = kSigmas * std::hypot(before.sigma, now.sigma) + reach * seconds;
    if (!still && !motion.Explained() && m_velocity) {
        // A vehicle goes on as it went.
        const double turned = survey::Length(AntennaStep(before, now) - seconds * *m_velocity);
        if (turned < motion.step) motion.step = turned;
    }
    return motion;
}

StepVerdict StepWatch::Add(const StepEpoch& now)
{
    StepVerdict verdict;
    if (!m_last) {
        Accept(now, nullptr);
        return verdict;
    }

    const Motion motion = Between(*m_last, now);
    verdict.step = motion.step;
    verdict.allowed = motion.allowed;
    if (motion.Explained()) {
        verdict.refuted = m_doubted.has_value();
        const StepEpoch before = *m_last;
        Accept(now, &before);
        return verdict;
    }
    if (!m_doubted || !Between(*m_doubted, now).Explained()) {
        verdict.jump = true;
        m_doubted = now;
        return verdict;
    }

    const StepEpoch before = *m_doubted;
    const bool fixed = m_last->fixed && before.fixed && now.fixed;
    if (fixed && BothStill(*m_last, before) && BothStill(before, now) && motion.step > m_datumLimit)
        verdict.datumStep = motion.step;
    Accept(now, &before);
    return verdict;
}

void StepWatch::Restart()
{
    m_last.reset();
    m_doubted.reset();
    m_velocity.reset();
}

void StepWatch::Accept(const StepEpoch& epoch, const StepEpoch* before)
{
    m_velocity.reset();
    if (before != nullptr && epoch.seconds > before->seconds)
        m_velocity = 1.0 / (epoch.seconds - before->seconds) * AntennaStep(*before, epoch);
    m_last = epoch;
    m_doubted.reset();
}

} // namespace tiltpole::field
