// SPDX-License-Identifier: MIT
#include "apps/cli/transform/TransformPairs.h"

#include "apps/tables/Csv.h"
#include "apps/tables/Ranges.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace cli {

namespace {

// Selects the rows with this text in this column.
struct RowFilter
{
    std::size_t column;
    std::string value;
};

std::optional<RowFilter> FilterOf(const std::string& only, const tables::CsvReader& csv)
{
    if (only.empty()) return std::nullopt;
    const auto equals = only.find('=');
    return RowFilter{csv.Require(only.substr(0, equals)), only.substr(equals + 1)};
}

std::pair<tables::PlaneColumns, tables::PlaneColumns>
PairColumns(const tables::CsvReader& csv, const tables::ColumnChoice& choice)
{
    const auto source = tables::FindPlaneColumns(csv, kSource, choice);
    const auto target = tables::FindPlaneColumns(csv, kTarget, choice);
    std::vector<std::string> missing;
    if (!source) missing.insert(missing.end(), {kSource.firstKey, kSource.secondKey});
    if (!target) missing.insert(missing.end(), {kTarget.firstKey, kTarget.secondKey});
    if (!missing.empty()) throw csv.MissingColumns(missing);
    if (source->named != target->named && choice.empty())
        throw csv.HeaderError(
            fmt::format("it is unclear whether {} or {} goes with {}: choose with --columns",
                        csv.Columns()[target->first], csv.Columns()[target->second],
                        csv.Columns()[source->first]));
    return {*source, *target};
}

std::string LineName(std::uint64_t line)
{
    return fmt::format("line {}", line);
}

} // namespace

std::vector<PairRow> ReadPairs(const std::string& path, const tables::ColumnChoice& columns,
                               const std::string& only)
{
    tables::CsvReader csv(path, tables::kMostInMemory);
    const auto [source, target] = PairColumns(csv, columns);
    const auto name = tables::FindColumn(csv, kPairName, columns);
    const auto filter = FilterOf(only, csv);
    const auto coordinate = [&csv](std::size_t column) {
        return tables::NumberIn(csv, column, tables::kCoordinate);
    };
    std::vector<PairRow> rows;
    while (csv.Next()) {
        if (filter && csv.Field(filter->column) != filter->value) continue;
        PairRow row;
        row.line = csv.Line();
        row.name = name ? std::string(csv.Field(*name)) : LineName(row.line);
        row.pair.xSource = coordinate(source.first);
        row.pair.ySource = coordinate(source.second);
        row.pair.xTarget = coordinate(target.first);
        row.pair.yTarget = coordinate(target.second);
        rows.push_back(std::move(row));
    }
    return rows;
}

void DropPairs(std::vector<PairRow>& rows, const std::vector<std::string>& drop,
               const std::string& path)
{
    std::vector<std::uint64_t> lines;
    for (const std::string& text : drop) {
        const auto isNamed = [&](const PairRow& row) { return row.name == text; };
        const auto isOfLine = [&](const PairRow& row) {
            return LineName(row.line) == text || std::to_string(row.line) == text;
        };
        auto count = std::count_if(rows.begin(), rows.end(), isNamed);
        if (count > 1) {
            throw tables::InputError(
                path, fmt::format("{} pairs are named {}; give --drop a line number", count, text));
        }
        const auto found = count == 1 ? std::find_if(rows.begin(), rows.end(), isNamed)
                                      : std::find_if(rows.begin(), rows.end(), isOfLine);
        if (found == rows.end()) {
            throw tables::InputError(path, fmt::format("there is no pair {} to drop", text));
        }
        lines.push_back(found->line);
    }
    std::erase_if(rows, [&](const PairRow& row) {
        return std::find(lines.begin(), lines.end(), row.line) != lines.end();
    });
}

} // namespace cli
