// Numbers in text, the same in every locale: a decimal point, no grouping.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string_view>

namespace cli {

/// The number that the whole text stands for, spaces around it aside.
/// @return nothing for other text, for nan and infinities, and for what a double cannot hold
std::optional<double> ParseNumber(std::string_view text);

/// The text without the spaces and tabs around it.
std::string_view Trim(std::string_view text);

/// Command line checks: any finite number; a finite number above zero.
CLI::Validator FiniteNumber();
CLI::Validator PositiveNumber();

} // namespace cli
