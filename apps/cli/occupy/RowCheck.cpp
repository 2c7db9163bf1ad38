// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/RowCheck.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace {

constexpr std::size_t kMostIntervals = 1000;
constexpr std::size_t kFewestIntervals = 8;
constexpr double kShortestInterval = 0.002; // [s]
constexpr double kLongestInterval = 0.25;   // [s]
constexpr double kFewestSamples = 8.0;
constexpr double kOffGravity = 0.2;         // [g]
constexpr double kNoForce = 0.01;           // [g]
constexpr std::uint64_t kFewestHeights = 8; // epochs
constexpr double kMoves = 0.05;             // of the antenna, far above its noise [m]
constexpr double kReach = 2.2;              // of the antenna from one side to the other [lengths]
constexpr double kSlow = 5.0;               // no pole is led like that all the time [degrees/s]

double Width(const tables::Extent& extent)
{
    return extent.Count() > 0 ? extent.Max() - extent.Min() : 0.0;
}

} // namespace

void RowCheck::Add(const LogRow& row)
{
    const field::InertialSample& sample = row.sample;
    const bool counts = m_last && sample.seconds > *m_last && m_intervals.size() < kMostIntervals;
    if (counts) m_intervals.push_back(sample.seconds - *m_last);
    if (m_last && sample.seconds <= *m_last) m_late += 1.0;
    m_last = sample.seconds;
    const field::SensorVector& a = sample.acceleration;
    m_samples += 1.0;
    m_length += std::hypot(a.x, a.y, a.z);
    m_force[0] += a.x;
    m_force[1] += a.y;
    m_force[2] += a.z;
    m_fastest = std::max(m_fastest, std::hypot(sample.rate.x, sample.rate.y, sample.rate.z));
    if (!row.epoch) return;
    m_antenna[0].Add(row.epoch->position.x);
    m_antenna[1].Add(row.epoch->position.y);
    m_antenna[2].Add(row.epoch->position.h);
}

std::optional<std::string> RowCheck::TimeProblem() const
{
    if (m_intervals.size() < kFewestIntervals) return std::nullopt;
    std::vector<double> intervals = m_intervals;
    const auto middle = intervals.begin() + static_cast<std::ptrdiff_t>(intervals.size() / 2);
    std::nth_element(intervals.begin(), middle, intervals.end());
    if (*middle >= kShortestInterval && *middle <= kLongestInterval) return std::nullopt;
    return fmt::format("the rows are {:.2g} s apart, not 0.002 to 0.25 s: is the time in seconds?",
                       *middle);
}

// The pole's own motion lengthens the accelerations, but it leaves their mean; a turn of the pole
// shortens the mean, but it leaves their lengths.
std::optional<std::string> RowCheck::AccelerationProblem() const
{
    if (m_samples < kFewestSamples) return std::nullopt;
    const double length = m_length / m_samples;
    const double mean = std::hypot(m_force[0], m_force[1], m_force[2]) / m_samples;
    if (length < kNoForce) return "the accelerations are 0 throughout: is there an accelerometer?";
    if (length >= 1.0 - kOffGravity && mean <= 1.0 + kOffGravity) {
        const double along = m_force[2] / m_samples;
        if (along >= 0.0) return std::nullopt;
        return fmt::format("the accelerations average {:.2f} g along z, where a plumb pole at rest "
                           "reads +1 g: are the signs reversed?",
                           along);
    }
    const char* const unit = std::fabs(length - 9.8) < 2.5 ? "m/s²" : "another unit";
    return fmt::format("the accelerations average {:.2f} g: are they in {}?", length, unit);
}

std::optional<std::string> RowCheck::HeightProblem() const
{
    const tables::Extent& height = m_antenna[2];
    if (height.Count() < kFewestHeights || Width(height) > 0.0) return std::nullopt;
    if (height.Min() != 0.0 && !(Moves() > kMoves)) return std::nullopt;
    return fmt::format("the antenna's height is {:.3f} m throughout: the log lacks heights",
                       height.Min());
}

std::optional<std::string> RowCheck::ExtentProblem(double poleLength) const
{
    if (!(Moves() > kReach * poleLength)) return std::nullopt;
    return fmt::format("the antenna moves by {:.1f} m, further than this pole can: are several "
                       "places one point?",
                       Moves());
}

std::optional<std::string> RowCheck::RateProblem() const
{
    if (!(Moves() > kMoves) || m_fastest >= kSlow) return std::nullopt;
    return fmt::format("the antenna moves but no rate is above {:.2g} degrees per second: are the "
                       "rates in degrees per second?",
                       m_fastest);
}

double RowCheck::Moves() const
{
    return std::max(Width(m_antenna[0]), Width(m_antenna[1]));
}

} // namespace cli
