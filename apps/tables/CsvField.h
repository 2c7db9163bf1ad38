// SPDX-License-Identifier: MIT
//
// Writing delimited text that CsvReader reads back unchanged.
#pragma once

#include <fmt/format.h>
#include <string_view>

namespace tables {

/// Appends one field, in quotes where its text contains separators, quotes or outer blanks, or
/// starts like a comment.
void AppendField(fmt::memory_buffer& row, std::string_view text);

} // namespace tables
