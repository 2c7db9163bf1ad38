// SPDX-License-Identifier: MIT
#include "apps/tables/ColumnNames.h"

#include "apps/tables/ColumnName.h"
#include <algorithm>
#include <fmt/format.h>

namespace tables {

namespace {

constexpr const char* kPlainNames[] = {"x", "y"};
constexpr const char* kNamedNames[] = {"n north northing", "e east easting"};
constexpr const char* kAntennaTags = "antenna";
constexpr PlaneQuantity kAntennaPlane{"N", "E", kAntennaTags};
constexpr Quantity kAntennaHeight{"h", ColumnUnit::Meters, "h z height elevation altitude",
                                  kAntennaTags};

const char* UnitText(ColumnUnit unit)
{
    switch (unit) {
    case ColumnUnit::Meters:
        return "meters";
    case ColumnUnit::Degrees:
        return "degrees";
    case ColumnUnit::Counts:
        return "counts";
    case ColumnUnit::Gravities:
        return "g";
    case ColumnUnit::DegreesPerSecond:
        return "degrees per second";
    case ColumnUnit::None:
        break;
    }
    return "no unit";
}

InputError WrongUnit(const CsvReader& rows, std::size_t column, const char* key, ColumnUnit unit)
{
    const std::string& name = rows.Columns()[column];
    return rows.HeaderError(fmt::format("{} is needed in {}, but the column {} is in {}", key,
                                        UnitText(unit), name, ParseColumnName(name).unit));
}

InputError Ambiguous(const CsvReader& rows, std::string_view key, std::size_t a, std::size_t b)
{
    const auto& names = rows.Columns();
    if (names[a] == names[b])
        return rows.HeaderError(fmt::format("the column {} appears twice", names[a]));
    return rows.HeaderError(fmt::format("{} could be the column {} or the column {}: choose with "
                                        "--columns",
                                        key, names[a], names[b]));
}

// The column that the user chose for the key.
std::optional<std::size_t> Chosen(const CsvReader& rows, const char* key, ColumnUnit unit,
                                  const ColumnChoice& choice)
{
    const auto chosen = choice.find(key);
    if (chosen == choice.end()) return std::nullopt;
    const std::size_t column = rows.Require(chosen->second);
    const ColumnName name = ParseColumnName(chosen->second);
    if (unit != ColumnUnit::None && !name.Has(unit)) throw WrongUnit(rows, column, key, unit);
    return column;
}

struct Candidate
{
    std::size_t column;
    std::string tag;
};

// The columns with one of the names, in the header's order. Those in another unit do not count, and
// the first of them goes to `wrongUnit`.
std::vector<Candidate> Candidates(const CsvReader& rows, const Quantity& quantity,
                                  std::optional<std::size_t>& wrongUnit)
{
    std::vector<Candidate> found;
    for (std::size_t i = 0; i < rows.Columns().size(); ++i) {
        const ColumnName name = ParseColumnName(rows.Columns()[i]);
        auto tag = TagOf(name.base, quantity.names, quantity.tags);
        if (!tag) continue;
        if (name.Has(quantity.unit)) {
            found.push_back({i, std::move(*tag)});
        } else if (!wrongUnit) {
            wrongUnit = i;
        }
    }
    return found;
}

// Pairs of one kind, x with y or N with E. Columns that lack their partner go to `single`.
void AddPairs(const CsvReader& rows, const PlaneQuantity& quantity, bool named,
              std::vector<PlaneColumns>& pairs, std::vector<std::size_t>& single,
              std::optional<std::size_t>& wrongUnit)
{
    const auto& names = named ? kNamedNames : kPlainNames;
    const auto first = Candidates(
        rows, {quantity.firstKey, ColumnUnit::Meters, names[0], quantity.tags}, wrongUnit);
    const auto second = Candidates(
        rows, {quantity.secondKey, ColumnUnit::Meters, names[1], quantity.tags}, wrongUnit);
    const auto repeated = [&](const std::vector<Candidate>& found, const char* key) {
        for (std::size_t i = 1; i < found.size(); ++i)
            for (std::size_t k = 0; k < i; ++k)
                if (found[i].tag == found[k].tag)
                    throw Ambiguous(rows, key, found[k].column, found[i].column);
    };
    repeated(first, quantity.firstKey);
    repeated(second, quantity.secondKey);
    for (const Candidate& f : first) {
        const auto partner = std::find_if(second.begin(), second.end(),
                                          [&](const Candidate& s) { return s.tag == f.tag; });
        if (partner != second.end()) {
            pairs.push_back({f.column, partner->column, named, f.tag});
        } else {
            single.push_back(f.column);
        }
    }
    for (const Candidate& s : second) {
        if (std::none_of(first.begin(), first.end(),
                         [&](const Candidate& f) { return s.tag == f.tag; }))
            single.push_back(s.column);
    }
}

} // namespace

std::optional<std::size_t> FindColumn(const CsvReader& rows, const Quantity& quantity,
                                      const ColumnChoice& choice)
{
    if (const auto chosen = Chosen(rows, quantity.key, quantity.unit, choice)) return chosen;
    std::optional<std::size_t> wrongUnit;
    const auto found = Candidates(rows, quantity, wrongUnit);
    if (found.size() > 1) throw Ambiguous(rows, quantity.key, found[0].column, found[1].column);
    if (found.size() == 1) return found[0].column;
    if (wrongUnit) throw WrongUnit(rows, *wrongUnit, quantity.key, quantity.unit);
    return std::nullopt;
}

std::vector<PlaneColumns> FindPlanePairs(const CsvReader& rows, const PlaneQuantity& quantity,
                                         const ColumnChoice& choice)
{
    const auto first = Chosen(rows, quantity.firstKey, ColumnUnit::Meters, choice);
    const auto second = Chosen(rows, quantity.secondKey, ColumnUnit::Meters, choice);
    if (first && second) {
        if (*first == *second)
            throw rows.HeaderError(fmt::format("{} and {} are the same column {}",
                                               quantity.firstKey, quantity.secondKey,
                                               rows.Columns()[*first]));
        return {
            {*first, *second, true, {}}
        };
    }
    if (first || second)
        throw rows.HeaderError(fmt::format("--columns gives {} without {}",
                                           first ? quantity.firstKey : quantity.secondKey,
                                           first ? quantity.secondKey : quantity.firstKey));

    std::vector<PlaneColumns> pairs;
    std::vector<std::size_t> single;
    std::optional<std::size_t> wrongUnit;
    for (const bool named : {true, false})
        AddPairs(rows, quantity, named, pairs, single, wrongUnit);
    if (pairs.empty() && wrongUnit)
        throw WrongUnit(rows, *wrongUnit, "a coordinate", ColumnUnit::Meters);
    if (pairs.empty() && single.size() > 1)
        throw rows.HeaderError(fmt::format(
            "the columns {} and {} do not go together as {} and {}: choose with --columns",
            rows.Columns()[single[0]], rows.Columns()[single[1]], quantity.firstKey,
            quantity.secondKey));
    std::sort(pairs.begin(), pairs.end(),
              [](const PlaneColumns& a, const PlaneColumns& b) { return a.first < b.first; });
    return pairs;
}

std::optional<PlaneColumns> FindPlaneColumns(const CsvReader& rows, const PlaneQuantity& quantity,
                                             const ColumnChoice& choice)
{
    const auto pairs = FindPlanePairs(rows, quantity, choice);
    if (pairs.size() > 1) throw Ambiguous(rows, quantity.firstKey, pairs[0].first, pairs[1].first);
    if (pairs.empty()) return std::nullopt;
    return pairs.front();
}

std::optional<PointColumns> FindPointColumns(const CsvReader& rows, const ColumnChoice& choice,
                                             std::vector<std::string>& missing)
{
    const auto plane = FindPlaneColumns(rows, kAntennaPlane, choice);
    auto height = Chosen(rows, kAntennaHeight.key, ColumnUnit::Meters, choice);
    if (!height) {
        std::optional<std::size_t> wrongUnit;
        auto found = Candidates(rows, kAntennaHeight, wrongUnit);
        // To a surveyor an "antenna height" is a length along the pole.
        std::erase_if(found, [&](const Candidate& c) {
            return ParseColumnName(rows.Columns()[c.column]).base == "antenna_height";
        });
        const auto all = found;
        if (plane && !choice.contains(kAntennaPlane.firstKey))
            std::erase_if(found, [&](const Candidate& c) { return c.tag != plane->tag; });
        if (found.size() > 1) throw Ambiguous(rows, "h", found[0].column, found[1].column);
        if (found.empty() && wrongUnit) throw WrongUnit(rows, *wrongUnit, "h", ColumnUnit::Meters);
        if (found.empty() && !all.empty())
            throw rows.HeaderError(
                fmt::format("the column {} does not go with {}: choose with --columns",
                            rows.Columns()[all[0].column], rows.Columns()[plane->first]));
        if (!found.empty()) height = found[0].column;
    }
    if (!plane) missing.insert(missing.end(), {"N", "E"});
    if (!height) missing.emplace_back("h");
    if (!plane || !height) return std::nullopt;
    return PointColumns{plane->first, plane->second, *height};
}

std::string DescribeColumns(const CsvReader& rows,
                            const std::vector<std::pair<std::string, std::size_t>>& columns)
{
    std::string text;
    for (const auto& [key, column] : columns) {
        const std::string& name = rows.Columns()[column];
        if (name != key) text += fmt::format("{}{} from {}", text.empty() ? "" : ", ", key, name);
    }
    return text;
}

} // namespace tables
