// SPDX-License-Identifier: MIT
//
// The dialect of a table: what separates its fields, and how one line is split.
//
//   , ; TAB   one such character between two fields, blanks around it do not count
//   blanks    runs of spaces and TABs; only where the header contains none of , ; TAB
//
// Where a header contains several of , ; TAB outside quotes, the first row decides: the separator
// is the one that splits both into equally many fields. Where none or several do, nothing is
// guessed.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tables {

inline constexpr char kBlanks = ' '; // as a separator: runs of spaces and TABs

/// "commas", "semicolons", "TABs" or "blanks".
const char* NameOf(char separator);

/// Splits a line in place; fields point into it. A field may be quoted with ", doubled quotes are
/// reduced to one.
/// @return what is wrong with the quotes, or nullptr
const char* SplitLine(char* begin, char* end, char separator,
                      std::vector<std::string_view>& fields);

/// The separators among , ; TAB that divide this header, in order of appearance.
std::vector<char> SeparatorsIn(std::string_view header);

/// The separator of a table.
/// @param candidates  SeparatorsIn(header); with one of them or none `firstRow` is not looked at
/// @param firstRow    nullopt where there is none: the first candidate counts
/// @param problem     set where the table could be read in two ways, or in none
char SeparatorOf(std::string_view header, const std::vector<char>& candidates,
                 std::optional<std::string_view> firstRow, std::string& problem);

/// Joins a unit in brackets to the name before it, as blanks separate them: "N", "[m]" -> "N [m]".
std::vector<std::string> JoinUnits(const std::vector<std::string_view>& words);

/// A guess why this row has not the header's number of fields, `columns`: " (decimal comma? ...)", or
/// empty. For messages only.
std::string FieldCountHint(const std::vector<std::string_view>& fields, std::size_t columns,
                           char separator);

/// The same for a text that is not a number.
std::string NumberHint(std::string_view text);

} // namespace tables
