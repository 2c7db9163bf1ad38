// SPDX-License-Identifier: MIT
#include "apps/study/LiveStudy.h"

#include "apps/tables/Errors.h"
#include "field/Geodesy.h"
#include "field/bridge/OccupationWatch.h"
#include "simulation/Occupation.h"
#include <chrono>
#include <cmath>
#include <fmt/format.h>
#include <optional>
#include <utility>
#include <vector>

namespace study {

namespace {

using field::OccupationAdvice;
using field::OccupationEstimate;
using simulation::OccupationMotion;

constexpr field::Geodetic kTip{47.57, 19.0, 150.0};
constexpr double kShareInPlan = 0.003;    // of the antenna's error, common to all epochs [m]
constexpr double kShareInHeight = 0.0105; // [m]
constexpr double kPlan = 0.004;           // its other errors [m]
constexpr double kHeight = 0.011;         // [m]
constexpr double kRate = 100.0;           // of the poses [Hz]
constexpr double kSlip = 0.03;            // [m]
constexpr double kSlipping = 0.2;         // [s]
constexpr double kSettled = 0.5; // after the begin of a slip, from which it must not be stored [s]

struct Line
{
    std::string name;
    simulation::PlantedMotion motion;
    double lasting = 0.0; // correlation time of the antenna's errors, 0: new in each epoch [s]
    int epochRate = 10;   // [Hz], a part of kRate
    bool mixed = false;   // white and slow parts as recorded
    std::uint64_t number = 0;
};

// One estimate of a live pole.
struct Moment
{
    double seconds = 0.0; // since the start of the run
    int occupation = 0;   // from 0
    OccupationEstimate estimate;
    xyhCoordinate error; // of the tip against where it stood at first [m]
    double risen = 0.0;  // the true tip since then [m]
};

field::Instant InstantOf(double seconds)
{
    return std::chrono::microseconds(std::llround(1e6 * seconds));
}

simulation::AntennaNoise NoiseOf(const Line& line)
{
    if (line.mixed) {
        constexpr double kWhitePlan = 0.5;    // share of the standard deviation
        constexpr double kWhiteHeight = 0.34; // likewise
        return {kWhitePlan * kPlan, kWhiteHeight * kHeight,
                std::sqrt(1.0 - kWhitePlan * kWhitePlan) * kPlan,
                std::sqrt(1.0 - kWhiteHeight * kWhiteHeight) * kHeight, line.lasting};
    }
    if (line.lasting == 0.0) return {kPlan, kHeight, 0.0, 0.0, 1.0};
    return {0.0, 0.0, kPlan, kHeight, line.lasting};
}

std::vector<Moment> Run(const Line& line, const std::vector<simulation::Slip>& slips,
                        std::uint64_t seed)
{
    simulation::OccupationPlan plan;
    plan.points = 1;
    plan.rate = kRate;
    plan.antennaRate = 1.0;
    plan.motion = line.motion;
    plan.motion.slips = slips;
    const auto log =
        SimulateOccupations(simulation::CalibratedSensor(), simulation::EarthField{}, plan, seed);
    simulation::AntennaErrors noise(NoiseOf(line), 1.0 / line.epochRate, seed);
    simulation::Generator random(seed, simulation::Stream::Epochs);
    const double shared[] = {kShareInPlan * random.Normal(), kShareInPlan * random.Normal(),
                             kShareInHeight * random.Normal()};
    const double offset = random.Uniform(0.0, 1.0 / kRate); // of the clocks
    field::Setup setup;
    setup.delaySigma = 0.007;
    setup.north = field::NorthSource::File;
    tiltpole::field::OccupationWatch watch(setup);
    std::vector<Moment> moments;
    int occupation = -1;
    double estimated = 0.0;
    const int every = static_cast<int>(kRate) / line.epochRate;
    for (std::size_t i = 0; i < log.rows.size(); ++i) {
        const simulation::OccupationRow& row = log.rows[i];
        const double seconds = row.truth.pose.seconds;
        field::PoseSample pose;
        pose.data = row.sample;
        pose.moment = InstantOf(1.0 + offset + seconds);
        watch.Add(pose, false);
        if (i % static_cast<std::size_t>(every) != 0) continue;
        const simulation::Point3 own = noise.Next();
        const simulation::Point3& tip = log.points.front().tip;
        field::Epoch epoch;
        epoch.fix = field::Fix::Fixed;
        epoch.antenna = field::Offset(kTip, row.truth.antenna.x - tip.x + own.x + shared[0],
                                      row.truth.antenna.y - tip.y + own.y + shared[1],
                                      row.truth.antenna.z - tip.z + own.z + shared[2]);
        epoch.sigma.nn = epoch.sigma.ee = kPlan * kPlan;
        epoch.sigma.hh = kHeight * kHeight;
        epoch.moment = pose.moment;
        watch.Add(epoch, std::nullopt, 0.0);
        if (!watch.Estimate()) {
            if (estimated > 0.0 || occupation < 0) ++occupation;
            estimated = 0.0;
            continue;
        }
        if (watch.Estimate()->seconds == estimated) continue;
        estimated = watch.Estimate()->seconds;
        Moment moment{seconds, occupation, *watch.Estimate(), {}, row.truth.tip.z - tip.z};
        if (const auto found = watch.Tip()) moment.error = field::Difference(kTip, *found);
        moments.push_back(moment);
    }
    return moments;
}

bool IsStored(const Moment& moment)
{
    return moment.estimate.advice == OccupationAdvice::Store;
}

bool HoldsInPlan(const Moment& moment)
{
    const auto& c = moment.estimate.covariance;
    const double determinant = c[0][0] * c[1][1] - c[0][1] * c[0][1];
    const xyhCoordinate& e = moment.error;
    const double square =
        (c[1][1] * e.x * e.x - 2.0 * c[0][1] * e.x * e.y + c[0][0] * e.y * e.y) / determinant;
    return square <= 5.9914645471;
}

bool HoldsInHeight(const Moment& moment, double risen)
{
    return std::fabs(moment.error.h - risen) <= moment.estimate.heightHalfInterval;
}

// Runs whose tip moves.
struct Moved
{
    int runs = 0;
    int named = 0;
    int kept = 0;   // stored in spite of it
    int missed = 0; // with a height interval that misses where the tip stood at first, or stands
};

struct Count
{
    int runs = 0;
    int some = 0;    // stored at some estimate
    int last = 0;    // at the last one
    int refused = 0; // a run in which an estimate refused
    int estimates = 0;
    int plan = 0;
    int height = 0;
    int firstPlan = 0;
    int firstHeight = 0;
    Moved slips;
    Moved sunk;
};

void CountRun(Count& count, const std::vector<Moment>& moments)
{
    ++count.runs;
    bool first = true;
    bool refused = false;
    for (const Moment& moment : moments) {
        refused = refused || moment.estimate.advice == OccupationAdvice::Refuse;
        if (!IsStored(moment)) continue;
        const bool plan = HoldsInPlan(moment);
        const bool height = HoldsInHeight(moment, 0.0);
        ++count.estimates;
        count.plan += plan ? 1 : 0;
        count.height += height ? 1 : 0;
        if (!std::exchange(first, false)) continue;
        count.firstPlan += plan ? 1 : 0;
        count.firstHeight += height ? 1 : 0;
    }
    count.some += first ? 0 : 1;
    count.refused += refused ? 1 : 0;
    count.last += !moments.empty() && IsStored(moments.back()) ? 1 : 0;
}

// Of the occupation during which the tip moves.
void CountMoved(Moved& count, const std::vector<Moment>& moments, double at)
{
    ++count.runs;
    std::optional<int> during;
    bool named = false;
    bool kept = false;
    bool missed = false;
    for (const Moment& moment : moments) {
        if (moment.seconds < at) {
            during =
                moment.occupation + (moment.estimate.advice == OccupationAdvice::Refuse ? 1 : 0);
            continue;
        }
        if (!during) during = moment.occupation;
        if (moment.occupation != *during) continue;
        named = named || moment.estimate.advice == OccupationAdvice::Refuse;
        if (moment.seconds <= at + kSettled || !IsStored(moment)) continue;
        kept = true;
        missed = missed || !HoldsInHeight(moment, 0.0) || !HoldsInHeight(moment, moment.risen);
    }
    count.named += named ? 1 : 0;
    count.kept += kept ? 1 : 0;
    count.missed += missed ? 1 : 0;
}

std::string Percent(int part, int whole)
{
    return whole == 0 ? "-" : fmt::format("{:.1f}", 100.0 * part / whole);
}

std::string RowOf(const Line& line, const Count& c)
{
    return fmt::format("| {} | {} / {} | {} | {} / {} | {} / {} / {} | {} / {} | {} / {} |\n",
                       line.name, Percent(c.some, c.runs), Percent(c.last, c.runs),
                       Percent(c.refused, c.runs), Percent(c.slips.named, c.slips.runs),
                       Percent(c.slips.kept, c.slips.runs), Percent(c.sunk.named, c.sunk.runs),
                       Percent(c.sunk.kept, c.sunk.runs), Percent(c.sunk.missed, c.sunk.runs),
                       Percent(c.plan, c.estimates), Percent(c.firstPlan, c.some),
                       Percent(c.height, c.estimates), Percent(c.firstHeight, c.some));
}

std::vector<Line> Lines(const std::string& only)
{
    const std::pair<const char*, simulation::PlantedMotion> motions[] = {
        {"rocked slowly from 12 to 28 degrees",
         {.motion = OccupationMotion::Rock,
          .duration = 10.0,
          .leanFrom = 20.0,
          .amplitude = 8.0,
          .frequency = 0.24}                                                   },
        {"rocked by 5 degrees about 10",
         {.motion = OccupationMotion::Rock, .duration = 10.0, .leanFrom = 10.0}},
        {"lean in from 5 to 30 degrees",
         {.motion = OccupationMotion::LeanIn, .duration = 10.0, .leanTo = 30.0}},
        {"rocked and turned",
         {.motion = OccupationMotion::Free,
          .duration = 10.0,
          .leanFrom = 10.0,
          .amplitude = 15.0,
          .frequency = 0.4,
          .turn = 180.0}                                                       },
    };
    struct Errors
    {
        const char* name;
        double lasting;
        bool mixed;
    };
    constexpr Errors errors[] = {
        {"new in each epoch",   0.0,  false},
        {"lasting 1 s",         1.0,  false},
        {"lasting 3 s",         3.0,  false},
        {"lasting 10 s",        10.0, false},
        {"partly lasting 30 s", 30.0, true }
    };
    std::vector<Line> lines;
    std::uint64_t number = 0;
    for (const auto& [motion, moved] : motions)
        for (const Errors& error : errors)
            for (const int rate : {1, 5, 10, 20}) {
                Line line{fmt::format("{}, {}, {} Hz", motion, error.name, rate),
                          moved,
                          error.lasting,
                          rate,
                          error.mixed,
                          number++};
                if (line.name.find(only) != std::string::npos) lines.push_back(line);
            }
    return lines;
}

} // namespace

std::string LiveStudy(int runs, std::uint64_t seed, const std::string& only)
{
    constexpr std::uint64_t kLines = 1000;
    constexpr std::uint64_t kRuns = 1000000; // seeds of one line
    const std::vector<Line> lines = Lines(only);
    if (lines.empty()) throw tables::InputError("no line has '" + only + "' in its name");
    std::string text = "| live pole | stored at some time / at the end [%] | refused at some time "
                       "[%] | slip of 30 mm named / "
                       "stored [%] | sunk by 30 mm named / stored / height misses first or last "
                       "place [%] | ellipse holds: all / first stored [%] | height holds: all / "
                       "first stored [%] |\n"
                       "|---|---|---|---|---|---|---|\n";
    for (const Line& line : lines) {
        Count count;
        for (int i = 0; i < runs; ++i) {
            const std::uint64_t own =
                (seed * kLines + line.number) * kRuns + static_cast<std::uint64_t>(i);
            CountRun(count, Run(line, {}, own));
            simulation::Generator random(own, simulation::Stream::Placement);
            const double at = random.Uniform(1.0, line.motion.duration - 1.0);
            const double azimuth = random.Uniform(0.0, 6.283185307);
            const auto movedBy = [&](const simulation::Point3& by) {
                const simulation::Slip slip{.at = at, .duration = kSlipping, .by = by};
                return Run(line, {slip}, own);
            };
            CountMoved(count.slips,
                       movedBy({kSlip * std::cos(azimuth), kSlip * std::sin(azimuth), 0.0}), at);
            CountMoved(count.sunk, movedBy({0.0, 0.0, -kSlip}), at);
        }
        text += RowOf(line, count);
    }
    return text;
}

} // namespace study
