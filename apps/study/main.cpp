// SPDX-License-Identifier: MIT
//
// tiltpole_study: measures on simulated poles what the documentation states.
#include "apps/cli/CommandLine.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/OptionChecks.h"
#include "apps/study/CalibrationStudy.h"
#include "apps/study/FaultStudy.h"
#include "apps/study/LiveStudy.h"
#include "apps/study/OccupationStudy.h"
#include "apps/study/SlipStudy.h"
#include "apps/study/TipStudy.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Output.h"
#include "framework/core/MessageBox.h"
#include <CLI/CLI.hpp>
#include <utility>

namespace {

int Run(int argc, char** argv)
{
    CLI::App program{"How well simulated calibrations come out and how well their report knows it.",
                     "tiltpole_study"};
    int runs = 400;
    std::uint64_t seed = 1;
    program.add_option("--runs", runs, "Calibrations under each condition [400]")
        ->check(CLI::Range(1, 1000000));
    program.add_option("--seed", seed, "Whole number; the same seed gives the same figures [1]");
    bool variations = false;
    program.add_flag("--variations", variations,
                     "Poles and recordings unlike those that the thresholds were found on");
    bool faults = false;
    program.add_flag("--faults", faults,
                     "Faults of sensors, surroundings and logs, and what is said of them");
    bool noGyros = false;
    program.add_flag("--no-gyros", noGyros, "Logs without gyros");
    std::string only;
    program.add_option("--only", only, "Only conditions with this text in their name");
    bool tips = false;
    program.add_flag("--tips", tips,
                     "Instead: how often the regions of stored tips hold the true tip");
    std::string recording;
    program.add_option("--recording", recording,
                       "Errors of a fixed antenna for --tips, lines \"E N h time\"");
    bool occupations = false;
    program.add_flag("--occupations", occupations,
                     "Instead: the tips of occupations, simulated and recorded, and their faults");
    bool slips = false;
    program.add_flag("--slips", slips,
                     "Instead: occupations with a slipped tip or a wrong length, and with neither");
    bool live = false;
    program.add_flag("--live", live, "Instead: occupations of a live pole, while they go on");
    study::RecordedPoints points;
    CLI::Option* const log = program.add_option(
        "--log", points.log, "Recorded points for --occupations, as for tiltpole occupy");
    CLI::Option* const truth =
        program.add_option("--truth", points.truth, "Their true tips, point,N,E,h")->needs(log);
    log->needs(truth);
    program.add_option("--bias", points.bias, "Their heading bias [0 degrees]")
        ->needs(log)
        ->check(cli::NumberIn(tables::kAngle));
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::Explain(program, error);
    }
    tables::KeepApart({"-"}, {recording, points.log, points.truth});
    if (occupations) {
        tables::WriteFile("-", study::OccupationStudy(runs, seed, only, points));
        return cli::kDone;
    }
    if (slips) {
        tables::WriteFile("-", study::SlipStudy(runs, seed, only));
        return cli::kDone;
    }
    if (live) {
        tables::WriteFile("-", study::LiveStudy(runs, seed, only));
        return cli::kDone;
    }
    if (tips) {
        tables::WriteFile("-", study::TipStudy(runs, seed, recording));
        return cli::kDone;
    }
    // Failures are counted, not shown.
    framework::SetMessageBoxHandler([](const wchar_t*, const wchar_t*, unsigned) { return IDOK; });
    std::vector<study::Condition> conditions = faults       ? study::FieldFaults()
                                               : variations ? study::Variations()
                                                            : study::Conditions();
    std::erase_if(conditions, [&only](const study::Condition& c) {
        return c.name.find(only) == std::string_view::npos;
    });
    if (conditions.empty()) throw tables::InputError("no condition has '" + only + "' in its name");
    const study::Plan plan = {std::move(conditions), runs, seed, noGyros};
    tables::WriteFile("-", faults ? study::FaultStudy(plan) : study::CalibrationStudy(plan));
    return cli::kDone;
}

} // namespace

int main(int argc, char** argv)
{
    return cli::RunMain("tiltpole_study: ", argc, argv, Run);
}
