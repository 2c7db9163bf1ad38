// SPDX-License-Identifier: MIT
//
// What the commands on a live pole are told on the command line.
#pragma once

#include "apps/live/AddressRange.h"
#include "apps/live/Endpoint.h"
#include "field/Bridge.h"
#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace cli {

/// The pole, as it is told: the options of PoleOptions, and the files they name.
struct PoleOptions
{
    field::Setup setup;
    std::string config;
    bool partialConfig = false;
    std::optional<int> sensorType;
    std::string delay; // DELAY[,SD]
    std::string north = "model";
    std::string profile = "strict";
    std::string poseFormat = "ptps";
};

struct LiveOptions
{
    PoleOptions pole;
    std::string gnss;
    std::string pose;
    std::vector<std::string> serve;
    std::vector<std::string> status;
    std::vector<std::string> allow;
    std::string corrections;
    std::string record;
    std::string replay;
    bool json = false;
    bool findDelay = false;
    std::optional<double> seconds;
    std::optional<double> reopen; // [s]; 0: never
    std::string job;
    std::string control;
    std::string program; // with its version
};

/// --pole, --config, --delay, limits and the like.
void AddPoleOptions(CLI::App& command, PoleOptions& options);

/// The setup with the calibration loaded.
/// @throws InputError naming the file or option that cannot be used
field::Setup SetupOf(const PoleOptions& options);

/// How the format is named in the banner.
std::string PoseFormatName(const PoleOptions& options);

CLI::Validator SourceText();
CLI::Validator SinkText();
CLI::Validator AddressRangeText();

/// What the validators accepted.
live::Endpoint SourceOf(const std::string& text);
live::Endpoint SinkOf(const std::string& text);
std::vector<live::Endpoint> SinksOf(const std::vector<std::string>& texts);
std::vector<live::AddressRange> RangesOf(const std::vector<std::string>& texts);

} // namespace cli
