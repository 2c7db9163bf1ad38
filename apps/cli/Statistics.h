// SPDX-License-Identifier: MIT
//
// Percentiles of a stream of numbers in bounded memory.
//
// Up to kExact values they are exact (linear between neighbours in rank, so that the median of
// two is their mean). Beyond it the values move into bins whose width is 1/512 of their power of
// two, and a percentile is the middle of its bin: within 0.1 % of the value at that rank.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cli {

/// Least, greatest and mean of a stream of finite numbers; 0 while nothing was added.
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
    /// @return 0 while nothing was added
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

} // namespace cli
