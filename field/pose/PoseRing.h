// SPDX-License-Identifier: MIT
/// @file
/// The last seconds of a pose sensor, asked for the pose at a moment between two samples.
///
///     field::PoseRing ring(std::chrono::seconds(5));
///     ring.Add(sample);                                  // its moment set
///     const field::PoseLookup at = ring.At(epoch.moment, now - epoch.arrival);
///     if (at.state == field::PoseLookup::State::Found) Solve(epoch, at.pose);
///
///     angles, readings   linear between neighbors: the pose last received, held, would cost a moving
///                        pole many times the error; headings are formed after interpolation, so that
///                        nothing wraps. A heading that the sensor formed goes the shorter way round
///     neighbors          at most 50 ms apart, 200 ms while the pole is still
///     newest sample      followed in a straight line for at most 20 ms, after 40 ms of waiting
#pragma once

#include "field/Bridge.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace field {

/// The pose at a moment.
struct PoseLookup
{
    enum class State {
        Found,
        Wait, ///< a newer sample may still come
        Gap,  ///< there is none near enough, and none will come
    };
    State state = State::Gap;
    PoseSample pose;     ///< where Found; its moment is the one asked for
    Instant between{};   ///< distance of the two samples it lies between, or was drawn from
    bool beyond = false; ///< drawn beyond the newest sample
};

/// Samples in the order of their moments. With a span of up to ten seconds it allocates in the
/// constructor only; a longer one grows with what it holds.
class TILTPOLE_API PoseRing
{
public:
    static constexpr Instant kNeighbors = std::chrono::milliseconds(50);
    static constexpr Instant kNeighborsStill = std::chrono::milliseconds(200);
    static constexpr Instant kBeyond = std::chrono::milliseconds(20);
    static constexpr Instant kWait = std::chrono::milliseconds(40);

    /// @param span  kept behind the newest sample; at most ten minutes. Room is for 250 samples a
    ///              second; of a faster sensor a shorter span is kept
    explicit PoseRing(Instant span = std::chrono::seconds(5));

    /// @return false where `sample.moment` is not later than the newest; nothing changed
    bool Add(const PoseSample& sample);

    /// The pose at a moment.
    /// @param waited  how long the moment has waited for its newer neighbor already
    PoseLookup At(Instant moment, Instant waited = kWait) const;

    /// Whether the pole was still around a moment: over half a second to both sides, as far as
    /// known, pitch and roll stay within 0.3 degrees, magnetometer A within 5 % of its strength, a
    /// heading within 3 degrees. False where less than half a second is known.
    bool IsStill(Instant moment) const;

    /// Velocity of a vector that is a function of the pose, by the difference over 50 ms around
    /// `moment`, or over the last 50 ms where that is not known yet [unit of the vector a second].
    /// @param vectorOf  callable: xyhCoordinate of (const PoseSample&)
    template <class VectorOf>
    std::optional<xyhCoordinate> Velocity(Instant moment, const VectorOf& vectorOf) const;

    void Clear();
    std::size_t Size() const { return m_count; }
    /// From the oldest, 0.
    const PoseSample& Sample(std::size_t index) const;
    /// Index of the first sample at or after a moment; Size() where there is none.
    std::size_t FirstNotBefore(Instant moment) const;
    /// The most samples that are kept.
    std::size_t Room() const { return m_room; }

private:
    PoseLookup Drawn(std::size_t later, Instant moment) const;

    std::vector<PoseSample> m_samples; // ring, once it is full
    std::size_t m_room = 0;
    std::size_t m_front = 0;
    std::size_t m_count = 0;
    Instant m_span{};
};

template <class VectorOf>
std::optional<xyhCoordinate> PoseRing::Velocity(Instant moment, const VectorOf& vectorOf) const
{
    constexpr Instant kStep = std::chrono::milliseconds(50);
    Instant end = moment + kStep / 2;
    if (m_count == 0) return std::nullopt;
    const Instant newest = Sample(m_count - 1).moment;
    if (end > newest) end = newest;
    const PoseLookup a = At(end - kStep);
    const PoseLookup b = At(end);
    if (a.state != PoseLookup::State::Found || b.state != PoseLookup::State::Found)
        return std::nullopt;

    const double seconds = std::chrono::duration<double>(kStep).count();
    const xyhCoordinate from = vectorOf(a.pose);
    const xyhCoordinate to = vectorOf(b.pose);
    return xyhCoordinate{(to.x - from.x) / seconds, (to.y - from.y) / seconds,
                         (to.h - from.h) / seconds};
}

} // namespace field
