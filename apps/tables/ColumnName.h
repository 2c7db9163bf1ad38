// SPDX-License-Identifier: MIT
//
// The parts of one column's name: `antenna_N [mm]` is "antenna_n" in millimeters.
#pragma once

#include "apps/tables/ColumnNames.h"
#include <optional>
#include <string>
#include <string_view>

namespace tables {

struct ColumnName
{
    std::string base;                // lower case, words joined by _
    std::string unit;                // as written; empty: none
    std::optional<ColumnUnit> known; // nullopt: no unit, or one that no quantity has

    /// Whether a column with this name can contain a quantity in `wanted`: it has no unit, or that
    /// one.
    bool Has(ColumnUnit wanted) const { return unit.empty() || known == wanted; }
};

/// Splits a unit off the name: in brackets, behind a slash, or as the last word, if it is one of
/// the units that are known. Text in brackets that is no unit remains in the base.
ColumnName ParseColumnName(std::string_view text);

/// The tag with which the base means one of the names (both as in Quantity): "" without a tag.
std::optional<std::string> TagOf(std::string_view base, std::string_view names,
                                 std::string_view tags);

} // namespace tables
