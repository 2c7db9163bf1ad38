// SPDX-License-Identifier: MIT
//
// How the programs report a command line that they cannot use.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

/// Prints on standard error, in one sentence, what is wrong and which help page to read; a
/// requested help page goes to standard output. Returns the exit code.
int Explain(const CLI::App& program, const CLI::ParseError& error);

} // namespace cli
