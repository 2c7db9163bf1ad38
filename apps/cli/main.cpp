// SPDX-License-Identifier: MIT
//
// tiltpole: runs the library on recorded data, from the command line.
#include "apps/cli/CommandLine.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/calibrate/Calibrate.h"
#include "apps/cli/job/Job.h"
#include "apps/cli/live/Live.h"
#include "apps/cli/live/Merge.h"
#include "apps/cli/measure/Measure.h"
#include "apps/cli/occupy/Occupy.h"
#include "apps/cli/simulate/Simulate.h"
#include "apps/cli/solve/Solve.h"
#include "apps/cli/transform/Transform.h"
#include "framework/core/Version.h"

#include <CLI/CLI.hpp>

namespace {

// One line for each command X, from X.h. Its callback runs once the command line has been parsed
// and sets the exit code.
void AddCommands(CLI::App& program, int& exitCode)
{
    cli::AddCalibrateCommand(program, exitCode);
    cli::AddJobCommand(program, exitCode);
    cli::AddLiveCommand(program, exitCode);
    cli::AddMeasureCommand(program, exitCode);
    cli::AddMergeCommand(program, exitCode);
    cli::AddOccupyCommand(program, exitCode);
    cli::AddSimulateCommand(program, exitCode);
    cli::AddSolveCommand(program, exitCode);
    cli::AddTransformCommand(program, exitCode);
}

int RunCommand(int argc, char** argv)
{
    CLI::App program{"Computes tip coordinates of a tilted survey pole from recorded data.",
                     "tiltpole"};
    program.set_version_flag("--version", "tiltpole " TILTPOLE_VERSION_STRING);
    program.require_subcommand(1);
    program.footer("Exit codes: 0 success, 1 negative result, 2 wrong use or unreadable input.\n"
                   "See tiltpole COMMAND --help for the options of a command.");
    int exitCode = cli::kDone;
    AddCommands(program, exitCode);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::Explain(program, error);
    }
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    return cli::RunMain("", argc, argv, RunCommand);
}
