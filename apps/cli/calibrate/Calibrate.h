// SPDX-License-Identifier: MIT
//
// tiltpole calibrate: from two recorded turns to a parameter file, with a judgement.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

/// Adds `calibrate`.
void AddCalibrateCommand(CLI::App& program, int& exitCode);

} // namespace cli
