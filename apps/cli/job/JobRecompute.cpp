// SPDX-License-Identifier: MIT
#include "apps/cli/job/JobRecompute.h"

#include "apps/cli/ExitCode.h"
#include "apps/cli/ParameterCheck.h"
#include "apps/cli/SummaryLine.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/Output.h"
#include "apps/tables/ReadFile.h"
#include "field/Geodesy.h"
#include "field/job/Recompute.h"
#include "quality/ParameterFile.h"
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <set>
#include <string_view>

namespace cli {

namespace {

constexpr double kSameTip = 0.001; // with its own setup a point must come out so [m]

struct Change
{
    field::Setup setup; // of the new points
    double delay = 0.0; // new minus stored [s]
};

// SECONDS or SECONDS,SD, which the command line has checked.
void SetDelay(field::Setup& setup, const std::string& text)
{
    if (const auto both = tables::ParseNumbers(text, 2)) {
        setup.delay = (*both)[0];
        setup.delaySigma = (*both)[1];
    } else {
        setup.delay = tables::ParseNumber(text).value();
    }
}

Change Changed(const field::Setup& stored, const RecomputeOptions& options)
{
    Change change{stored, 0.0};
    if (options.pole) change.setup.poleLength = *options.pole;
    if (!options.delay.empty()) SetDelay(change.setup, options.delay);
    if (!options.config.empty()) {
        field::CalibrationFile& calibration = change.setup.calibration;
        calibration.bytes = tables::ReadFile(options.config, quality::kLargestParameterFile);
        LoadParameters(options.config, calibration.sensor);
        calibration.complete = true;
    }
    change.delay = change.setup.delay - stored.delay;
    return change;
}

double Distance(const field::Geodetic& a, const field::Geodetic& b)
{
    const xyhCoordinate step = field::Difference(a, b);
    return std::hypot(step.x, step.y, step.h);
}

// Takes the points of one job from their setups to the changed ones.
class Recomputation
{
public:
    Recomputation(const RecomputeOptions& options, const field::JobStore& job)
        : m_options(options), m_job(job)
    {
        for (const field::JobSetup& setup : ValueOf(job.Setups()))
            m_setups.emplace(setup.id, setup);
        for (const field::JobPoint& point : ValueOf(job.Points()))
            m_names.insert(point.name);
    }

    // Says on standard error why a point stays as it is.
    void Add(const NamedPoint& named)
    {
        const std::string problem = Compute(named);
        if (!problem.empty())
            tables::Tell("{}: point {}: {}\n", m_options.job, named.name, problem);
    }

    std::vector<RecomputedPoint>& Points() { return m_points; }

    // The setup of a new point, to be stored before it.
    field::JobSetup NewSetup(const RecomputedPoint& point, field::JobTime now) const
    {
        const field::JobSetup& stored = m_setups.at(point.before.point.setup);
        const Change change = Changed(SetupOf(stored), m_options);
        constexpr std::string_view kAgain = ", recomputed";
        const bool again = stored.program.ends_with(kAgain);
        return field::JobSetupOf(change.setup, stored.program + std::string(again ? "" : kAgain),
                                 now);
    }

private:
    std::string Compute(const NamedPoint& named)
    {
        const auto stored = m_setups.find(named.point.setup);
        if (stored == m_setups.end()) return "its setup is not in the job";
        const std::vector<field::JobEpoch> epochs = ValueOf(m_job.Epochs(named.point.id));
        if (epochs.empty()) return "it has no epochs";
        const field::Setup setup = SetupOf(stored->second);
        const field::JobRecord same = field::Recomputed(named.point, epochs, setup, 0.0);
        if (!same.error.empty()) return same.error;
        const double off = Distance(named.point.tip, same.point.tip);
        if (!(off <= kSameTip))
            return fmt::format("with its own setup its epochs give a tip {:.0f} mm from the stored "
                               "one; it is not recomputed",
                               off * 1000.0);
        const Change change = Changed(setup, m_options);
        field::JobRecord again = field::Recomputed(named.point, epochs, change.setup, change.delay);
        if (!again.error.empty()) return again.error;
        again.point.name = FreeName(named.name);
        m_points.push_back({named, std::move(again.point), std::move(again.epochs)});
        return {};
    }

    // P12~2, P12~3 ...
    std::string FreeName(const std::string& name)
    {
        for (int count = 2;; ++count) {
            std::string free = fmt::format("{}~{}", name, count);
            if (m_names.insert(free).second) return free;
        }
    }

    const RecomputeOptions& m_options;
    const field::JobStore& m_job;
    std::map<std::int64_t, field::JobSetup> m_setups;
    std::set<std::string> m_names;
    std::vector<RecomputedPoint> m_points;
};

std::string ChangeText(const RecomputeOptions& options)
{
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (options.pole) add(fmt::format("pole {:.4f} m", *options.pole));
    if (!options.delay.empty()) add("delay " + options.delay + " s");
    if (!options.config.empty()) add("calibration " + options.config);
    return text;
}

std::string ReportText(const RecomputeOptions& options, const std::vector<RecomputedPoint>& points)
{
    std::string text = Line("job", options.job);
    text += Line("with", ChangeText(options));
    text += Line("points", fmt::format("{} {}", points.size(),
                                       options.dryRun ? "recomputed, not stored" : "recomputed"));
    std::size_t width = 5;
    for (const RecomputedPoint& point : points)
        width = std::max(width, point.after.name.size());
    text += fmt::format("\n{:<{}} {:<{}} {:>26} {:>21} {:>3}\n", "point", width, "stored as", width,
                        "moved N E h [mm]", "sd N E h [mm]", "n");
    for (const RecomputedPoint& point : points) {
        const xyhCoordinate moved = field::Difference(point.before.point.tip, point.after.tip);
        const field::Covariance3& sigma = point.after.sigma;
        text += fmt::format(
            "{:<{}} {:<{}} {:10.1f}{:8.1f}{:8.1f} {:7.0f}{:7.0f}{:7.0f} {:>3}\n", point.before.name,
            width, point.after.name, std::max<std::size_t>(width, 9), moved.x * 1000.0,
            moved.y * 1000.0, moved.h * 1000.0, std::sqrt(sigma.nn) * 1000.0,
            std::sqrt(sigma.ee) * 1000.0, std::sqrt(sigma.hh) * 1000.0, point.after.epochs);
    }
    return text;
}

void Store(field::JobStore& job, const Recomputation& recomputation,
           std::vector<RecomputedPoint>& points, const RecomputeOptions& options)
{
    const field::JobTime now =
        std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    std::vector<std::pair<field::JobPoint, std::vector<field::JobEpoch>>> rows;
    for (RecomputedPoint& point : points) {
        point.after.setup = ValueOf(job.AddSetup(recomputation.NewSetup(point, now)));
        rows.emplace_back(point.after, point.epochs);
    }
    ValueOf(job.AddPoints(rows));
    ValueOf(job.AddEvent({0, now, "recompute",
                          fmt::format("{} points with {}", points.size(), ChangeText(options))}));
}

} // namespace

field::Setup SetupOf(const field::JobSetup& stored)
{
    const auto known = [](double value, double usual) {
        return std::isfinite(value) ? value : usual;
    };
    field::Setup setup;
    setup.poleLength = known(stored.poleLength, setup.poleLength);
    setup.phaseCenter = known(stored.phaseCenter, setup.phaseCenter);
    setup.sensorType = stored.sensorType;
    setup.headingSigma = known(stored.headingSigma, setup.headingSigma);
    setup.tiltSigma = known(stored.tiltSigma, setup.tiltSigma);
    setup.lengthSigma = known(stored.lengthSigma, setup.lengthSigma);
    setup.delay = known(stored.delay, setup.delay);
    setup.delaySigma = known(stored.delaySigma, setup.delaySigma);
    setup.north = stored.north == "file" ? field::NorthSource::File : field::NorthSource::Model;
    if (stored.calibration.empty()) return setup;
    setup.calibration.bytes = stored.calibration;
    const auto problems = quality::LoadParameterText(stored.calibration, setup.calibration.sensor);
    if (!problems.empty())
        throw tables::InputError(fmt::format("the calibration of setup {} cannot be read: {}",
                                             stored.id, quality::ToText(problems.front())));
    setup.calibration.complete = true;
    return setup;
}

int RunRecompute(const RecomputeOptions& options)
{
    if (!options.pole && options.delay.empty() && options.config.empty())
        throw tables::InputError("nothing is changed: give --pole, --delay or --config");
    field::JobStore job =
        OpenJob(options.job, options.dryRun ? field::JobAccess::Read : field::JobAccess::Write);
    Recomputation recomputation(options, job);
    bool chosen = false;
    for (const NamedPoint& named : CurrentPointsOf(job)) {
        if (!Chooses(options.points, named.name)) continue;
        chosen = true;
        recomputation.Add(named);
    }
    if (!chosen)
        throw tables::InputError(options.job, "no point that counts is named " + options.points);
    std::vector<RecomputedPoint>& points = recomputation.Points();
    if (points.empty()) return kNegative;
    if (!options.dryRun) Store(job, recomputation, points, options);
    tables::WriteFile("-", ReportText(options, points));
    return kDone;
}

} // namespace cli
