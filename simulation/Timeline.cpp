// SPDX-License-Identifier: MIT
#include "simulation/Timeline.h"

#include "simulation/PortableMath.h"
#include <algorithm>

namespace simulation {

Tremor::Tremor(Generator& random) : m_waves{}
{
    for (Wave& wave : m_waves) {
        wave.frequency = random.Uniform(0.2, 1.5);
        wave.phase = random.Uniform(0.0, 360.0);
    }
}

namespace {

// Each wave of amplitude 1 has variance 1/2: three of them sum to 3/2.
constexpr double kToUnit = 0.81649658092772603273; // sqrt(2/3)

} // namespace

double Tremor::At(double seconds) const
{
    double sum = 0.0;
    for (const Wave& wave : m_waves)
        sum += SineCosineOf(360.0 * wave.frequency * seconds + wave.phase).sine;
    return kToUnit * sum;
}

Moving Tremor::MovingAt(double seconds) const
{
    Moving sum;
    for (const Wave& wave : m_waves) {
        const double turning = 360.0 * wave.frequency;
        sum = sum + SineOf({turning * seconds + wave.phase, turning, 0.0});
    }
    return kToUnit * sum;
}

bool LossDecision::Loses(double seconds)
{
    const bool unlucky = m_random.Uniform() < m_losses.share;
    return unlucky || std::ranges::any_of(m_losses.gaps, [seconds](const Gap& gap) {
               return gap.from <= seconds && seconds < gap.to;
           });
}

std::string ProblemOf(const Losses& losses)
{
    if (!(losses.share >= 0.0 && losses.share < 1.0))
        return "the share of lost samples must lie from 0 to below 1";
    const auto isEmpty = [](const Gap& gap) { return !(gap.from < gap.to); };
    if (std::ranges::any_of(losses.gaps, isEmpty)) return "a gap must end after it begins";
    return {};
}

double Smoothly(double s)
{
    const double cut = std::clamp(s, 0.0, 1.0);
    return cut * cut * (3.0 - 2.0 * cut);
}

} // namespace simulation
