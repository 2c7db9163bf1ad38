// SPDX-License-Identifier: MIT
//
// tiltpole live: the tip of a pole on a real receiver, sent on as the receiver sends its antenna.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddLiveCommand(CLI::App& program, int& exitCode);

} // namespace cli
