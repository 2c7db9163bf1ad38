// SPDX-License-Identifier: MIT
//
// tiltpole merge: tips from the logs of a receiver and of a pose sensor that were recorded apart.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddMergeCommand(CLI::App& program, int& exitCode);

} // namespace cli
