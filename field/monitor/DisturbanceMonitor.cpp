// SPDX-License-Identifier: MIT
#include "field/DisturbanceMonitor.h"

#include "survey/Angle.h"

#include <algorithm>
#include <cmath>

namespace field {

namespace {

using tiltpole::survey::Rad2Deg;

constexpr double kTrackDeviations = 3.0; // beyond which track and magnetometer contradict

double Dot(const SensorVector& a, const SensorVector& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

double Length(const SensorVector& v)
{
    return std::sqrt(Dot(v, v));
}

double MedianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// To whole units, without a sign.
std::string Rounded(double value)
{
    return std::to_string(std::lround(std::fabs(value)));
}

FieldShape ShapeAbout(const SensorVector& up, const SensorVector& reading)
{
    const double strength = Length(reading);
    if (strength == 0.0) return {};
    const double upward = Dot(reading, up) / (strength * Length(up));
    if (std::isnan(upward)) return {strength, upward};
    return {strength, Rad2Deg(std::asin(std::clamp(-upward, -1.0, 1.0)))};
}

} // namespace

FieldShape ShapeOf(const Tilt& tilt, const SensorVector& reading)
{
    return ShapeAbout(LevelAxesOf(tilt).up, reading);
}

std::optional<FieldShape> MedianShape(const std::vector<FieldShape>& shapes)
{
    std::vector<double> strengths;
    std::vector<double> dips;
    for (const FieldShape& shape : shapes) {
        if (!std::isfinite(shape.strength) || !std::isfinite(shape.dip)) continue;
        strengths.push_back(shape.strength);
        dips.push_back(shape.dip);
    }
    if (strengths.empty()) return std::nullopt;
    return FieldShape{MedianOf(std::move(strengths)), MedianOf(std::move(dips))};
}

std::string TextOf(const DisturbedSpan& span)
{
    const bool above = span.amount > 0.0;
    switch (span.reason) {
    case DisturbanceReason::Strength:
        return Rounded(100.0 * span.amount) + (above ? " % too strong" : " % too weak");
    case DisturbanceReason::Dip:
        return Rounded(span.amount) + (above ? " degrees too steep" : " degrees too flat");
    case DisturbanceReason::Pair:
        return "magnetometers differ by " + Rounded(100.0 * span.amount) + " %";
    case DisturbanceReason::Track:
        return "heading " + Rounded(span.amount) + " degrees off the track";
    default:
        return "not disturbed";
    }
}

DisturbanceMonitor::DisturbanceMonitor(const FieldShape& expected, const MonitorLimits& limits)
    : m_expected(expected), m_limits(limits)
{}

MonitorVerdict DisturbanceMonitor::Add(const MonitorSample& sample)
{
    MonitorVerdict verdict;
    verdict.shape = sample.up ? ShapeAbout(*sample.up, sample.a) : ShapeOf(sample.tilt, sample.a);
    const Witness loudest = LoudestOf(sample, verdict.shape);
    verdict.score = loudest.score;
    verdict.suspect = loudest.score > 1.0;
    if (verdict.suspect) verdict.reason = loudest.reason;
    Follow(sample.seconds, loudest);
    verdict.disturbed = m_disturbed;
    return verdict;
}

DisturbanceMonitor::Witness DisturbanceMonitor::OwnField(const FieldShape& shape) const
{
    const double longer = shape.strength / m_expected.strength - 1.0;
    const double steeper = shape.dip - m_expected.dip;
    const double byStrength = longer / m_limits.strength;
    const double byDip = steeper / m_limits.dip;
    // Where the inclination is not known, a field of a wrong strength still is one.
    const bool strong = std::isnan(byDip) && std::fabs(byStrength) > 1.0;
    const double score = strong ? std::fabs(byStrength) : std::hypot(byStrength, byDip);
    if (strong || std::fabs(byStrength) >= std::fabs(byDip))
        return {DisturbanceReason::Strength, score, longer};
    return {DisturbanceReason::Dip, score, steeper};
}

DisturbanceMonitor::Witness DisturbanceMonitor::LoudestOf(const MonitorSample& sample,
                                                          const FieldShape& shape) const
{
    Witness loudest = OwnField(shape);
    const auto hear = [&loudest](const Witness& witness) {
        if (witness.score > loudest.score || std::isnan(loudest.score)) loudest = witness;
    };
    if (sample.b) {
        const SensorVector apart{sample.a.x - sample.b->x, sample.a.y - sample.b->y,
                                 sample.a.z - sample.b->z};
        const double share = Length(apart) / m_expected.strength;
        hear({DisturbanceReason::Pair, share / m_limits.pair, share});
    }
    if (sample.track && sample.magneticHeading) {
        const double off = std::remainder(*sample.magneticHeading - *sample.track, 360.0);
        const double deviation = std::hypot(m_limits.magneticHeading, sample.trackDeviation);
        hear({DisturbanceReason::Track, std::fabs(off) / (kTrackDeviations * deviation), off});
    }
    return loudest;
}

// Samples of which nothing can be said (NaN) neither begin nor end a disturbance.
void DisturbanceMonitor::Follow(double seconds, const Witness& loudest)
{
    const double since = seconds - m_last;
    if (m_started && (since > m_limits.gap || since < 0.0)) m_disturbed = m_isRising = false;
    m_started = true;
    m_last = seconds;
    if (m_disturbed) {
        if (loudest.score > m_limits.release) Widen(seconds, loudest);
        if (loudest.score <= m_limits.release && seconds - m_spans.back().to > m_limits.end)
            m_disturbed = false;
        return;
    }
    if (loudest.score <= 1.0) m_isRising = false;
    if (!(loudest.score > 1.0)) return;

    if (!m_isRising) m_rising = {seconds, seconds, loudest.reason, loudest.amount, loudest.score};
    m_isRising = true;
    const bool louder = loudest.score > m_rising.score;
    if (louder) m_rising = {m_rising.from, seconds, loudest.reason, loudest.amount, loudest.score};
    m_rising.to = seconds;
    if (!(seconds - m_rising.from >= m_limits.begin)) return;
    m_spans.push_back(m_rising);
    m_disturbed = true;
    m_isRising = false;
}

void DisturbanceMonitor::Widen(double seconds, const Witness& loudest)
{
    DisturbedSpan& span = m_spans.back();
    span.to = seconds;
    if (loudest.score <= span.score) return;
    span.reason = loudest.reason;
    span.amount = loudest.amount;
    span.score = loudest.score;
}

} // namespace field
