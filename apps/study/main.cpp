// SPDX-License-Identifier: MIT
//
// tiltpole_study: measures on simulated poles what the documentation states.
#include "apps/cli/CommandLine.h"
#include "apps/cli/ExitCode.h"
#include "apps/study/CalibrationStudy.h"
#include "apps/study/TipStudy.h"
#include "apps/tables/Errors.h"
#include "framework/core/MessageBox.h"
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <fmt/format.h>

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
    std::string only;
    program.add_option("--only", only, "Only conditions with this text in their name");
    bool tips = false;
    program.add_flag("--tips", tips,
                     "Instead: how often the regions of stored tips hold the true tip");
    std::string recording;
    program.add_option("--recording", recording,
                       "Errors of a fixed antenna for --tips, lines \"E N h time\"");
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::Explain(program, error);
    }
    if (tips) {
        fmt::print("{}", study::TipStudy(runs, seed, recording));
        return cli::kDone;
    }
    // Failures are counted, not shown.
    framework::SetMessageBoxHandler([](const wchar_t*, const wchar_t*, unsigned) { return IDOK; });
    std::vector<study::Condition> conditions =
        variations ? study::Variations() : study::Conditions();
    std::erase_if(conditions, [&only](const study::Condition& c) {
        return c.name.find(only) == std::string_view::npos;
    });
    if (conditions.empty()) throw tables::InputError("no condition has '" + only + "' in its name");
    fmt::print("{}", study::CalibrationStudy(conditions, runs, seed));
    return cli::kDone;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        fmt::print(stderr, "tiltpole_study: {}\n", error.what());
    }
    return cli::kUnreadable;
}
