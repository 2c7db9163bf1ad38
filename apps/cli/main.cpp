// SPDX-License-Identifier: MIT
//
// tiltpole: the library's work on recorded data, from the command line.
#include "apps/cli/Calibrate.h"
#include "apps/cli/CommandLine.h"
#include "apps/cli/Errors.h"
#include "apps/cli/Measure.h"
#include "apps/cli/Simulate.h"
#include "apps/cli/Solve.h"
#include "apps/cli/Transform.h"
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace {

// One line for each command; cli::AddXCommand(program, exitCode) stands in X.h. Its callback runs
// when the command line has been read and leaves the exit code behind.
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
    CLI::App program{"Tip coordinates of a tilted survey pole, from recorded data.", "tiltpole"};
    program.set_version_flag("--version", "tiltpole " TILTPOLE_VERSION);
    program.require_subcommand(1);
    program.footer("Exit codes: 0 done, 1 negative result, 2 wrong use or unreadable input.\n"
                   "tiltpole COMMAND --help tells about one command.");
    int exitCode = cli::kDone;
    AddCommands(program, exitCode);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::Explain(program, error);
    } catch (const cli::OutputClosed&) {
        return cli::kDone;
    }
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe shows as a failing write
    try {
        return RunCommand(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return cli::kUnreadable;
}
