// SPDX-License-Identifier: MIT
//
// A job as text and as JSON.
#pragma once

#include "apps/cli/job/JobPoints.h"
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace cli {

/// Counts, setups, one line a point and the events.
std::string JobListText(const std::string& path, const field::JobStore& job);

/// All points, replaced and void ones included, setups and events.
nlohmann::ordered_json JobListJson(const std::string& path, const field::JobStore& job);

} // namespace cli
