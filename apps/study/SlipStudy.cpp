// SPDX-License-Identifier: MIT
#include "apps/study/SlipStudy.h"

#include "apps/cli/occupy/TrueTips.h"
#include "apps/study/SimulatedPoints.h"
#include "apps/tables/Errors.h"
#include "simulation/Random.h"
#include "survey/Angle.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>

namespace study {

namespace {

using cli::OccupiedPoint;
using cli::OccupyResult;
using field::OccupationAdvice;
using field::OccupationReason;
using simulation::OccupationCase;

constexpr double kSlip = 0.03;        // [m]
constexpr double kLengthError = 0.05; // [m]
constexpr double kMillimeters = 1000.0;

// The same pole on three points.
struct Points
{
    OccupyResult slipped;
    OccupyResult wrongLength;
    OccupyResult sound;
};

void SetSlip(OccupationCase& occupation, std::uint64_t seed)
{
    constexpr double kMargin = 1.0; // at either end [s]
    simulation::Generator random(seed, simulation::Stream::Outliers);
    const double azimuth = tiltpole::survey::Deg2Rad(random.Uniform(0.0, 360.0));
    simulation::Slip slip;
    slip.at = random.Uniform(kMargin, occupation.plan.motion.duration - kMargin);
    slip.by = {kSlip * std::cos(azimuth), kSlip * std::sin(azimuth), 0.0};
    occupation.plan.motion.slips = {slip};
}

Points Occupy(const OccupationCase& motion, int runs, std::uint64_t seed)
{
    Points points;
    const auto occupy = [](OccupyResult& result, const OccupationCase& occupation,
                           std::uint64_t own) {
        OccupyResult one = Simulated(occupation, 1, own);
        std::move(one.points.begin(), one.points.end(), std::back_inserter(result.points));
    };
    for (int i = 0; i < runs; ++i) {
        const std::uint64_t own = seed + static_cast<std::uint64_t>(i);
        OccupationCase slipped = motion;
        SetSlip(slipped, own);
        occupy(points.slipped, slipped, own);
        OccupationCase wrong = motion;
        wrong.plan.poleError = i % 2 == 0 ? kLengthError : -kLengthError;
        occupy(points.wrongLength, wrong, own);
        occupy(points.sound, motion, own);
    }
    return points;
}

template <class Is>
std::string ShareOf(const OccupyResult& result, Is is)
{
    const auto count = std::count_if(result.points.begin(), result.points.end(), is);
    return Share(static_cast<std::uint64_t>(count), result.points.size());
}

std::string Named(const OccupyResult& result, OccupationReason reason)
{
    return ShareOf(result, [reason](const OccupiedPoint& point) {
        return !point.contradiction && point.estimate.reason == reason;
    });
}

std::string Advised(const OccupyResult& result, OccupationAdvice advice)
{
    return ShareOf(
        result, [advice](const OccupiedPoint& point) { return point.estimate.advice == advice; });
}

std::string FaultRow(const std::string& name, const Points& points)
{
    return fmt::format("| {} | {} | {} | {} | {} | {} | {} | {} |\n", name,
                       Named(points.slipped, OccupationReason::TipMoved),
                       Advised(points.slipped, OccupationAdvice::Store),
                       Named(points.wrongLength, OccupationReason::WrongLength),
                       Named(points.wrongLength, OccupationReason::TipMoved),
                       Advised(points.wrongLength, OccupationAdvice::Store),
                       Advised(points.sound, OccupationAdvice::Refuse),
                       Advised(points.sound, OccupationAdvice::Store));
}

std::string EllipseRow(const std::string& name, const OccupyResult& sound)
{
    cli::ErrorSummary stored = SummaryOf(sound, true);
    if (stored.Count() == 0) return fmt::format("| {} | - | - | - | - |\n", name);
    std::vector<double> axes;
    for (const OccupiedPoint& point : sound.points)
        if (point.estimate.advice == OccupationAdvice::Store)
            axes.push_back(point.estimate.ellipseMajor);
    const auto middle = axes.begin() + static_cast<std::ptrdiff_t>(axes.size() / 2);
    std::nth_element(axes.begin(), middle, axes.end());
    return fmt::format("| {} | {:.1f} | {:.1f} | {} | {} |\n", name,
                       kMillimeters * stored.plan.At(0.95), kMillimeters * *middle,
                       Share(stored.inEllipse, stored.Count()),
                       Share(stored.inInterval, stored.Count()));
}

} // namespace

std::string SlipStudy(int runs, std::uint64_t seed, const std::string& only)
{
    const auto motions = CasesNamed(simulation::SlipMotions(), only);
    if (motions.empty()) throw tables::InputError("no occupation has '" + only + "' in its name");
    std::string faults = "| motion | slip: named [%] | stored [%] | wrong length: named [%] | "
                         "named a slip [%] | stored [%] | nothing wrong: refused [%] | "
                         "stored [%] |\n|---|---|---|---|---|---|---|---|\n";
    std::string ellipses = "| motion | errors, 95 % [mm] | median semi-major axis [mm] | "
                           "ellipse holds [%] | height holds [%] |\n|---|---|---|---|---|\n";
    for (const OccupationCase& motion : motions) {
        const Points points = Occupy(motion, runs, kSeeds * seed);
        faults += FaultRow(motion.name, points);
        ellipses += EllipseRow(motion.name, points.sound);
    }
    return faults + "\n" + ellipses;
}

} // namespace study
