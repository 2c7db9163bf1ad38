// SPDX-License-Identifier: MIT
//
// --columns: which columns of a table to read, where their names do not say so.
#pragma once

#include "apps/tables/ColumnNames.h"
#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace cli {

/// Adds --columns, one argument with commas inside: either the names of all columns in `order`
/// (`Hochwert,Rechtswert,Hoehe`), or `KEY=NAME` for some keys of `order` and `more`.
/// @param order   one or more
/// @param choice  filled when the command line is parsed; must outlive it
void AddColumnsOption(CLI::App& command, tables::ColumnChoice& choice,
                      std::vector<std::string> order, std::vector<std::string> more = {});

} // namespace cli
