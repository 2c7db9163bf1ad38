// SPDX-License-Identifier: MIT
//
// The result of `tiltpole occupy` as text, as JSON and as a table.
#pragma once

#include "apps/cli/occupy/OccupiedPoint.h"
#include <nlohmann/json_fwd.hpp>

namespace cli {

/// Settings, two tables of one row a point and, where the truth is known, the errors.
std::string OccupyText(const OccupyResult& result);

nlohmann::ordered_json OccupyJson(const OccupyResult& result);

/// A header and one row a point, separated by commas.
std::string OccupyTable(const OccupyResult& result);

/// One line for each reason that a point was refused for: "log.csv: point 3: the tip moved ...".
std::string RefusalText(const OccupyResult& result);

} // namespace cli
