// SPDX-License-Identifier: MIT
#include "apps/tables/CsvField.h"

#include <algorithm>
#include <iterator>

namespace tables {

void AppendField(fmt::memory_buffer& row, std::string_view text)
{
    const auto out = std::back_inserter(row);
    const bool padded = !text.empty() && (text.front() == ' ' || text.back() == ' ');
    if (!padded && text.find_first_of(",;\"\r") == std::string_view::npos) {
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
