// SPDX-License-Identifier: MIT
//
// Finding the columns of a table by what they contain, whatever their spelling.
//
// A name matches without regard to case and with its unit or without: `N`, `Northing`, `N [m]`,
// `N (m)`, `N / m`, `antenna_N_m`, `ANTENNA NORTH`. Blanks, `_`, `-` and `.` between words are the
// same. A unit other than the quantity's own is an error (`N_mm`), and so is a second column that
// could be meant: both are named, and the user chooses with --columns. Nothing is guessed.
//
//     const auto height = FindColumn(rows, kHeight, choice);   // position, or nullopt
#pragma once

#include "apps/tables/Csv.h"
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tables {

enum class ColumnUnit { None, Meters, Degrees, Counts, Gravities, DegreesPerSecond };

/// Something that a column contains.
struct Quantity
{
    const char* key;   // in messages and in --columns
    ColumnUnit unit;   // ColumnUnit::None: any name with a unit is another one
    const char* names; // separated by blanks, in lower case, words joined by _
    const char* tags;  // words that may precede or follow a name; with "!" among them, one must
};

/// Which column contains what, by the names that the user gave: key to column name.
using ColumnChoice = std::map<std::string, std::string, std::less<>>;

/// The column of a quantity, if there is one.
/// @throws InputError where two columns could be meant, where the only one has another unit, and
///         where the chosen one does not exist
std::optional<std::size_t> FindColumn(const CsvReader& rows, const Quantity& quantity,
                                      const ColumnChoice& choice);

/// Two columns of plane coordinates that belong together.
struct PlaneColumns
{
    std::size_t first;  // N or x
    std::size_t second; // E or y
    bool named;         // N and E, or Northing and Easting; not x and y
    std::string tag;    // the word that both names share: "antenna", "source"; empty: none
};

/// The quantities of two coordinates: x with y, N with E.
struct PlaneQuantity
{
    const char* firstKey; // in messages and in --columns
    const char* secondKey;
    const char* tags; // as in Quantity
};

/// All pairs of plane coordinates, in the order of their first columns. Only columns of one kind
/// form a pair: x and y, or N and E, both with the same tag.
/// @throws InputError where a coordinate of a pair could be two columns, where columns are
///         named that do not go together, and where the chosen ones do not exist
std::vector<PlaneColumns> FindPlanePairs(const CsvReader& rows, const PlaneQuantity& quantity,
                                         const ColumnChoice& choice);

/// The only pair of plane coordinates, if there is one.
/// @throws InputError as FindPlanePairs, and where there are two
std::optional<PlaneColumns> FindPlaneColumns(const CsvReader& rows, const PlaneQuantity& quantity,
                                             const ColumnChoice& choice);

/// The columns of antenna positions.
struct PointColumns
{
    std::size_t north, east, height;
};

/// N, E and h, or x, y and h (also `z`, `Height`, `Elevation`), of an antenna: the names alone or
/// with `antenna`. The height goes with N and E: it has their tag.
/// @param missing  the keys that were not found are appended
/// @throws InputError as above
std::optional<PointColumns> FindPointColumns(const CsvReader& rows, const ColumnChoice& choice,
                                             std::vector<std::string>& missing);

/// "N from Northing, E from Easting": each key whose column has another name; empty if there is
/// none.
std::string DescribeColumns(const CsvReader& rows,
                            const std::vector<std::pair<std::string, std::size_t>>& columns);

} // namespace tables
