// SPDX-License-Identifier: MIT
//
// Checks of option values on the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>

namespace cli {

/// A finite number.
CLI::Validator FiniteNumber();

/// A finite number above zero.
CLI::Validator PositiveNumber();

/// `count` finite numbers separated by commas.
CLI::Validator NumberList(std::size_t count);

/// A file name that ends in .png or .svg.
CLI::Validator PictureName();

} // namespace cli
