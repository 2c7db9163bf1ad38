// SPDX-License-Identifier: MIT
#include "apps/cli/job/JobPoints.h"

#include "apps/tables/Numbers.h"
#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <set>
#include <tuple>

namespace cli {

namespace {

// Letters and a number behind them.
struct Numbered
{
    std::string_view stem;
    std::int64_t number;
};

std::optional<Numbered> NumberedOf(std::string_view name)
{
    std::size_t digits = 0;
    while (digits < name.size() && name[name.size() - 1 - digits] >= '0'
           && name[name.size() - 1 - digits] <= '9')
        ++digits;
    const std::string_view tail = name.substr(name.size() - digits);
    Numbered numbered{name.substr(0, name.size() - digits), 0};
    const auto read = std::from_chars(tail.data(), tail.data() + tail.size(), numbered.number);
    if (read.ec != std::errc()) return std::nullopt; // no digit, or too many
    return numbered;
}

bool InRange(std::string_view range, std::string_view name)
{
    const auto point = NumberedOf(name);
    for (std::size_t dash = range.find('-'); dash != std::string_view::npos;
         dash = range.find('-', dash + 1)) {
        const auto first = NumberedOf(range.substr(0, dash));
        const auto last = NumberedOf(range.substr(dash + 1));
        if (!first || !last || (!last->stem.empty() && last->stem != first->stem)) continue;
        if (last->number < first->number)
            throw tables::InputError(fmt::format("the range {} ends before it begins", range));
        if (point && point->stem == first->stem && first->number <= point->number
            && point->number <= last->number)
            return true;
    }
    return false;
}

} // namespace

field::JobStore OpenJob(const std::string& path, field::JobAccess access)
{
    return ValueOf(field::JobStore::Open(path, access));
}

std::vector<NamedPoint> PointsOf(const field::JobStore& job)
{
    std::vector<NamedPoint> points;
    std::map<std::int64_t, std::pair<std::string, std::int64_t>> roots; // name and id
    std::set<std::int64_t> replaced;
    for (field::JobPoint& point : ValueOf(job.Points())) {
        NamedPoint named{std::move(point), {}, 0, PointState::Current};
        // A row replaces an earlier one, whose name is known by now.
        named.name = named.point.name;
        named.first = named.point.id;
        if (named.point.replaces) {
            replaced.insert(*named.point.replaces);
            const auto first = roots.find(*named.point.replaces);
            if (first != roots.end()) std::tie(named.name, named.first) = first->second;
        }
        roots.emplace(named.point.id, std::pair(named.name, named.first));
        points.push_back(std::move(named));
    }
    for (NamedPoint& named : points) {
        if (named.point.voidReason)
            named.state = PointState::Void;
        else if (replaced.count(named.point.id) > 0)
            named.state = PointState::Replaced;
    }
    return points;
}

std::vector<NamedPoint> CurrentPointsOf(const field::JobStore& job)
{
    std::vector<NamedPoint> current;
    for (NamedPoint& named : PointsOf(job))
        if (named.state == PointState::Current) current.push_back(std::move(named));
    std::stable_sort(current.begin(), current.end(),
                     [](const NamedPoint& a, const NamedPoint& b) { return a.first < b.first; });
    return current;
}

bool Chooses(std::string_view choice, std::string_view name)
{
    if (choice == name || choice == "all") return true;
    while (!choice.empty()) {
        const std::string_view part = tables::Trim(choice.substr(0, choice.find(',')));
        if (part == name || InRange(part, name)) return true;
        if (choice.find(',') == std::string_view::npos) break;
        choice.remove_prefix(choice.find(',') + 1);
    }
    return false;
}

} // namespace cli
