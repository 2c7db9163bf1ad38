// SPDX-License-Identifier: MIT
#include "apps/tables/Statistics.h"

#include <algorithm>
#include <cmath>

namespace tables {

namespace {

constexpr int kBinsPerOctave = 512;
constexpr int kLowestExponent = -30; // 2^-30 is about 1e-9
constexpr int kHighestExponent = 40; // 2^40 is about 1e12
constexpr double kSmallest = 1e-9;
constexpr double kLargest = 1e12;
constexpr int kHighestBin = 1 + (kHighestExponent - kLowestExponent + 1) * kBinsPerOctave;

// Bin 0 is zero; bin n > 0 is the n-th step above it, bin -n the same step below.
int BinOf(double value)
{
    const double magnitude = std::min(std::fabs(value), kLargest);
    if (magnitude < kSmallest) return 0;

    int exponent = 0;
    const double mantissa = std::frexp(magnitude, &exponent); // in [0.5, 1)
    const int step = static_cast<int>((mantissa - 0.5) * 2.0 * kBinsPerOctave);
    const int bin = 1 + (exponent - kLowestExponent) * kBinsPerOctave + step;
    return value < 0.0 ? -bin : bin;
}

double MiddleOf(int bin)
{
    if (bin == 0) return 0.0;
    const int index = std::abs(bin) - 1;
    const double step = index % kBinsPerOctave + 0.5;
    const double mantissa = 0.5 + step / (2.0 * kBinsPerOctave);
    const double middle = std::ldexp(mantissa, index / kBinsPerOctave + kLowestExponent);
    return bin < 0 ? -middle : middle;
}

} // namespace

void Extent::Add(double value)
{
    m_min = m_count == 0 ? value : std::min(m_min, value);
    m_max = m_count == 0 ? value : std::max(m_max, value);
    ++m_count;
    m_mean += (value - m_mean) / static_cast<double>(m_count);
}

void Percentiles::Add(double value)
{
    m_extent.Add(value);
    if (m_values.size() == kExact) {
        m_bins.resize(2 * kHighestBin + 1);
        for (const double held : m_values)
            Bin(held);
        m_values = {};
    }
    if (!m_bins.empty()) {
        Bin(value);
        return;
    }
    m_values.push_back(value);
    m_sorted = false;
}

double Percentiles::At(double fraction)
{
    if (Count() == 0) return 0.0;
    const double rank = std::clamp(fraction, 0.0, 1.0) * static_cast<double>(Count() - 1);
    if (!IsExact()) {
        const double value = BinnedAt(static_cast<std::uint64_t>(std::llround(rank)));
        return std::clamp(value, Min(), Max());
    }

    if (!m_sorted) std::sort(m_values.begin(), m_values.end());
    m_sorted = true;
    const auto below = static_cast<std::size_t>(rank);
    const std::size_t above = std::min(below + 1, m_values.size() - 1);
    return std::lerp(m_values[below], m_values[above], rank - std::floor(rank));
}

double Percentiles::BinnedAt(std::uint64_t rank) const
{
    std::uint64_t seen = 0;
    int bin = -kHighestBin;
    for (const std::uint64_t count : m_bins) {
        seen += count;
        if (seen > rank) return MiddleOf(bin);
        ++bin;
    }
    return Max();
}

void Percentiles::Bin(double value)
{
    const int fromLowest = BinOf(value) + kHighestBin;
    ++m_bins[static_cast<std::size_t>(fromLowest)];
}

} // namespace tables
