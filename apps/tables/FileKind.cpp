// SPDX-License-Identifier: MIT
#include "apps/tables/FileKind.h"

#include <fmt/format.h>

namespace tables {

namespace {

using namespace std::string_view_literals;

struct Signature
{
    std::string_view bytes;
    const char* what;
};

// RFC 1952, APPNOTE.TXT, the xz file format, bzip2 and RFC 8878.
constexpr Signature kCompressed[] = {
    {"\x1F\x8B"sv,         "gzip" },
    {"\xFD"
     "7zXZ"sv,        "xz"   },
    {"BZh"sv,              "bzip2"},
    {"\x28\xB5\x2F\xFD"sv, "zstd" },
};

} // namespace

std::string ForeignKind(std::string_view start)
{
    for (const Signature& signature : kCompressed)
        if (start.starts_with(signature.bytes))
            return fmt::format("is compressed ({})? Unpack it first", signature.what);
    if (start.starts_with("PK\x03\x04"sv))
        return "is compressed (zip)? Unpack it first; save a spreadsheet as CSV";
    if (start.starts_with("\xD0\xCF\x11\xE0"sv)) return "is a spreadsheet: save it as CSV";
    return Utf16Kind(start);
}

std::string Utf16Kind(std::string_view start)
{
    const bool hasMark = start.starts_with("\xFF\xFE"sv) || start.starts_with("\xFE\xFF"sv);
    if (hasMark || start.substr(0, 64).find('\0') != std::string_view::npos)
        return "is not UTF-8 (UTF-16?): save it as UTF-8";
    return {};
}

} // namespace tables
