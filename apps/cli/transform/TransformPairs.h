// SPDX-License-Identifier: MIT
//
// The point pairs that tiltpole transform fits.
#pragma once

#include "apps/cli/transform/TransformFit.h"
#include "apps/tables/ColumnNames.h"
#include <string>
#include <vector>

namespace cli {

/// What the program asks of the columns of a table of pairs; the name is optional.
inline constexpr tables::PlaneQuantity kSource{"x_source", "y_source", "! source from"};
inline constexpr tables::PlaneQuantity kTarget{"x_target", "y_target", "! target to"};
inline constexpr tables::Quantity kPairName{"name", tables::ColumnUnit::None, "name label point",
                                            ""};

/// The rows of the file.
/// @param columns  as --columns gives them
/// @param only     COLUMN=VALUE: the rows with this text in this column; empty: all rows
/// @throws InputError for a file or row that cannot be read
std::vector<PairRow> ReadPairs(const std::string& path, const tables::ColumnChoice& columns,
                               const std::string& only);

/// Removes the pairs that `drop` names, each by its name, its line number or "line N". A name goes
/// before a number.
/// @throws InputError for a text that stands for no pair, or for several
void DropPairs(std::vector<PairRow>& rows, const std::vector<std::string>& drop,
               const std::string& path);

} // namespace cli
