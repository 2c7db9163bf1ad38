// SPDX-License-Identifier: MIT
//
// Checks of option values on the command line.
#pragma once

#include "apps/tables/Ranges.h"
#include <CLI/CLI.hpp>
#include <cstdint>

namespace cli {

/// A number in the range (apps/tables/Ranges.h has those of all commands).
CLI::Validator NumberIn(const tables::Range& range);

/// An integer from `low` to `high`.
CLI::Validator IntegerIn(std::uint64_t low, std::uint64_t high);

/// N,E,h of a point: three numbers separated by commas, within their ranges.
CLI::Validator PointInSpace();

/// A file name that ends in .png or .svg.
CLI::Validator PictureName();

} // namespace cli
