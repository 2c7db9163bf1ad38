// SPDX-License-Identifier: MIT
//
// tiltpole transform: fit a plane similarity transform to point pairs, and apply one.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddTransformCommand(CLI::App& program, int& exitCode);

} // namespace cli
