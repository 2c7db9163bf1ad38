// SPDX-License-Identifier: MIT
//
// tiltpole measure: the tip of the pole for every sample of a log.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddMeasureCommand(CLI::App& program, int& exitCode);

} // namespace cli
