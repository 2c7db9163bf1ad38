// SPDX-License-Identifier: MIT
//
// Numbers in text, the same in every locale: a decimal point, no grouping.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace cli {

/// The number that the whole text stands for, spaces around it aside.
/// @return nothing for other text, for nan and infinities, and for what a double cannot hold
std::optional<double> ParseNumber(std::string_view text);

/// `count` numbers with commas between them, each as ParseNumber reads it.
std::optional<std::vector<double>> ParseNumbers(std::string_view text, std::size_t count);

/// The text without the spaces and tabs around it.
std::string_view Trim(std::string_view text);

/// Command line checks: any finite number; a finite number above zero;
/// finite numbers with commas between them.
CLI::Validator FiniteNumber();
CLI::Validator PositiveNumber();
CLI::Validator NumberList(std::size_t count);

} // namespace cli
