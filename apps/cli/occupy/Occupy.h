// SPDX-License-Identifier: MIT
//
// tiltpole occupy: the tip of each occupied point.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddOccupyCommand(CLI::App& program, int& exitCode);

} // namespace cli
