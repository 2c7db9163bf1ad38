// SPDX-License-Identifier: MIT
//
// What the programs say about a command line that they do not take.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

/// Tells on standard error in one sentence what is wrong and where to read on; a help page that was
/// asked for goes to standard output. Returns the exit code.
int Explain(const CLI::App& program, const CLI::ParseError& error);

} // namespace cli
