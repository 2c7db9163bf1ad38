// SPDX-License-Identifier: MIT
//
// Lines of the summaries that the commands print.
#pragma once

#include <fmt/format.h>
#include <string>
#include <string_view>

namespace cli {

/// A label and, from the same column in every line, its text; with a line end.
inline std::string Line(std::string_view label, const std::string& text)
{
    return fmt::format("{:<24}{}\n", label, text);
}

} // namespace cli
