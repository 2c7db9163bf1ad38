// SPDX-License-Identifier: MIT
//
// Writing delimited text that CsvReader reads back as it was.
#pragma once

#include <fmt/format.h>
#include <string_view>

namespace cli {

/// Appends one field, quoted where its text asks for it.
void AppendField(fmt::memory_buffer& row, std::string_view text);

} // namespace cli
