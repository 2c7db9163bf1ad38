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

// Steps from antenna to tip of the samples in a span of time.
struct Place
{
    Instant moment{};
    Point3 step;
};

} // namespace

PoseInput::PoseInput(::field::PoseFormat format) : m_reader(::field::MakePoseReader(format)) {}

std::vector<PoseSample> PoseInput::Read(std::string_view bytes, Instant arrival)
{
    m_reader->Feed(bytes, arrival);
    return m_reader->Take();
}

std::optional<PoseSample> PoseInput::Add(PoseSample sample)
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
    if (m_ring.Add(sample)) return sample;
    ++m_refused;
    return std::nullopt;
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

    std::size_t later = 0;
    while (later < m_ring.Size() && m_ring.Sample(later).moment < moment)
        ++later;
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
    std::vector<Place> places;
    for (std::size_t i = 0; i < m_ring.Size(); ++i) {
        const PoseSample& sample = m_ring.Sample(i);
        if (sample.moment < from || sample.moment > moment) continue;
        places.push_back({sample.moment, solver.Step(sample, declination)});
    }

    PoleMotion motion;
    std::optional<Instant> quick; // last moment above the limit
    std::optional<Instant> first; // first moment whose speed is known
    std::size_t base = 0;
    for (const Place& now : places) {
        if (now.moment - places[0].moment < kBaseline) continue;
        while (now.moment - places[base + 1].moment >= kBaseline)
            ++base;
        const double seconds = Seconds(now.moment - places[base].moment).count();
        motion.speed = survey::Length(now.step - places[base].step) / seconds;
        if (!first) first = now.moment;
        if (!(motion.speed < limit)) quick = now.moment;
    }
    if (quick)
        motion.still = Seconds(moment - *quick).count();
    else if (first)
        motion.still = Seconds(moment - *first).count();
    return motion;
}

::field::SensorVector PoseInput::MeanForce(Instant moment, double span) const
{
    const Instant from = moment - std::chrono::duration_cast<Instant>(Seconds(span));
    ::field::SensorVector first;
    ::field::SensorVector sum;
    double count = 0.0;
    bool changes = false;
    for (std::size_t i = 0; i < m_ring.Size(); ++i) {
        const PoseSample& sample = m_ring.Sample(i);
        if (sample.moment < from || sample.moment > moment) continue;
        const ::field::SensorVector force{sample.data.dAcc_x, sample.data.dAcc_y,
                                          sample.data.dAcc_z};
        if (count == 0.0) first = force;
        changes = changes || force.x != first.x || force.y != first.y || force.z != first.z;
        sum.x += force.x;
        sum.y += force.y;
        sum.z += force.z;
        count += 1.0;
    }
    if (!changes) return {};
    return {sum.x / count, sum.y / count, sum.z / count};
}

void PoseInput::Count(::field::Counters& counters) const
{
    counters.poses = m_samples;
    counters.posesBad = m_reader->Count().bad;
    counters.posesRefused = m_refused;
}

} // namespace tiltpole::field
