// SPDX-License-Identifier: MIT
#include "apps/tables/CsvField.h"

#include "apps/tables/Numbers.h"
#include <algorithm>
#include <iterator>

namespace tables {

void AppendField(fmt::memory_buffer& row, std::string_view text)
{
    const auto out = std::back_inserter(row);
    const bool trimmed = Trim(text).size() != text.size();
    const bool comment = text.starts_with('#');
    if (!trimmed && !comment && text.find_first_of(",;\t\"\r") == std::string_view::npos) {
        std::copy(text.begin(), text.end(), out);
        return;
    }
    row.push_back('"');
    for (const char character : text) {
        if (character == '"') row.push_back('"');
        row.push_back(character);
    }
    row.push_back('"');
}

} // namespace tables
