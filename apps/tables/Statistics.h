// SPDX-License-Identifier: MIT
//
// Percentiles of a stream of numbers in bounded memory.
//
// They are exact for up to kExact values, interpolated linearly between ranks: the median of two
// values is their mean. Beyond that, values are counted in bins 1/512 of a power of two wide, and a
// percentile is the center of its bin: within 0.1 % of the value at that rank.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tables {

/// Minimum, maximum and mean of a stream of finite numbers; 0 before the first one.
class Extent
{
public:
    void Add(double value);

    std::uint64_t Count() const { return m_count; }
    double Min() const { return m_min; }
    double Max() const { return m_max; }
    double Mean() const { return m_mean; }

private:
    std::uint64_t m_count = 0;
    double m_min = 0.0;
    double m_max = 0.0;
    double m_mean = 0.0;
};

class Percentiles
{
public:
    static constexpr std::size_t kExact = std::size_t{1} << 18;

    /// @param value  finite; magnitudes below 1e-9 count as 0 and above 1e12 as 1e12 once binned
    void Add(double value);

    /// @param fraction  0 to 1: 0.5 is the median
    /// @return 0 before the first value
    double At(double fraction);

    std::uint64_t Count() const { return m_extent.Count(); }
    double Min() const { return m_extent.Min(); } // exact at any count
    double Max() const { return m_extent.Max(); }
    double Mean() const { return m_extent.Mean(); }
    bool IsExact() const { return m_bins.empty(); }

private:
    void Bin(double value);
    double BinnedAt(std::uint64_t rank) const;

    Extent m_extent;
    bool m_sorted = true;
    std::vector<double> m_values;
    std::vector<std::uint64_t> m_bins; // counts, from the lowest value to the highest
};

} // namespace tables
