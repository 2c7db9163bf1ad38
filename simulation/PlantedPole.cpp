// SPDX-License-Identifier: MIT
#include "simulation/PlantedPole.h"

#include <array>

namespace simulation {

namespace {

constexpr double kRockingStarts = 1.0; // [s] from rest to the full amplitude
constexpr double kSteepest = 60.0;     // [degrees] of lean and amplitude together

// A vector whose components move, level frame.
using MovingPoint = std::array<Moving, 3>;

Point3 ValueOf(const MovingPoint& p)
{
    return {p[0].value, p[1].value, p[2].value};
}

Point3 BendOf(const MovingPoint& p)
{
    return {p[0].bend, p[1].bend, p[2].bend};
}

MovingPoint UpOf(const Moving& along, const Moving& across, double azimuth)
{
    const auto [sa, ca] = SineCosineOf(azimuth);
    const Moving ahead = SineOf(along) * CosineOf(across);
    const Moving right = SineOf(across);
    const Moving height = CosineOf(along) * CosineOf(across);
    return {ca * ahead + -sa * right, sa * ahead + ca * right, -1.0 * height};
}

// w = Rz(-spin) (e_x across' + Rx(-across) (e_y (-along')) + e_z spin'), body axes
Point3 RateOf(const Moving& along, const Moving& across, const Moving& spin)
{
    const auto [sc, cc] = SineCosineOf(across.value);
    const auto [ss, cs] = SineCosineOf(spin.value);
    const Point3 leaned{across.rate, -along.rate * cc, along.rate * sc};
    return {cs * leaned.x + ss * leaned.y, -ss * leaned.x + cs * leaned.y, leaned.z + spin.rate};
}

MovingPoint TipAt(const std::vector<Slip>& slips, double seconds)
{
    MovingPoint tip{};
    for (const Slip& slip : slips) {
        const Moving share = Moved(0.0, 1.0, (seconds - slip.at) / slip.duration, slip.duration);
        tip[0] = tip[0] + slip.by.x * share;
        tip[1] = tip[1] + slip.by.y * share;
        tip[2] = tip[2] + -slip.by.z * share;
    }
    return tip;
}

// Of a pole that is turned by `along` in one plane and by `across`, which is no more, out of it
// [degrees]; above kSteepest where that is too much.
double LeanOfBoth(double along, double across)
{
    const double up = SineCosineOf(along).cosine * SineCosineOf(across).cosine;
    return up < SineCosineOf(kSteepest).cosine ? 2.0 * kSteepest : along;
}

double LargestLean(const PlantedMotion& m)
{
    switch (m.motion) {
    case OccupationMotion::LeanIn:
        return std::max(m.leanFrom, m.leanTo);
    case OccupationMotion::OppositeLeans:
        return m.leanTo;
    case OccupationMotion::Hold:
        return m.leanFrom;
    case OccupationMotion::Rock:
        return m.leanFrom + m.amplitude;
    default:
        return LeanOfBoth(m.leanFrom + m.amplitude, m.amplitude);
    }
}

// Whether the motion has a way of moveTime seconds.
bool HasMove(OccupationMotion motion)
{
    return motion == OccupationMotion::LeanIn || motion == OccupationMotion::OppositeLeans;
}

} // namespace

const char* NameOf(OccupationMotion motion)
{
    switch (motion) {
    case OccupationMotion::LeanIn:
        return "lean-in";
    case OccupationMotion::OppositeLeans:
        return "opposite";
    case OccupationMotion::Rock:
        return "rock";
    case OccupationMotion::Hold:
        return "hold";
    default:
        return "free";
    }
}

PlantedMotion UsualMotion(OccupationMotion motion)
{
    switch (motion) {
    case OccupationMotion::OppositeLeans:
        return {.motion = motion, .leanTo = 15.0};
    case OccupationMotion::Rock:
        return {.motion = motion, .leanFrom = 10.0};
    case OccupationMotion::Hold:
        return {.motion = motion, .leanFrom = 20.0};
    case OccupationMotion::Free:
        return {.motion = motion,
                .duration = 20.0,
                .leanFrom = 10.0,
                .amplitude = 15.0,
                .frequency = 0.4,
                .turn = 360.0};
    default:
        return {.motion = motion};
    }
}

std::string ProblemOf(const PlantedMotion& m)
{
    if (!(m.duration > 0.0)) return "the time on a point must be above 0 seconds";
    if (HasMove(m.motion) && !(m.moveTime > 0.0 && m.moveTime <= m.duration))
        return "the move must take more than 0 seconds and end before the point does";
    if (!(m.leanFrom >= 0.0 && m.leanTo >= 0.0 && m.amplitude >= 0.0
          && LargestLean(m) <= kSteepest))
        return "the lean, its amplitude included, must lie from 0 to 60 degrees";
    if (!(m.frequency >= 0.0)) return "the frequency of rocking must not be negative";
    if (!(m.sensorHeight >= 0.0)) return "the sensor must not lie below the tip";
    for (const Slip& slip : m.slips)
        if (!(slip.duration > 0.0)) return "a slip must take more than 0 seconds";
    return {};
}

PlantedPole::PlantedPole(const PlantedMotion& motion, std::uint64_t seed, std::uint64_t index)
    : m_motion(motion), m_random(seed, Stream::Motion, index), m_alongTremor(m_random),
      m_acrossTremor(m_random), m_spinTremor(m_random),
      m_acrossFrequency(motion.frequency * m_random.Uniform(0.6, 0.9)),
      m_acrossPhase(m_random.Uniform(0.0, 360.0))
{}

PoleInstant PlantedPole::At(double seconds) const
{
    const Moving along = AlongAt(seconds);
    const Moving across = AcrossAt(seconds);
    const Moving spin = SpinAt(seconds);
    const MovingPoint up = UpOf(along, across, m_motion.azimuth);
    const MovingPoint tip = TipAt(m_motion.slips, seconds);

    constexpr Point3 kForward{1.0, 0.0, 0.0};
    constexpr Point3 kRight{0.0, 1.0, 0.0};
    constexpr Point3 kDown{0.0, 0.0, 1.0};
    PoleInstant now;
    now.attitude = RotationAbout(kDown, m_motion.azimuth) * RotationAbout(kRight, -along.value)
                   * RotationAbout(kForward, across.value) * RotationAbout(kDown, spin.value);
    now.rate = RateOf(along, across, spin);
    now.up = ValueOf(up);
    now.tip = ValueOf(tip);
    now.sensor = now.tip + m_motion.sensorHeight * now.up;
    now.acceleration = BendOf(tip) + m_motion.sensorHeight * BendOf(up);
    return now;
}

// amplitude sin(360 f t + phase), faded in from rest; its phase is 0 at the start of the point.
Moving PlantedPole::RockedAt(double seconds, double frequency, double phase) const
{
    const double t = std::max(seconds, 0.0);
    const Moving angle{360.0 * frequency * t + phase, 360.0 * frequency, 0.0};
    const Moving fade = Moved(0.0, m_motion.amplitude, seconds / kRockingStarts, kRockingStarts);
    return fade * SineOf(angle);
}

Moving PlantedPole::AlongAt(double seconds) const
{
    const PlantedMotion& m = m_motion;
    const Moving tremor = m.tremor * m_alongTremor.MovingAt(seconds);
    const Moving base{m.leanFrom, 0.0, 0.0};
    switch (m.motion) {
    case OccupationMotion::LeanIn:
        return Moved(m.leanFrom, m.leanTo, seconds / m.moveTime, m.moveTime) + tremor;
    case OccupationMotion::OppositeLeans: {
        const double begin = 0.5 * (m.duration - m.moveTime);
        return Moved(m.leanTo, -m.leanTo, (seconds - begin) / m.moveTime, m.moveTime) + tremor;
    }
    case OccupationMotion::Hold:
        return base + tremor;
    default:
        return base + RockedAt(seconds, m.frequency, 0.0) + tremor;
    }
}

Moving PlantedPole::AcrossAt(double seconds) const
{
    const Moving tremor = m_motion.tremor * m_acrossTremor.MovingAt(seconds);
    if (m_motion.motion != OccupationMotion::Free) return tremor;
    return RockedAt(seconds, m_acrossFrequency, m_acrossPhase) + tremor;
}

// About the pole's axis, from the azimuth of the lean.
Moving PlantedPole::SpinAt(double seconds) const
{
    const PlantedMotion& m = m_motion;
    const Moving tremor = m.tremor * m_spinTremor.MovingAt(seconds);
    const double start = m.heading - m.azimuth;
    return Moved(start, start + m.turn, seconds / m.duration, m.duration) + tremor;
}

} // namespace simulation
