// SPDX-License-Identifier: MIT
//
// What a soak measures of its own process: times of calls, memory, descriptors.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>

namespace soak {

using Clock = std::chrono::steady_clock;

/// Processor time of the calling thread.
std::chrono::nanoseconds ProcessorTime();

/// Many times: bins that are 1.6 % of a time wide, a nanosecond at least.
class Histogram
{
public:
    void Add(std::chrono::nanoseconds time);

    std::int64_t Count() const { return m_count; }
    /// The time that `part` of all times do not exceed, the upper edge of its bin [us]; 0 of none.
    double Percentile(double part) const;
    double Most() const { return static_cast<double>(m_most) / 1000.0; } ///< exact [us]

private:
    static constexpr unsigned kFine = 6;     // bits of a time that tell its bin
    static constexpr unsigned kOctaves = 57; // above these, up to the longest time there is

    static std::size_t BinOf(std::uint64_t time);
    static std::uint64_t EndOf(std::size_t bin);

    std::array<std::int64_t, (kOctaves + 1) << kFine> m_bins{};
    std::int64_t m_count = 0;
    std::uint64_t m_most = 0; // [ns]
};

/// What the process holds.
struct Held
{
    long blocks = 0;   ///< of memory, by the calling thread; 0 where another allocator is in place
    long resident = 0; ///< memory [KiB]
    int descriptors = 0; ///< open files
};
Held HeldNow();

} // namespace soak
