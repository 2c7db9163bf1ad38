// SPDX-License-Identifier: MIT
//
// A table of any bytes: every row has the fields of the header, and the rows written with commas and
// quotes are read back field by field.
#include "apps/tables/Csv.h"
#include "apps/tables/CsvField.h"
#include "fuzz/MemoryFile.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using fuzz::Require;
using Row = std::vector<std::string>;

// What is read; header first. Empty where the table is refused.
std::vector<Row> RowsOf(const std::string& path)
{
    std::vector<Row> rows;
    try {
        tables::CsvReader reader(path);
        rows.push_back(reader.Columns());
        Require(!rows.front().empty());
        while (true) {
            try {
                if (!reader.Next()) break;
            } catch (const tables::InputError&) {
                continue;
            }
            Row row;
            for (std::size_t c = 0; c < rows.front().size(); ++c)
                row.emplace_back(reader.Field(c));
            // Lines of separators alone are skipped like empty ones.
            if (std::any_of(row.begin(), row.end(), [](const auto& f) { return !f.empty(); }))
                rows.push_back(row);
        }
        Require(!reader.Failed());
    } catch (const tables::InputError&) {
        rows.clear();
    }
    return rows;
}

std::string TextOf(const std::vector<Row>& rows)
{
    fmt::memory_buffer text;
    // Else a name could make the file look like an archive, and a zero among its first 64 bytes like
    // UTF-16.
    text.append(std::string("#") + std::string(64, ' ') + "\n");
    for (const Row& row : rows) {
        for (std::size_t c = 0; c < row.size(); ++c) {
            if (c > 0) text.push_back(',');
            tables::AppendField(text, row[c]);
        }
        text.push_back('\n');
    }
    return {text.data(), text.size()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile file;
    file.Set({reinterpret_cast<const char*>(data), size});
    const std::vector<Row> rows = RowsOf(file.Path());
    // A separator at the end of a header begins no column.
    if (rows.size() < 2 || rows.front().size() < 2 || rows.front().back().empty()) return 0;
    file.Set(TextOf(rows));
    Require(RowsOf(file.Path()) == rows);
    return 0;
}
