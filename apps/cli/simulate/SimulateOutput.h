// SPDX-License-Identifier: MIT
//
// Options and messages about the files that the kinds of `tiltpole simulate` write.
#pragma once

#include "apps/cli/JsonOutput.h"
#include <CLI/CLI.hpp>
#include <string>

namespace cli {

/// Prints a sentence on standard error.
void Say(const std::string& sentence);

/// --json
void AddJson(CLI::App& command, bool& json);

/// An option with the name of a file.
CLI::Option* AddFile(CLI::App& command, const char* option, std::string& path,
                     const char* description);

/// null for an empty path.
nlohmann::ordered_json NameOrNull(const std::string& path);

/// Standard output takes the log or the JSON.
/// @throws InputError where it would take both
void RefuseLogOnJson(bool json, const std::string& out);

} // namespace cli
