// SPDX-License-Identifier: MIT
//
// tiltpole transform: fits a plane similarity transform to point pairs, and applies one.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddTransformCommand(CLI::App& program, int& exitCode);

} // namespace cli
