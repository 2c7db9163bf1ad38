// SPDX-License-Identifier: MIT
//
// tiltpole simulate: seeded logs of a pole with known truth, for trying out a host.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

/// Adds `simulate` with its kinds `turns`, `walk` and `points`.
void AddSimulateCommand(CLI::App& program, int& exitCode);

} // namespace cli
