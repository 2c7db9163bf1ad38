// SPDX-License-Identifier: MIT
//
// What every program does around its work: standard streams and signals, failures as one sentence,
// a command line that it cannot use.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

/// The main function of a program: runs `work` and returns the exit code.
///
///   int main(int argc, char** argv) { return cli::RunMain("tiltpole-gallery: ", argc, argv, Run); }
///
/// Standard streams that are closed are reserved, so that no file gets their number: reading or
/// writing rows there fails, messages are dropped. SIGHUP, SIGINT and SIGTERM remove temporary
/// files; a closed pipe and a limit of the file size are errors of the write. An exception becomes
/// one line on standard error, `prefix` first, and kUnreadable; standard output that is no longer
/// read ends the program with kDone.
int RunMain(const char* prefix, int argc, char** argv, int (*work)(int argc, char** argv));

/// Prints on standard error, in one sentence, what is wrong and which help page to read; a
/// requested help page goes to standard output. Returns the exit code.
/// @throws tables::InputError when the help page cannot be written
int Explain(const CLI::App& program, const CLI::ParseError& error);

} // namespace cli
