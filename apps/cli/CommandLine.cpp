// SPDX-License-Identifier: MIT
#include "apps/cli/CommandLine.h"

#include "apps/cli/ExitCode.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Output.h"
#include "framework/core/AtomicFile.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <fmt/format.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace cli {

namespace {

// "--pole: 1 required LENGTH missing" and "--pole: At Most 1 required but received 2" in plain
// words.
std::string PlainMismatch(const std::string& message)
{
    const std::size_t colon = message.find(": ");
    const std::string option = message.substr(0, colon);
    if (message.ends_with(" missing")) return option + " needs a value";
    if (message.find(": At Most 1 required") != message.npos)
        return option + " is given more than once";
    return message;
}

// What is wrong with the command line; where the parser's own message does not help, another one.
std::string Complaint(const CLI::App& command, const CLI::ParseError& error)
{
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
        return PlainMismatch(error.what());
    if (command.get_require_subcommand_min() == 0) return error.what();
    const std::vector<std::string> unknown = command.remaining();
    if (unknown.empty()) return "a command is required";
    const char* const kind = unknown.front().starts_with('-') ? "option" : "command";
    return fmt::format("there is no {} {}", kind, unknown.front());
}

// The lowest free number is taken: that of the stream that is closed, as those before it are open.
// Standard input is opened for writing and standard output for reading, so that their use fails.
bool ReserveStandardStreams()
{
    constexpr int kFlags[] = {O_WRONLY, O_RDONLY, O_WRONLY}; // by number of the stream
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", kFlags[stream]) != stream) return false;
    return true;
}

} // namespace

int RunMain(const char* prefix, int argc, char** argv, int (*work)(int argc, char** argv))
{
    if (!ReserveStandardStreams()) return kUnreadable;
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    framework::RemoveTemporaryFilesOnSignals();
    try {
        return work(argc, argv);
    } catch (const tables::OutputClosed&) {
        return kDone;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s%s\n", prefix, error.what()); // needs no memory
    }
    return kUnreadable;
}

int Explain(const CLI::App& program, const CLI::ParseError& error)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        std::ostringstream page;
        program.exit(error, page, page);
        tables::WriteFile("-", page.str());
        return kDone;
    }
    const CLI::App* command = &program; // the innermost that was given
    std::string name = program.get_name();
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
        name += ' ' + command->get_name();
    }
    tables::Tell("{}: {} (see {} --help)\n", name, Complaint(*command, error), name);
    return kUnreadable;
}

} // namespace cli
