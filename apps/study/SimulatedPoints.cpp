// SPDX-License-Identifier: MIT
#include "apps/study/SimulatedPoints.h"

#include "apps/cli/occupy/OccupationLog.h"
#include "apps/cli/occupy/PointInWork.h"
#include "apps/cli/occupy/TrueTips.h"
#include <algorithm>
#include <fmt/format.h>

namespace study {

using simulation::OccupationCase;

xyhCoordinate CoordinateOf(const simulation::Point3& p)
{
    return {p.x, p.y, p.z};
}

cli::LogRow RowOf(const simulation::OccupationRow& row, const cli::OccupySetup& setup)
{
    const double seconds = row.truth.pose.seconds;
    cli::LogRow taken{cli::SampleOf(row.sample, seconds, setup), row.sample, std::nullopt};
    if (row.antenna)
        taken.epoch = field::AntennaEpoch{seconds, CoordinateOf(*row.antenna), 0.0, 0.0};
    return taken;
}

cli::OccupyResult Simulated(const OccupationCase& occupation, int points, std::uint64_t seed)
{
    cli::OccupyResult result;
    result.setup.occupation.poleLength = occupation.plan.poleLength;
    simulation::OccupationPlan plan = occupation.plan;
    plan.points = points;
    const simulation::EarthField earth;
    // As with --field: a field that differs has no vote on the heading.
    if (!plan.magnets.empty()) result.setup.field = {earth.strength, earth.dip};
    const simulation::Occupations log = SimulateOccupations(occupation.sensor, earth, plan, seed);
    cli::PointInWork work(result.setup);
    const auto end = [&] {
        result.points.push_back(work.End());
        const auto& planted = log.points[result.points.size() - 1];
        CompareWithTip(result.points.back(), CoordinateOf(planted.tip));
    };
    int number = 0;
    for (const simulation::OccupationRow& row : log.rows) {
        if (row.point != number) {
            if (work.HasBegun()) end();
            work.Begin(std::to_string(row.point));
            number = row.point;
        }
        work.Add(RowOf(row, result.setup));
    }
    if (work.HasBegun()) end();
    return result;
}

std::vector<OccupationCase> CasesNamed(std::vector<OccupationCase> cases, const std::string& only)
{
    std::erase_if(cases,
                  [&](const OccupationCase& c) { return c.name.find(only) == std::string::npos; });
    return cases;
}

std::string Share(std::uint64_t part, std::uint64_t whole)
{
    return whole == 0 ? "-"
                      : fmt::format("{:.1f}",
                                    100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

} // namespace study
