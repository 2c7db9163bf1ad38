// SPDX-License-Identifier: MIT
#include "apps/cli/measure/TipsByPoint.h"

#include "apps/cli/JsonOutput.h"
#include "apps/cli/SummaryLine.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace cli {

namespace {

constexpr std::size_t kMostListed = 50;
constexpr std::size_t kMostMeans = 256;
constexpr std::size_t kFewestMeans = 3; // before and after a step
constexpr double kSmallestStep = 0.2;   // a bad heading moves tips by less when the pole leans [m]
constexpr double kStepSpreads = 4.0;    // of the tips about the two places

using Tips = std::array<tables::Extent, 3>;

double Width(const tables::Extent& extent)
{
    return extent.Max() - extent.Min();
}

std::string WidthsText(const Tips& tips)
{
    return fmt::format("{:.3f} x {:.3f} x {:.3f} m", Width(tips[0]), Width(tips[1]),
                       Width(tips[2]));
}

void AddTo(xyhCoordinate& sum, const xyhCoordinate& tip)
{
    sum.x += tip.x;
    sum.y += tip.y;
    sum.h += tip.h;
}

xyhCoordinate Share(const xyhCoordinate& sum, double count)
{
    return {sum.x / count, sum.y / count, sum.h / count};
}

double Square(const xyhCoordinate& v)
{
    return v.x * v.x + v.y * v.y + v.h * v.h;
}

} // namespace

void TipPlace::Add(const xyhCoordinate& tip)
{
    if (m_tips[0].Count() == 0) m_first = tip;
    m_tips[0].Add(tip.x);
    m_tips[1].Add(tip.y);
    m_tips[2].Add(tip.h);
    AddTo(m_sum, {tip.x - m_first.x, tip.y - m_first.y, tip.h - m_first.h});
    if (++m_filled < m_block) return;
    m_means.push_back(Share(m_sum, static_cast<double>(m_block)));
    m_sum = {};
    m_filled = 0;
    if (m_means.size() < kMostMeans) return;
    for (std::size_t i = 0; i < kMostMeans / 2; ++i) {
        AddTo(m_means[2 * i], m_means[2 * i + 1]);
        m_means[i] = Share(m_means[2 * i], 2.0);
    }
    m_means.resize(kMostMeans / 2);
    m_block *= 2;
}

bool TipPlace::IsNarrow() const
{
    return std::all_of(m_tips.begin(), m_tips.end(),
                       [](const tables::Extent& extent) { return Width(extent) <= kOnePlace; });
}

// From one place to another: the distance of the means before and after the moment that leaves the
// least squares about them, where it is far above their spread.
std::optional<double> TipPlace::Step() const
{
    xyhCoordinate all{};
    double squares = 0.0;
    for (const xyhCoordinate& mean : m_means) {
        AddTo(all, mean);
        squares += Square(mean);
    }
    const auto count = static_cast<double>(m_means.size());
    xyhCoordinate before{};
    double least = squares;
    double step = 0.0;
    for (std::size_t i = 1; i + kFewestMeans <= m_means.size(); ++i) {
        AddTo(before, m_means[i - 1]);
        if (i < kFewestMeans) continue;
        const auto head = static_cast<double>(i);
        const xyhCoordinate a = Share(before, head);
        const xyhCoordinate b =
            Share({all.x - before.x, all.y - before.y, all.h - before.h}, count - head);
        const double left = squares - head * Square(a) - (count - head) * Square(b);
        if (left >= least) continue;
        least = left;
        step = std::sqrt(Square({a.x - b.x, a.y - b.y, a.h - b.h}));
    }
    const double spread = std::sqrt(std::max(least, 0.0) / std::max(count, 1.0));
    if (step > kSmallestStep && step > kStepSpreads * spread) return step;
    return std::nullopt;
}

std::string TipPlace::Apart() const
{
    const auto step = IsNarrow() ? Step() : std::nullopt;
    if (step) return fmt::format("the tips step from one place to another, {:.3f} m away", *step);
    return fmt::format("the tips lie {} apart, not at one point", WidthsText(m_tips));
}

void TipsByPoint::Add(const xyhCoordinate& tip, std::optional<std::string_view> point)
{
    m_all.Add(tip);
    if (!point) return;
    m_named = true;
    const bool goesOn = !m_between && m_places.back().name == *point;
    m_between = point->empty();
    if (m_between) return;
    if (!goesOn) m_places.push_back({std::string(*point), {}});
    m_places.back().tips.Add(tip);
}

bool TipsByPoint::IsOnePlace() const
{
    return !m_named && m_all.LiesTogether();
}

std::string TipsByPoint::Text() const
{
    const Tips& all = m_all.Tips();
    if (IsOnePlace())
        return Line("tip, mean",
                    fmt::format("N {:.4f}  E {:.4f}  h {:.4f} m, of tips within {}", all[0].Mean(),
                                all[1].Mean(), all[2].Mean(), WidthsText(all)));
    if (!m_named)
        return Line("tip, mean", fmt::format("none: {}", m_all.Apart()))
               + Line("", "(a column `point` with names gives each point its mean)");
    std::size_t width = std::string_view("tip, mean of point").size();
    for (const Place& place : m_places)
        width = std::max(width, place.name.size() + 2);
    std::string text = fmt::format("{:<{}}{:>9}{:>15}{:>14}{:>11}  {}\n", "tip, mean of point",
                                   width, "samples", "N", "E", "h", "tips within");
    for (std::size_t i = 0; i < std::min(m_places.size(), kMostListed); ++i) {
        const TipPlace& place = m_places[i].tips;
        const Tips& tips = place.Tips();
        text += fmt::format("  {:<{}}{:>9}", m_places[i].name, width - 2, tips[0].Count());
        text += place.LiesTogether()
                    ? fmt::format(" {:14.4f} {:13.4f} {:10.4f}  {}\n", tips[0].Mean(),
                                  tips[1].Mean(), tips[2].Mean(), WidthsText(tips))
                    : fmt::format("  no mean: {}\n", place.Apart());
    }
    if (m_places.size() > kMostListed)
        text += fmt::format("  and {} more\n", m_places.size() - kMostListed);
    return text;
}

nlohmann::ordered_json TipsByPoint::Json() const
{
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const Place& place : m_places) {
        nlohmann::ordered_json point;
        point["point"] = place.name;
        const Tips& tips = place.tips.Tips();
        point["samples"] = tips[0].Count();
        point["mean_m"] = nullptr;
        if (place.tips.LiesTogether())
            point["mean_m"] = {
                {"N", Figure(tips[0].Mean())},
                {"E", Figure(tips[1].Mean())},
                {"h", Figure(tips[2].Mean())}
            };
        point["within_m"] = {
            {"N", Figure(Width(tips[0]))},
            {"E", Figure(Width(tips[1]))},
            {"h", Figure(Width(tips[2]))}
        };
        json.push_back(point);
    }
    return json;
}

} // namespace cli
