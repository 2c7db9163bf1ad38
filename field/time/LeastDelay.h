// SPDX-License-Identifier: MIT
//
// The time of a device on the host's clock. A line arrives later than the moment it tells of by a
// constant and by what buffers and radio add; the least of many differences is nearly the constant.
//
//   offset = min over the window (arrival − device time)
//   window   30 s; 60 s where samples come less often than five a second
//
// A mean would follow the load of the line, the least delay does not. Error p99 below 1 ms at 5 Hz
// and more, below 2 ms at 1 Hz, with a device clock 30 ppm off
// (LeastDelay.FindsTheOffsetThroughTheJitterOf...).
#pragma once

#include "field/Epoch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tiltpole::field {

using ::field::Instant;

/// One device. Memory is bounded at every rate; a sample costs amortized constant time.
class LeastDelay
{
public:
    /// Less than the second that a device repeats which does not know leap seconds [s].
    static constexpr double kLate = 0.9;

    /// @param deviceSeconds  time that the device gives [s], finite and not running back; whoever
    ///                       knows that it stepped calls Restart
    /// @param arrival        of the sample's last byte; not running back
    /// @return whether the filter began anew here: all samples of two seconds came later than the
    ///         offset has it by more than kLate
    bool Add(double deviceSeconds, Instant arrival);

    /// Time of the device on the host's clock; none before the first sample.
    std::optional<Instant> HostTime(double deviceSeconds) const;

    /// Mean distance of the samples [s]; 0 before the second one.
    double Period() const { return m_period; }

    void Restart();

private:
    // Least delay of the samples that arrived within one slice.
    struct Slice
    {
        std::int64_t index = 0; // of the slice, from the first arrival
        double offset = 0.0;    // [s]
    };
    static constexpr std::size_t kSlices = 256;

    void Begin(double deviceSeconds, Instant arrival);
    void Follow(double deviceSeconds);
    bool IsLateForLong(double offset, Instant arrival);
    void Keep(double offset, Instant arrival);
    const Slice& Front() const { return m_slices[m_front]; }
    Slice& Back() { return m_slices[(m_front + m_count - 1) % kSlices]; }

    std::array<Slice, kSlices> m_slices{}; // ring; offsets rise from front to back
    std::size_t m_front = 0;
    std::size_t m_count = 0;
    double m_deviceBase = 0.0; // first device time and arrival: differences stay small
    Instant m_hostBase{};
    double m_lastDevice = 0.0;
    double m_period = 0.0;
    std::optional<Instant> m_lateSince;
};

} // namespace tiltpole::field
