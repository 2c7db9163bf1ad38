// SPDX-License-Identifier: MIT
//
// Recognizing files that are no plain text, by how they begin.
#pragma once

#include <string>
#include <string_view>

namespace tables {

/// What a file that begins with these bytes is instead of UTF-8 text, and what to do about it: "is
/// compressed (gzip)? ...". Recognized are gzip, zip (also spreadsheets), xz, bzip2, zstd, the
/// older spreadsheet format, and UTF-16 by its byte-order mark or its zero bytes.
/// @param start  the first bytes of the file, at least six where the file has them
/// @return empty for anything else
std::string ForeignKind(std::string_view start);

/// What ForeignKind says of UTF-16; empty for anything else.
std::string Utf16Kind(std::string_view start);

} // namespace tables
