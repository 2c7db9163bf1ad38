// SPDX-License-Identifier: MIT
#include "field/job/AveragedTip.h"

#include "field/Geodesy.h"
#include "field/job/FixRank.h"
#include "survey/Angle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace field {

namespace inner = tiltpole::field;
namespace survey = tiltpole::survey;

namespace {

using Step = std::array<double, 3>; // north, east, up [m]

constexpr Step kWhite{0.62, 0.39, 0.34}; // share of the antenna's standard deviation
constexpr double kSigmas = 3.0;
constexpr double kDeviations = 4.0 * 1.4826; // of the MAD; 1.4826 MAD is a standard deviation
constexpr double kLeastLimit = 0.002;        // [m]
constexpr std::size_t kFewest = 3;           // for a median to judge by

bool IsFinite(const Geodetic& place)
{
    return std::isfinite(place.latitude) && std::isfinite(place.longitude)
           && std::isfinite(place.ellipsoidalHeight);
}

bool IsFinite(const Covariance3& c)
{
    return std::isfinite(c.nn + c.ne + c.ee + c.nh + c.eh + c.hh);
}

// Near a pole there are no north and east.
bool HasPlan(const Geodetic& place)
{
    return std::abs(place.latitude) <= kLargestLatitude;
}

std::string Millimeters(double length)
{
    return std::to_string(std::lround(length * 1000.0)) + " mm";
}

double MedianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1) return *middle;
    return 0.5 * (*middle + *std::max_element(values.begin(), middle));
}

Covariance3 Scaled(const Covariance3& c, const Step& by)
{
    return {c.nn * by[0] * by[0], c.ne * by[0] * by[1], c.ee * by[1] * by[1],
            c.nh * by[0] * by[2], c.eh * by[1] * by[2], c.hh * by[2] * by[2]};
}

Covariance3 Sum(const Covariance3& a, const Covariance3& b, double share)
{
    return {a.nn + share * b.nn, a.ne + share * b.ne, a.ee + share * b.ee,
            a.nh + share * b.nh, a.eh + share * b.eh, a.hh + share * b.hh};
}

// The tips that are in the mean, and why the others are not.
class Selection
{
public:
    explicit Selection(std::span<const Tip> tips) : m_tips(tips)
    {
        for (std::size_t i = 0; i < tips.size(); ++i)
            m_used.push_back(i);
        LeaveOutIf([&](const Tip& tip) {
            const bool finite = IsFinite(tip.position) && IsFinite(tip.sigma)
                                && IsFinite(tip.epoch.antenna) && IsFinite(tip.epoch.sigma)
                                && HasPlan(tip.position) && HasPlan(tip.epoch.antenna);
            return std::string(finite ? "" : "a value is not a number");
        });
        LeaveOutWorseQuality();
        LeaveOutOtherStations();
        if (m_used.size() >= kFewest) LeaveOutOutliers();
    }

    const std::vector<std::size_t>& Used() const { return m_used; }

    std::vector<LeftOutTip> LeftOut() const
    {
        std::vector<LeftOutTip> sorted = m_leftOut;
        std::sort(sorted.begin(), sorted.end(),
                  [](const LeftOutTip& a, const LeftOutTip& b) { return a.index < b.index; });
        return sorted;
    }

private:
    // `why` is empty for tips that stay.
    template <class Why>
    void LeaveOutIf(const Why& why)
    {
        std::vector<std::size_t> stay;
        for (const std::size_t i : m_used) {
            std::string reason = why(m_tips[i]);
            if (reason.empty())
                stay.push_back(i);
            else
                m_leftOut.push_back({i, std::move(reason)});
        }
        m_used = std::move(stay);
    }

    void LeaveOutWorseQuality()
    {
        Fix best = Fix::Invalid;
        for (const std::size_t i : m_used)
            if (inner::FixRank(m_tips[i].epoch.fix) > inner::FixRank(best))
                best = m_tips[i].epoch.fix;
        LeaveOutIf([&](const Tip& tip) -> std::string {
            if (tip.epoch.fix == best) return {};
            return "quality " + std::to_string(static_cast<int>(tip.epoch.fix)) + ", others have "
                   + std::to_string(static_cast<int>(best));
        });
    }

    void LeaveOutOtherStations()
    {
        std::map<std::string, std::size_t> count;
        for (const std::size_t i : m_used)
            ++count[m_tips[i].epoch.station];
        std::string most;
        for (const std::size_t i : m_used) // of equally many, the first in time
            if (count[m_tips[i].epoch.station] > count[most]) most = m_tips[i].epoch.station;
        LeaveOutIf([&](const Tip& tip) -> std::string {
            if (tip.epoch.station == most) return {};
            return "reference station " + tip.epoch.station + ", most have " + most;
        });
    }

    Step StepTo(const Tip& tip) const
    {
        const xyhCoordinate step = Difference(m_tips[m_used.front()].position, tip.position);
        return {step.x, step.y, step.h};
    }

    void LeaveOutOutliers()
    {
        std::vector<Step> steps;
        steps.reserve(m_used.size());
        Covariance3 antenna;
        const double share = 1.0 / static_cast<double>(m_used.size());
        for (const std::size_t i : m_used) {
            steps.push_back(StepTo(m_tips[i]));
            antenna = Sum(antenna, m_tips[i].epoch.sigma, share);
        }
        const Step variance{antenna.nn, antenna.ee, antenna.hh};
        Step middle{};
        Step limit{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            std::vector<double> values;
            values.reserve(steps.size());
            for (const Step& step : steps)
                values.push_back(step[axis]);
            middle[axis] = MedianOf(values);
            for (double& value : values)
                value = std::abs(value - middle[axis]);
            limit[axis] = std::max({kSigmas * kWhite[axis] * std::sqrt(variance[axis]),
                                    kDeviations * MedianOf(values), kLeastLimit});
        }
        // StepTo counts from the first of the used ones, which may be left out here.
        const std::size_t first = m_used.front();
        LeaveOutIf([&](const Tip& tip) -> std::string {
            const xyhCoordinate off = Difference(m_tips[first].position, tip.position);
            const double north = off.x - middle[0];
            const double east = off.y - middle[1];
            const double up = off.h - middle[2];
            if (std::abs(north) > limit[0] || std::abs(east) > limit[1])
                return Millimeters(std::hypot(north, east)) + " off the median in plan";
            if (std::abs(up) > limit[2])
                return Millimeters(std::abs(up)) + " off the median in height";
            return {};
        });
    }

    std::span<const Tip> m_tips;
    std::vector<std::size_t> m_used;
    std::vector<LeftOutTip> m_leftOut;
};

Geodetic MeanOf(const std::vector<Geodetic>& places)
{
    xyhCoordinate sum;
    for (const Geodetic& place : places) {
        const xyhCoordinate step = Difference(places.front(), place);
        sum.x += step.x;
        sum.y += step.y;
        sum.h += step.h;
    }
    const auto count = static_cast<double>(places.size());
    return Offset(places.front(), sum.x / count, sum.y / count, sum.h / count);
}

} // namespace

TipAverage AveragedTip(std::span<const Tip> tips)
{
    const Selection selection(tips);
    TipAverage mean;
    mean.used = selection.Used().size();
    mean.leftOut = selection.LeftOut();
    if (mean.used == 0) return mean;

    const auto n = static_cast<double>(mean.used);
    std::vector<Geodetic> positions;
    std::vector<Geodetic> antennas;
    Covariance3 antenna;
    Covariance3 tip;
    Step lean{};
    for (const std::size_t i : selection.Used()) {
        positions.push_back(tips[i].position);
        antennas.push_back(tips[i].epoch.antenna);
        antenna = Sum(antenna, tips[i].epoch.sigma, 1.0 / n);
        tip = Sum(tip, tips[i].sigma, 1.0 / n);
        const double tilt = survey::Deg2Rad(tips[i].tilt);
        const double azimuth = survey::Deg2Rad(tips[i].azimuthTrue);
        lean[0] += std::sin(tilt) * std::cos(azimuth);
        lean[1] += std::sin(tilt) * std::sin(azimuth);
        lean[2] += std::cos(tilt);
    }
    Step shrink{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double white = kWhite[axis] * kWhite[axis];
        shrink[axis] = std::sqrt(1.0 - white + white / n);
    }
    mean.position = MeanOf(positions);
    mean.antenna = MeanOf(antennas);
    mean.sigma = Sum(Sum(tip, antenna, -1.0), Scaled(antenna, shrink), 1.0);
    mean.tilt = survey::Rad2Deg(std::atan2(std::hypot(lean[0], lean[1]), lean[2]));
    mean.azimuthTrue = survey::AdjustedAzimuth(survey::Rad2Deg(std::atan2(lean[1], lean[0])));
    return mean;
}

} // namespace field
