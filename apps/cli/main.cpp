// SPDX-License-Identifier: MIT
//
// tiltpole: runs the library on recorded data, from the command line.
#include "apps/cli/CommandLine.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/calibrate/Calibrate.h"
#include "apps/cli/measure/Measure.h"
#include "apps/cli/simulate/Simulate.h"
#include "apps/cli/solve/Solve.h"
#include "apps/cli/transform/Transform.h"
#include "apps/tables/Errors.h"
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace {

// One line for each command X, from X.h. Its callback runs once the command line has been parsed
// and sets the exit code.
void AddCommands(CLI::App& program, int& exitCode)
{
    cli::AddCalibrateCommand(program, exitCode);
    cli::AddMeasureCommand(program, exitCode);
    cli::AddSimulateCommand(program, exitCode);
    cli::AddSolveCommand(program, exitCode);
    cli::AddTransformCommand(program, exitCode);
}

int RunCommand(int argc, char** argv)
{
    CLI::App program{"Computes tip coordinates of a tilted survey pole from recorded data.",
                     "tiltpole"};
    program.set_version_flag("--version", "tiltpole " TILTPOLE_VERSION);
    program.require_subcommand(1);
    program.footer("Exit codes: 0 success, 1 negative result, 2 wrong use or unreadable input.\n"
                   "See tiltpole COMMAND --help for the options of a command.");
    int exitCode = cli::kDone;
    AddCommands(program, exitCode);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::Explain(program, error);
    } catch (const tables::OutputClosed&) {
        return cli::kDone;
    }
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe is reported by write()
    try {
        return RunCommand(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return cli::kUnreadable;
}
