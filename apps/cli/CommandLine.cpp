// SPDX-License-Identifier: MIT
#include "apps/cli/CommandLine.h"

#include "apps/cli/ExitCode.h"
#include "apps/tables/Errors.h"

#include <fmt/format.h>
#include <string>
#include <vector>

namespace cli {

namespace {

// What is wrong with the command line; where the parser's own message does not help, another one.
std::string Complaint(const CLI::App& command, const CLI::ParseError& error)
{
    if (command.get_require_subcommand_min() == 0) return error.what();
    const std::vector<std::string> unknown = command.remaining();
    if (unknown.empty()) return "a command is required";
    const char* const kind = unknown.front().starts_with('-') ? "option" : "command";
    return fmt::format("there is no {} {}", kind, unknown.front());
}

} // namespace

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
    fmt::print(stderr, "{}: {} (see {} --help)\n", name, Complaint(*command, error), name);
    return kUnreadable;
}

} // namespace cli
