// SPDX-License-Identifier: MIT
//
// The options that tell of the sensor behind a log: its calibration and its axes.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace cli {

/// Adds --config and --partial-config. Returns --config.
CLI::Option* AddConfigOptions(CLI::App& command, std::string& config, bool& partial);

/// Adds --sensor-type.
/// @param more  what else a type changes: a full stop and a sentence without its own
void AddSensorTypeOption(CLI::App& command, int& type, const std::string& more = {});

/// Adds --bias, the heading bias of magnetometer A [degrees].
void AddBiasOption(CLI::App& command, std::optional<double>& bias);

/// Adds --field, STRENGTH,DIP of the undisturbed field [counts, degrees].
/// @param use  what is done with it, without a full stop
CLI::Option* AddFieldOption(CLI::App& command, std::string& field, const std::string& use);

} // namespace cli
