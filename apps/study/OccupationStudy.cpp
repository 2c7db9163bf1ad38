// SPDX-License-Identifier: MIT
#include "apps/study/OccupationStudy.h"

#include "apps/cli/occupy/OccupationLog.h"
#include "apps/cli/occupy/PointInWork.h"
#include "apps/cli/occupy/SpotSetup.h"
#include "apps/cli/occupy/TrueTips.h"
#include "apps/study/SimulatedPoints.h"
#include "apps/tables/Errors.h"
#include "field/SpotCalibration.h"
#include "simulation/trials/OccupationCases.h"
#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace study {

namespace {

using cli::OccupiedPoint;
using cli::OccupyResult;
using field::OccupationAdvice;
using simulation::OccupationCase;

constexpr double kMillimeters = 1000.0;

// What a pole that is rocked and turned on the spot for 20 s says of its sensors.
struct CalibratedPole
{
    std::uint64_t seed;
    field::SpotResult found;
};

std::vector<CalibratedPole> CalibrateOnTheSpot(int runs, std::uint64_t seed)
{
    std::vector<CalibratedPole> poles;
    simulation::OccupationPlan plan;
    plan.points = 1;
    plan.motion = simulation::UsualMotion(simulation::OccupationMotion::Free);
    const cli::OccupySetup raw;
    for (int i = 0; i < runs; ++i) {
        const std::uint64_t own = seed * kSeeds + static_cast<std::uint64_t>(i);
        field::SpotCalibration calibration({.poleLength = plan.poleLength});
        for (const simulation::OccupationRow& row :
             SimulateOccupations(simulation::CalibratedSensor(), {}, plan, own).rows) {
            const cli::LogRow taken = RowOf(row, raw);
            calibration.Add(
                taken.sample,
                field::SensorVector{row.sample.dMag_x_2, row.sample.dMag_y_2, row.sample.dMag_z_2});
            if (taken.epoch) calibration.Add(*taken.epoch);
        }
        poles.push_back({own, calibration.Estimate()});
    }
    return poles;
}

// One occupation by each pole that could be calibrated. A second point, since the first one has the
// noise of the calibration.
OccupyResult SimulatedAfter(const OccupationCase& occupation,
                            const std::vector<CalibratedPole>& poles)
{
    OccupyResult result;
    result.setup.occupation.poleLength = occupation.plan.poleLength;
    for (const CalibratedPole& pole : poles) {
        if (!pole.found.IsUsable()) continue;
        simulation::OccupationPlan plan = occupation.plan;
        plan.points = 2;
        plan.anew = false;
        const simulation::Occupations log =
            SimulateOccupations(occupation.sensor, {}, plan, pole.seed);
        cli::OccupySetup setup = result.setup;
        setup.spot.result = pole.found;
        cli::UseSpotCalibration(setup);
        cli::PointInWork work(setup);
        work.Begin(std::to_string(result.points.size() + 1));
        for (const simulation::OccupationRow& row : log.rows)
            if (row.point == 2) work.Add(RowOf(row, setup));
        result.points.push_back(work.End());
        CompareWithTip(result.points.back(), CoordinateOf(log.points[1].tip));
    }
    return result;
}

std::string Errors(tables::Percentiles& errors)
{
    if (errors.Count() == 0) return "-";
    return fmt::format("{:.1f} / {:.1f} / {:.1f}", kMillimeters * errors.At(0.5),
                       kMillimeters * errors.At(0.9), kMillimeters * errors.At(0.99));
}

std::uint64_t Advised(const OccupyResult& result, OccupationAdvice advice)
{
    return static_cast<std::uint64_t>(
        std::count_if(result.points.begin(), result.points.end(),
                      [&](const OccupiedPoint& point) { return point.estimate.advice == advice; }));
}

std::string MotionRow(const std::string& name, const OccupyResult& result)
{
    cli::ErrorSummary samples = SummaryOfSamples(result);
    cli::ErrorSummary means = SummaryOfMeans(result);
    cli::ErrorSummary all = SummaryOf(result, false);
    cli::ErrorSummary stored = SummaryOf(result, true);
    return fmt::format("| {} | {} | {} | {} | {} | {} | {} | {} | {} | {} |\n", name,
                       result.points.size(), Errors(samples.plan), Errors(means.plan),
                       Errors(all.plan), Share(all.inEllipse, all.Count()),
                       Share(stored.Count(), result.points.size()), Errors(stored.plan),
                       Share(stored.inEllipse, stored.Count()),
                       Share(stored.inInterval, stored.Count()));
}

// The sentence of the most frequent reason for `advice`, without its number.
std::string MostOften(const OccupyResult& result)
{
    std::map<field::OccupationReason, std::pair<int, const OccupiedPoint*>> reasons;
    for (const OccupiedPoint& point : result.points) {
        if (point.estimate.advice == OccupationAdvice::Store) continue;
        auto& [count, first] = reasons[point.estimate.reason];
        if (count++ == 0) first = &point;
    }
    const auto most =
        std::max_element(reasons.begin(), reasons.end(), [](const auto& a, const auto& b) {
            return a.second.first < b.second.first;
        });
    if (most == reasons.end()) return "-";
    const auto& [count, first] = most->second;
    return fmt::format("{} %: {}", Share(static_cast<std::uint64_t>(count), result.points.size()),
                       first->Reason());
}

std::string FaultRow(const std::string& name, const OccupyResult& result)
{
    cli::ErrorSummary stored = SummaryOf(result, true);
    const std::uint64_t points = result.points.size();
    return fmt::format("| {} | {} | {} | {} | {} | {} | {} | {} |\n", name,
                       Share(Advised(result, OccupationAdvice::Store), points),
                       Share(Advised(result, OccupationAdvice::Move), points),
                       Share(Advised(result, OccupationAdvice::Refuse), points),
                       Errors(stored.plan), Share(stored.inEllipse, stored.Count()),
                       Share(stored.inInterval, stored.Count()), MostOften(result));
}

OccupyResult Recorded(const RecordedPoints& recorded)
{
    cli::OccupySetup setup;
    setup.log = recorded.log;
    setup.truth = recorded.truth;
    setup.occupation.magneticBias = recorded.bias;
    setup.position.SetMagneticBiasAngle_A(recorded.bias);
    OccupyResult result = cli::EstimatePoints(setup, {});
    CompareWithTruth(result);
    return result;
}

} // namespace

std::string OccupationStudy(int runs, std::uint64_t seed, const std::string& only,
                            const RecordedPoints& recorded)
{
    const auto motions = CasesNamed(simulation::OccupationMotions(), only);
    const auto faults = CasesNamed(simulation::OccupationFaults(), only);
    if (motions.empty() && faults.empty())
        throw tables::InputError("no occupation has '" + only + "' in its name");
    std::string text = "| occupation | points | one sample [mm] | mean [mm] | occupation [mm] | "
                       "ellipse holds [%] | stored [%] | stored [mm] | ellipse holds [%] | "
                       "height holds [%] |\n"
                       "|---|---|---|---|---|---|---|---|---|---|\n";
    if (!recorded.log.empty()) text += MotionRow("recorded", Recorded(recorded));
    const auto calibrated =
        motions.empty() ? std::vector<CalibratedPole>() : CalibrateOnTheSpot(runs, seed);
    for (const OccupationCase& motion : motions) {
        text += MotionRow(motion.name, Simulated(motion, runs, seed));
        text += MotionRow(motion.name + ", calibrated", SimulatedAfter(motion, calibrated));
    }
    text += "\n| fault | store [%] | move [%] | refuse [%] | stored [mm] | ellipse holds [%] | "
            "height holds [%] | the others, most often |\n"
            "|---|---|---|---|---|---|---|---|\n";
    for (const OccupationCase& fault : faults)
        text += FaultRow(fault.name, Simulated(fault, runs, seed));
    return text;
}

} // namespace study
