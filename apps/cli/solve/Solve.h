// SPDX-License-Identifier: MIT
//
// tiltpole solve: the tip from many antenna positions.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddSolveCommand(CLI::App& program, int& exitCode);

} // namespace cli
