// SPDX-License-Identifier: MIT
//
// What a program has to say besides its results: on standard error, and never a reason to fail.
#pragma once

#include <fmt/format.h>
#include <string_view>
#include <utility>

namespace tables {

/// Writes the text to standard error as it is. What cannot be written, because the stream is
/// closed, full or no longer read, is dropped.
void TellText(std::string_view text);

/// The same for a format of the library fmt and its values.
template <class... Values>
void Tell(fmt::format_string<Values...> form, Values&&... values)
{
    TellText(fmt::format(form, std::forward<Values>(values)...));
}

} // namespace tables
