// SPDX-License-Identifier: MIT
#include "field/pose/PoseRing.h"

#include "field/pose/Readings.h"
#include "survey/Angle.h"
#include "survey/Point.h"

#include <algorithm>
#include <cmath>

namespace survey = tiltpole::survey;

namespace field {

namespace {

using Looked = PoseLookup::State;

constexpr Instant kLongestSpan = std::chrono::minutes(10);
constexpr std::int64_t kSamplesASecond = 250;
constexpr std::size_t kAtOnce = 2502; // samples: room of ten seconds
constexpr Instant kStillAround = std::chrono::milliseconds(500);
constexpr double kStillAngle = 0.3;   // of pitch and roll each, all in all [degrees]
constexpr double kStillField = 0.05;  // part of the strength
constexpr double kStillHeading = 3.0; // [degrees]

double Linear(double a, double b, double part)
{
    return a + part * (b - a);
}

double LinearHeading(double a, double b, double part)
{
    const double heading = survey::Wrapped(a + part * survey::Wrapped(b - a));
    return heading < 0.0 ? heading + 360.0 : heading;
}

PoseSample Mixed(const PoseSample& a, const PoseSample& b, Instant moment)
{
    using Seconds = std::chrono::duration<double>;
    const double part = Seconds(moment - a.moment) / Seconds(b.moment - a.moment);
    PoseSample mixed = a;
    const auto mix = [&](double PoseSensorData::*member) {
        mixed.data.*member = Linear(a.data.*member, b.data.*member, part);
    };
    mix(&PoseSensorData::dPitch);
    mix(&PoseSensorData::dRoll);
    mix(&PoseSensorData::dRot);
    for (const auto reading : tiltpole::field::kReadings)
        mix(reading);
    mixed.deviceSeconds.reset();
    if (a.deviceSeconds && b.deviceSeconds)
        mixed.deviceSeconds = Linear(*a.deviceSeconds, *b.deviceSeconds, part);
    mixed.heading.reset();
    if (a.heading && b.heading) mixed.heading = LinearHeading(*a.heading, *b.heading, part);
    mixed.arrival = b.arrival;
    mixed.moment = moment;
    return mixed;
}

survey::Point3 ReadingA(const PoseSensorData& data)
{
    return {data.dMag_x, data.dMag_y, data.dMag_z};
}

// Whether `sample` shows the pole as `first` does, the angles apart.
bool FacesAlike(const PoseSample& sample, const PoseSample& first)
{
    const survey::Point3 field = ReadingA(first.data);
    if (!(survey::Length(ReadingA(sample.data) - field) <= kStillField * survey::Length(field)))
        return false;
    if (!sample.heading || !first.heading) return sample.heading == first.heading;
    return std::fabs(survey::Wrapped(*sample.heading - *first.heading)) <= kStillHeading;
}

} // namespace

PoseRing::PoseRing(Instant span) : m_span(std::clamp(span, Instant{}, kLongestSpan))
{
    const auto room = m_span * kSamplesASecond / Instant(std::chrono::seconds(1)) + 2;
    m_room = static_cast<std::size_t>(room);
    m_samples.reserve(std::min(m_room, kAtOnce));
}

bool PoseRing::Add(const PoseSample& sample)
{
    if (m_count > 0 && sample.moment <= Sample(m_count - 1).moment) return false;
    const auto dropFront = [this] {
        m_front = (m_front + 1) % m_room;
        --m_count;
    };
    if (m_count == m_room) dropFront();
    while (m_count > 0 && sample.moment - Sample(0).moment > m_span)
        dropFront();
    const std::size_t at = (m_front + m_count) % m_room;
    if (at == m_samples.size())
        m_samples.push_back(sample);
    else
        m_samples[at] = sample;
    ++m_count;
    return true;
}

const PoseSample& PoseRing::Sample(std::size_t index) const
{
    return m_samples[(m_front + index) % m_room];
}

void PoseRing::Clear()
{
    m_front = 0;
    m_count = 0;
}

PoseLookup PoseRing::At(Instant moment, Instant waited) const
{
    PoseLookup lookup;
    const std::size_t later = FirstNotBefore(moment);
    if (later < m_count) {
        const PoseSample& sample = Sample(later);
        if (sample.moment == moment) return {Looked::Found, sample, Instant{}, false};
        return later == 0 ? lookup : Drawn(later, moment);
    }

    if (waited < kWait) {
        lookup.state = Looked::Wait;
        return lookup;
    }
    if (m_count < 2 || moment - Sample(m_count - 1).moment > kBeyond) return lookup;
    lookup = Drawn(m_count - 1, moment);
    lookup.beyond = true;
    return lookup;
}

bool PoseRing::IsStill(Instant moment) const
{
    const std::size_t begin = FirstNotBefore(moment - kStillAround);
    if (begin == m_count) return false;
    const PoseSample& first = Sample(begin);
    double pitchLow = first.data.dPitch;
    double pitchHigh = pitchLow;
    double rollLow = first.data.dRoll;
    double rollHigh = rollLow;
    Instant last = first.moment;
    for (std::size_t i = begin; i < m_count && Sample(i).moment <= moment + kStillAround; ++i) {
        const PoseSample& sample = Sample(i);
        if (!FacesAlike(sample, first)) return false;
        pitchLow = std::min(pitchLow, sample.data.dPitch);
        pitchHigh = std::max(pitchHigh, sample.data.dPitch);
        rollLow = std::min(rollLow, sample.data.dRoll);
        rollHigh = std::max(rollHigh, sample.data.dRoll);
        last = sample.moment;
    }
    return last - first.moment >= kStillAround && pitchHigh - pitchLow <= kStillAngle
           && rollHigh - rollLow <= kStillAngle;
}

// Looked for from the newest sample back: an epoch is late by a few samples only.
std::size_t PoseRing::FirstNotBefore(Instant moment) const
{
    std::size_t low = m_count;
    std::size_t high = m_count;
    for (std::size_t step = 1; low > 0; step *= 2) {
        low -= std::min(step, low);
        if (Sample(low).moment < moment) break;
        high = low;
    }
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (Sample(middle).moment < moment)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

// The straight line through the samples `later` and the one before it.
PoseLookup PoseRing::Drawn(std::size_t later, Instant moment) const
{
    PoseLookup lookup;
    const PoseSample& a = Sample(later - 1);
    const PoseSample& b = Sample(later);
    lookup.between = b.moment - a.moment;
    if (lookup.between > kNeighborsStill) return lookup;
    if (lookup.between > kNeighbors && !IsStill(moment)) return lookup;
    lookup.state = Looked::Found;
    lookup.pose = Mixed(a, b, moment);
    return lookup;
}

} // namespace field
