// SPDX-License-Identifier: MIT
#include "apps/tables/Dialect.h"

#include "apps/tables/Numbers.h"
#include <algorithm>
#include <fmt/format.h>

namespace tables {

namespace {

constexpr const char* kDecimalComma = " (decimal comma? The decimal sign is a point)";

bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

// A TAB is padding unless it separates.
char* SkipPadding(char* at, const char* end, char separator)
{
    while (at != end && (*at == ' ' || (*at == '\t' && separator != '\t')))
        ++at;
    return at;
}

char* EndOfField(char* at, char* end, char separator)
{
    return separator == kBlanks ? std::find_if(at, end, IsBlank) : std::find(at, end, separator);
}

// Adds the quoted field that opens at `at` and moves `at` behind it and the padding that follows.
const char* SplitQuoted(char*& at, char* end, char separator, std::vector<std::string_view>& fields)
{
    char* const first = at + 1;
    char* last = first;
    char* next = first;
    for (;; ++next) {
        if (next == end) return "a quoted field is not closed on its line";
        if (*next == '"') {
            if (next + 1 == end || next[1] != '"') break;
            ++next;
        }
        *last++ = *next;
    }
    fields.emplace_back(first, static_cast<std::size_t>(last - first));
    char* const behind = next + 1;
    at = SkipPadding(behind, end, separator);
    const bool separated = at == end || (separator == kBlanks ? at != behind : *at == separator);
    return separated ? nullptr : "text follows a quoted field";
}

struct Count
{
    std::size_t fields = 0; // 0: the line cannot be split
    bool openEnd = false;   // the last one is empty
};

Count CountFields(std::string_view line, char separator)
{
    std::string copy(line);
    std::vector<std::string_view> fields;
    if (SplitLine(copy.data(), copy.data() + copy.size(), separator, fields) != nullptr) return {};
    return {fields.size(), fields.size() > 1 && fields.back().empty()};
}

std::size_t ColumnsIn(std::string_view header, char separator)
{
    const Count count = CountFields(header, separator);
    return count.fields - (count.openEnd ? 1 : 0);
}

bool Fits(std::string_view header, std::string_view row, char separator)
{
    const std::size_t columns = ColumnsIn(header, separator);
    const Count count = CountFields(row, separator);
    return count.fields == columns || (count.openEnd && count.fields == columns + 1);
}

bool IsDigits(std::string_view text)
{
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsUnit(std::string_view word)
{
    return word.size() > 2
           && ((word.front() == '[' && word.back() == ']')
               || (word.front() == '(' && word.back() == ')'));
}

} // namespace

const char* NameOf(char separator)
{
    switch (separator) {
    case ',':
        return "commas";
    case ';':
        return "semicolons";
    case '\t':
        return "TABs";
    default:
        return "blanks";
    }
}

const char* SplitLine(char* begin, char* end, char separator, std::vector<std::string_view>& fields)
{
    fields.clear();
    for (char* at = begin;; ++at) {
        at = SkipPadding(at, end, separator);
        if (at == end && separator == kBlanks && !fields.empty()) return nullptr;
        if (at != end && *at == '"') {
            if (const char* problem = SplitQuoted(at, end, separator, fields)) return problem;
            if (separator == kBlanks && at != end) --at; // the padding was the separator
        } else {
            char* const stop = EndOfField(at, end, separator);
            fields.push_back(Trim({at, static_cast<std::size_t>(stop - at)}));
            at = stop;
        }
        if (at == end) return nullptr;
    }
}

std::vector<char> SeparatorsIn(std::string_view header)
{
    std::vector<char> found;
    bool quoted = false;
    for (const char character : header) {
        if (character == '"') quoted = !quoted;
        if (quoted || (character != ',' && character != ';' && character != '\t')) continue;
        if (std::find(found.begin(), found.end(), character) == found.end())
            found.push_back(character);
    }
    std::erase_if(found, [&](char separator) {
        return found.size() > 1 && ColumnsIn(header, separator) < 2;
    });
    return found;
}

char SeparatorOf(std::string_view header, const std::vector<char>& candidates,
                 std::optional<std::string_view> firstRow, std::string& problem)
{
    if (candidates.empty()) {
        const std::string_view text = Trim(header);
        return std::any_of(text.begin(), text.end(), IsBlank) ? kBlanks : ',';
    }
    if (candidates.size() == 1 || !firstRow) return candidates.front();

    std::vector<char> fitting;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(fitting),
                 [&](char separator) { return Fits(header, *firstRow, separator); });
    if (fitting.size() == 1) return fitting.front();
    problem = fmt::format("the header could be separated by {} or by {}, and {} of them {} the "
                          "first row into as many "
                          "fields; put names that contain a separator in quotes",
                          NameOf(candidates[0]), NameOf(candidates[1]),
                          fitting.empty() ? "none" : "more than one",
                          fitting.empty() ? "divides" : "divide");
    return candidates.front();
}

std::vector<std::string> JoinUnits(const std::vector<std::string_view>& words)
{
    std::vector<std::string> names;
    for (const std::string_view word : words) {
        if (IsUnit(word) && !names.empty()) {
            names.back() += ' ';
            names.back() += word;
        } else {
            names.emplace_back(word);
        }
    }
    return names;
}

std::string FieldCountHint(const std::vector<std::string_view>& fields, std::size_t columns,
                           char separator)
{
    if (separator == ',' && fields.size() > columns) {
        const std::size_t surplus = fields.size() - columns;
        const auto whole = std::count_if(fields.begin(), fields.end(), IsDigits);
        const bool points = std::any_of(fields.begin(), fields.end(), [](std::string_view field) {
            return ParseNumber(field) && field.find('.') != std::string_view::npos;
        });
        if (!points && static_cast<std::size_t>(whole) >= 2 * surplus) return kDecimalComma;
    }
    if (fields.size() == 1) {
        for (const char other : {',', ';', '\t', kBlanks})
            if (other != separator && CountFields(fields[0], other).fields == columns)
                return fmt::format(" (separated by {}, but the header by {}?)", NameOf(other),
                                   NameOf(separator));
    }
    return {};
}

std::string NumberHint(std::string_view text)
{
    if (std::count(text.begin(), text.end(), ',') != 1) return {};
    std::string pointed(text);
    std::replace(pointed.begin(), pointed.end(), ',', '.');
    return ParseNumber(pointed) ? kDecimalComma : "";
}

} // namespace tables
