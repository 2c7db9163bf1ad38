// SPDX-License-Identifier: MIT
//
// tiltpole job: lists, exports and recomputes the points of a job.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

void AddJobCommand(CLI::App& program, int& exitCode);

} // namespace cli
