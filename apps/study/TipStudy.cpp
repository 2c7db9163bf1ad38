// SPDX-License-Identifier: MIT
#include "apps/study/TipStudy.h"

#include "apps/tables/Errors.h"
#include "apps/tables/ReadFile.h"
#include "simulation/trials/TipTrials.h"
#include <fmt/format.h>
#include <functional>
#include <memory>

namespace study {

namespace {

using simulation::AntennaCone;
using simulation::AntennaErrorList;

using Draw = std::function<AntennaErrorList(std::size_t, std::mt19937&)>;

struct Errors
{
    std::string name;
    Draw draw;
};

std::vector<AntennaCone> Cones()
{
    return {
        {4,  25.0, 360.0},
        {4,  40.0, 360.0},
        {6,  25.0, 360.0},
        {6,  40.0, 360.0},
        {8,  40.0, 360.0},
        {12, 25.0, 360.0},
        {12, 40.0, 360.0},
        {12, 40.0, 120.0},
        {16, 12.0, 360.0},
        {16, 25.0, 360.0},
        {15, 40.0, 90.0 },
        {30, 12.0, 360.0},
        {30, 40.0, 360.0},
        {60, 12.0, 360.0},
        {60, 25.0, 360.0},
        {60, 25.0, 180.0},
        {60, 40.0, 360.0},
        {60, 40.0, 60.0 },
    };
}

std::vector<Errors> KindsOfError(const std::string& recording)
{
    std::vector<Errors> kinds = {
        {"as stated", simulation::ErrorsAsStated},
        {"slow",      simulation::SlowErrors    }
    };
    if (recording.empty()) return kinds;
    tables::ReadFile(recording); // says why it cannot be read
    const auto recorded = std::make_shared<simulation::RecordedErrors>(recording);
    constexpr std::size_t kNeeded = std::size_t{60} * 15;
    if (recorded->Count() <= kNeeded)
        throw tables::InputError(recording,
                                 fmt::format("has {} epochs \"E N h time\", fewer than {}",
                                             recorded->Count(), kNeeded + 1));
    for (const std::size_t seconds : {1U, 4U, 15U}) {
        kinds.push_back({fmt::format("recorded, {} s", seconds),
                         [recorded, seconds](std::size_t count, std::mt19937& random) {
                             return recorded->Draw(count, seconds, random);
                         }});
    }
    return kinds;
}

// A share of few sets says nothing.
std::string Percent(int part, int whole)
{
    constexpr int kFew = 50;
    return whole < kFew ? "-" : fmt::format("{:.1f}", 100.0 * part / whole);
}

} // namespace

std::string TipStudy(int sets, std::uint64_t seed, const std::string& recording)
{
    std::string table = "| errors | positions | tilt to | width | stored [%] | ellipse holds [%] | "
                        "interval holds [%] | semi-major [mm] | worst [mm] |\n"
                        "|---|---|---|---|---|---|---|---|---|\n";
    for (const Errors& kind : KindsOfError(recording)) {
        for (const AntennaCone& cone : Cones()) {
            std::mt19937 random(static_cast<std::mt19937::result_type>(
                seed * 1000 + cone.count + static_cast<std::uint64_t>(cone.tilt)));
            simulation::TipCoverage c;
            for (int set = 0; set < sets; ++set) {
                const AntennaErrorList errors = kind.draw(cone.count, random);
                c.Count(quality::EstimateTip(AntennasOf(cone, errors, random), 2.0));
            }
            table +=
                fmt::format("| {} | {} | {:.0f}° | {:.0f}° | {:.1f} | {} | {} | {} | {} |\n",
                            kind.name, cone.count, cone.tilt, cone.width, 100.0 * c.stored / c.sets,
                            Percent(c.plan, c.stored), Percent(c.height, c.stored),
                            c.stored > 0 ? fmt::format("{:.0f}", 1000.0 * c.major) : "-",
                            c.stored > 0 ? fmt::format("{:.0f}", 1000.0 * c.worst) : "-");
        }
    }
    return table;
}

} // namespace study
