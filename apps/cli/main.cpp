// tiltpole: the library's work on recorded data, from the command line.
#include "apps/cli/Calibrate.h"
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

// What the command line lacks, in a sentence of its own where the parser has none that helps.
std::string Complaint(const CLI::App& command, const CLI::ParseError& error)
{
    if (command.get_require_subcommand_min() == 0) return error.what();
    const std::vector<std::string> unknown = command.remaining();
    if (unknown.empty()) return "a command is required";
    const char* const kind = unknown.front().starts_with('-') ? "option" : "command";
    return fmt::format("there is no {} {}", kind, unknown.front());
}

// Wrong use answers one sentence and where to read on; a help page goes to standard output.
int Explain(const CLI::App& program, const CLI::ParseError& error)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        return program.exit(error);
    }
    const CLI::App* command = &program; // the innermost that was given
    std::string name = program.get_name();
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
        name += ' ' + command->get_name();
    }
    fmt::print(stderr, "{}: {} ({} --help tells more)\n", name, Complaint(*command, error), name);
    return cli::kUnreadable;
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
        return Explain(program, error);
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
