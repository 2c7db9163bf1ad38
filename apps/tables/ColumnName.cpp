// SPDX-License-Identifier: MIT
#include "apps/tables/ColumnName.h"

#include "apps/tables/Numbers.h"
#include <algorithm>

namespace tables {

namespace {

struct UnitName
{
    std::string_view text;
    std::optional<ColumnUnit> unit; // nullopt: recognized in order to be refused
};

constexpr UnitName kUnits[] = {
    {"m",         ColumnUnit::Meters          },
    {"meter",     ColumnUnit::Meters          },
    {"meters",    ColumnUnit::Meters          },
    {"metre",     ColumnUnit::Meters          },
    {"metres",    ColumnUnit::Meters          },
    {"deg",       ColumnUnit::Degrees         },
    {"degree",    ColumnUnit::Degrees         },
    {"degrees",   ColumnUnit::Degrees         },
    {"\u00b0",    ColumnUnit::Degrees         },
    {"count",     ColumnUnit::Counts          },
    {"counts",    ColumnUnit::Counts          },
    {"lsb",       ColumnUnit::Counts          },
    {"g",         ColumnUnit::Gravities       },
    {"deg/s",     ColumnUnit::DegreesPerSecond},
    {"\u00b0/s",  ColumnUnit::DegreesPerSecond},
    {"dps",       ColumnUnit::DegreesPerSecond},
    {"mm",        std::nullopt                },
    {"cm",        std::nullopt                },
    {"dm",        std::nullopt                },
    {"km",        std::nullopt                },
    {"ft",        std::nullopt                },
    {"feet",      std::nullopt                },
    {"foot",      std::nullopt                },
    {"usft",      std::nullopt                },
    {"us ft",     std::nullopt                },
    {"inch",      std::nullopt                },
    {"yd",        std::nullopt                },
    {"rad",       std::nullopt                },
    {"radians",   std::nullopt                },
    {"mrad",      std::nullopt                },
    {"rad/s",     std::nullopt                },
    {"gon",       std::nullopt                },
    {"grad",      std::nullopt                },
    {"mil",       std::nullopt                },
    {"ut",        std::nullopt                },
    {"nt",        std::nullopt                },
    {"\u00b5t",   std::nullopt                },
    {"\u03bct",   std::nullopt                },
    {"mg",        std::nullopt                },
    {"gauss",     std::nullopt                },
    {"mgauss",    std::nullopt                },
    {"m/s2",      std::nullopt                },
    {"m/s^2",     std::nullopt                },
    {"m/s\u00b2", std::nullopt                },
};

std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char& character : lower)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    return lower;
}

const UnitName* UnitOf(std::string_view text)
{
    const std::string lower = Lower(Trim(text));
    const auto* const found =
        std::find_if(std::begin(kUnits), std::end(kUnits),
                     [&](const UnitName& unit) { return unit.text == lower; });
    return found == std::end(kUnits) ? nullptr : found;
}

bool Separates(char character)
{
    return character == ' ' || character == '\t' || character == '_' || character == '-'
           || character == '.';
}

std::string JoinWords(std::string_view text)
{
    std::string joined;
    bool gap = false;
    for (const char character : Lower(text)) {
        if (Separates(character)) {
            gap = !joined.empty();
            continue;
        }
        if (gap) joined += '_';
        gap = false;
        joined += character;
    }
    return joined;
}

// Where the unit begins, in brackets or behind a slash; npos where there is none.
std::size_t UnitMark(std::string_view text)
{
    if (text.ends_with(']')) return text.rfind('[');
    if (text.ends_with(')')) return text.rfind('(');
    return text.find('/');
}

ColumnName WithUnit(std::string_view base, std::string_view unit, const UnitName& known)
{
    return {JoinWords(base), std::string(Trim(unit)), known.unit};
}

bool IsWord(std::string_view word, std::string_view words)
{
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        if (words.substr(0, end) == word) return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

} // namespace

ColumnName ParseColumnName(std::string_view text)
{
    text = Trim(text);
    const std::size_t mark = UnitMark(text);
    if (mark != std::string_view::npos && mark > 0) {
        std::string_view unit = text.substr(mark + 1);
        if (text[mark] != '/') unit.remove_suffix(1);
        if (const UnitName* known = UnitOf(unit))
            return WithUnit(text.substr(0, mark), unit, *known);
    }
    // The last word, unless the name consists of it.
    const auto last = std::find_if(text.rbegin(), text.rend(), Separates);
    const auto start = static_cast<std::size_t>(text.rend() - last);
    if (start > 1) {
        if (const UnitName* known = UnitOf(text.substr(start)))
            return WithUnit(text.substr(0, start), text.substr(start), *known);
    }
    return {JoinWords(text), {}, std::nullopt};
}

std::optional<std::string> TagOf(std::string_view base, std::string_view names,
                                 std::string_view tags)
{
    const bool untagged = !IsWord("!", tags);
    if (untagged && IsWord(base, names)) return std::string{};
    for (std::size_t at = base.find('_'); at != std::string_view::npos;
         at = base.find('_', at + 1)) {
        const std::string_view before = base.substr(0, at);
        const std::string_view behind = base.substr(at + 1);
        if (IsWord(before, tags) && IsWord(behind, names)) return std::string(before);
        if (IsWord(behind, tags) && IsWord(before, names)) return std::string(behind);
    }
    return std::nullopt;
}

} // namespace tables
