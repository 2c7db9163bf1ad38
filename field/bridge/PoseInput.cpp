// SPDX-License-Identifier: MIT
#include "field/bridge/PoseInput.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace tiltpole::field {

using ::field::Instant;
using ::field::PoseSample;
using survey::Point3;
using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

namespace {

constexpr Instant kSilent = 100ms;
constexpr Instant kBaseline = 200ms; // over which speeds are formed: 17 mm/s by 0.1 degrees of 2 m

// A speed nearer to the limit is formed anew, with the declination of its epoch. That turns all steps
// alike and leaves their differences as long as they are, but for rounding: 1e-10 m/s of a 2 m pole.
constexpr double kDoubt = 1e-6; // [m/s]

} // namespace

PoseInput::PoseInput(::field::PoseFormat format)
    : m_reader(::field::MakePoseReader(format)), m_notes(m_ring.Room())
{}

std::vector<PoseSample> PoseInput::Read(std::string_view bytes, Instant arrival)
{
    m_reader->Feed(bytes, arrival);
    return m_reader->Take();
}

std::optional<PoseSample> PoseInput::Add(PoseSample sample, const TipSolver& solver)
{
    ++m_samples;
    m_fault = m_plausibility.Judge(sample);
    if (m_plausibility.ClockRestarted()) {
        m_least.Restart();
        m_ring.Clear();
    }
    if (m_fault != PoseFault::None) {
        ++m_refused;
        return std::nullopt;
    }

    m_hasClock = sample.deviceSeconds.has_value();
    sample.moment = sample.arrival;
    if (m_hasClock) {
        if (m_least.Add(*sample.deviceSeconds, sample.arrival)) m_ring.Clear();
        sample.moment = m_least.HostTime(*sample.deviceSeconds).value_or(sample.arrival);
    }
    if (!m_ring.Add(sample)) {
        ++m_refused;
        return std::nullopt;
    }
    Note(sample, solver);
    return sample;
}

void PoseInput::Note(const PoseSample& sample, const TipSolver& solver)
{
    const std::size_t newest = m_ring.Size() - 1;
    m_newest = (m_newest + 1) % m_notes.size();
    Noted& noted = m_notes[m_newest];
    noted.moment = sample.moment;
    noted.speed = kNotKnown;
    noted.step = solver.Step(sample, 0.0);
    noted.force = {sample.data.dAcc_x, sample.data.dAcc_y, sample.data.dAcc_z};
    if (const auto base = BaseOf(newest, newest)) {
        const Noted& before = NotedOf(*base);
        const double seconds = Seconds(noted.moment - before.moment).count();
        noted.speed = survey::Length(noted.step - before.step) / seconds;
    }
}

// Of sample `index` of the ring.
const PoseInput::Noted& PoseInput::NotedOf(std::size_t index) const
{
    const std::size_t room = m_notes.size();
    return m_notes[(m_newest + room - (m_ring.Size() - 1 - index)) % room];
}

// The number of samples up to a moment.
std::size_t PoseInput::CountUntil(Instant moment) const
{
    std::size_t count = m_ring.Size();
    while (count > 0 && NotedOf(count - 1).moment > moment)
        --count;
    return count;
}

// The last sample by kBaseline before `index`, looked for from `from` back.
std::optional<std::size_t> PoseInput::BaseOf(std::size_t index, std::size_t from) const
{
    const Instant latest = NotedOf(index).moment - kBaseline;
    for (std::size_t i = from + 1; i > 0; --i)
        if (NotedOf(i - 1).moment <= latest) return i - 1;
    return std::nullopt;
}

double PoseInput::SpeedAt(std::size_t index, std::size_t base, const TipSolver& solver,
                          double declination) const
{
    const PoseSample& now = m_ring.Sample(index);
    const PoseSample& before = m_ring.Sample(base);
    const Point3 way = solver.Step(now, declination) - solver.Step(before, declination);
    return survey::Length(way) / Seconds(now.moment - before.moment).count();
}

void PoseInput::Restart()
{
    m_reader->Restart();
    m_plausibility.Restart();
    m_least.Restart();
    m_ring.Clear();
    m_fault = PoseFault::None;
}

void PoseInput::Explain(Instant moment, Sight& sight) const
{
    sight.pose = PoseSight::None;
    sight.poseFault = m_fault == PoseFault::None ? std::string_view() : TextOf(m_fault);
    if (m_fault == PoseFault::Stuck) sight.pose = PoseSight::Stuck;
    if (m_ring.Size() == 0) return;

    const std::size_t later = m_ring.FirstNotBefore(moment);
    const Instant before = later > 0 ? m_ring.Sample(later - 1).moment : m_ring.Sample(0).moment;
    const Instant after = later < m_ring.Size() ? m_ring.Sample(later).moment : moment;
    sight.poseSilence = Seconds(moment - before).count();
    sight.poseGap = Seconds(later > 0 ? after - before : after - moment).count();
    const bool silent = later == m_ring.Size() && moment - before >= kSilent;
    if (!silent && later > 0 && sight.pose != PoseSight::Stuck) sight.pose = PoseSight::Gap;
    if (later == 0) sight.poseSilence = kNotKnown;
}

PoleMotion PoseInput::Motion(const TipSolver& solver, double declination, Instant moment,
                             double limit, double span) const
{
    const Instant from = moment - std::chrono::duration_cast<Instant>(Seconds(span)) - kBaseline;
    const std::size_t count = CountUntil(moment);
    PoleMotion motion;
    if (count == 0) return motion;
    const std::size_t last = count - 1;
    std::size_t base = last;
    for (std::size_t i = last;; --i) {
        const auto found = BaseOf(i, base);
        if (!found || NotedOf(*found).moment < from) break;
        base = *found;
        double speed = NotedOf(i).speed;
        if (i == last || !(std::fabs(speed - limit) > kDoubt))
            speed = SpeedAt(i, base, solver, declination);
        if (i == last) motion.speed = speed;
        motion.still = Seconds(moment - NotedOf(i).moment).count();
        if (!(speed < limit)) break;
    }
    return motion;
}

::field::SensorVector PoseInput::MeanForce(Instant moment, double span) const
{
    const Instant from = moment - std::chrono::duration_cast<Instant>(Seconds(span));
    const std::size_t end = CountUntil(moment);
    std::size_t begin = end;
    while (begin > 0 && NotedOf(begin - 1).moment >= from)
        --begin;
    if (begin == end) return {};

    const ::field::SensorVector first = NotedOf(begin).force;
    ::field::SensorVector sum;
    bool changes = false;
    for (std::size_t i = begin; i < end; ++i) {
        const ::field::SensorVector& force = NotedOf(i).force;
        changes = changes || force.x != first.x || force.y != first.y || force.z != first.z;
        sum.x += force.x;
        sum.y += force.y;
        sum.z += force.z;
    }
    if (!changes) return {};
    const auto samples = static_cast<double>(end - begin);
    return {sum.x / samples, sum.y / samples, sum.z / samples};
}

void PoseInput::Count(::field::Counters& counters) const
{
    counters.poses = m_samples;
    counters.posesBad = m_reader->Count().bad;
    counters.posesRefused = m_refused;
}

} // namespace tiltpole::field
