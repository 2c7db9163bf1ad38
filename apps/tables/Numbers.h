// SPDX-License-Identifier: MIT
//
// Parsing numbers, in the same way in every locale: a decimal point, no digit grouping.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace tables {

/// The number that the text consists of, apart from spaces and tabs around it.
/// @return nullopt for other text, for nan and infinities, and for values that overflow a double
std::optional<double> ParseNumber(std::string_view text);

/// Exactly `count` numbers separated by commas, each as ParseNumber accepts it.
std::optional<std::vector<double>> ParseNumbers(std::string_view text, std::size_t count);

/// The text without the spaces and tabs around it.
std::string_view Trim(std::string_view text);

} // namespace tables
