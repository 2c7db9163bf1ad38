// SPDX-License-Identifier: MIT
//
// Reads the log of occupied points. Rows that follow each other with the same `point` are one
// occupation; those without a name belong to none. In a log without this column the gyros and the
// antenna tell the points apart, see PointsByMotion.h.
#pragma once

#include "apps/cli/occupy/OccupiedPoint.h"
#include "apps/tables/ColumnNames.h"

namespace cli {

inline constexpr tables::Quantity kPointName{"point", tables::ColumnUnit::None, "point name label",
                                             ""};
inline constexpr tables::Quantity kRowSeconds{"seconds", tables::ColumnUnit::None, "seconds time_s",
                                              ""};

/// The keys of all columns that are read, for --columns.
std::vector<std::string> OccupationKeys();

/// What an occupation takes of a sample: magnetometer A is corrected by the parameter file.
field::InertialSample SampleOf(const PoseSensorData& pose, double seconds,
                               const OccupySetup& setup);

/// Estimates the tip of each occupation. Memory grows with the antenna epochs only.
/// @throws InputError for a log that cannot be read
OccupyResult EstimatePoints(const OccupySetup& setup, const tables::ColumnChoice& columns);

} // namespace cli
