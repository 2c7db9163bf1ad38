// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterCheck.h"

#include "apps/tables/Errors.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>
#include <optional>
#include <set>
#include <string_view>

namespace cli {

namespace {

// Limits of a plausible calibration. A scale is the ratio of two axes of one magnetometer, a share
// the part of one axis in another; offsets are limited by the range of raw counts.
struct Limits
{
    double low, high;
};

constexpr Limits kScale{0.1, 10.0};
constexpr Limits kShare{-5.0, 5.0};
constexpr Limits kOffset{-1e6, 1e6};   // counts
constexpr Limits kBias{-360.0, 360.0}; // degrees

struct Key
{
    std::string name;
    Limits limits;
};

const std::vector<Key>& Keys()
{
    static const std::vector<Key> keys = [] {
        std::vector<Key> all;
        for (const char* magnetometer : {"MagneticA.", "MagneticB."}) {
            for (const char* name : {"a", "b", "c", "d", "e"}) {
                const bool isScale = *name == 'b' || *name == 'e';
                all.push_back({std::string(magnetometer) + name, isScale ? kScale : kShare});
            }
            for (const char* name : {"x0", "y0", "z0"}) {
                all.push_back({std::string(magnetometer) + name, kOffset});
            }
        }
        for (const char* name : {"dX", "dY", "dZ"}) {
            all.push_back({std::string("CoorTrans.") + name, kOffset});
        }
        for (const char* name : {"A", "B"}) {
            all.push_back({std::string("MagneticBiasAngle_") + name, kBias});
        }
        return all;
    }();
    return keys;
}

// Where the text "[key]" stands for the first time.
struct Place
{
    std::size_t value;  // behind the bracket
    std::uint64_t line; // from 1
};

// The first places of all keys, in one pass. A key can begin only at the last '[' before a ']'.
std::map<std::string_view, Place> PlacesOf(const std::string& content)
{
    std::set<std::string_view> missing;
    for (const Key& key : Keys())
        missing.insert(key.name);

    std::map<std::string_view, Place> places;
    std::size_t open = 0; // behind the last '[' that no ']' follows yet; 0: there is none
    std::uint64_t line = 1;
    for (std::size_t at = 0; at < content.size() && !missing.empty(); ++at) {
        if (content[at] == '\n') ++line;
        if (content[at] == '[') open = at + 1;
        if (content[at] != ']' || open == 0) continue;
        const auto key = missing.find(std::string_view(content).substr(open, at - open));
        open = 0;
        if (key == missing.end()) continue;
        places[*key] = {at + 1, line};
        missing.erase(key);
    }
    return places;
}

// As the library reads it: the text from the first occurrence of the bracketed key to the next CR.
std::optional<ParameterProblem> Check(const Key& key, const std::string& content,
                                      const std::map<std::string_view, Place>& places)
{
    const auto place = places.find(key.name);
    if (place == places.end()) return ParameterProblem{key.name, 0, "is missing"};

    const auto [first, line] = place->second;
    const std::size_t end = content.find('\r', first);
    if (end == std::string::npos) {
        return ParameterProblem{key.name, line,
                                "is not read, because no line from there on ends with CR LF"};
    }
    const std::string text = content.substr(first, end - first);
    const auto value = tables::ParseNumber(text);
    if (!value) {
        return ParameterProblem{key.name, line, fmt::format("is '{:.40}', not a number", text)};
    }
    if (*value < key.limits.low || *value > key.limits.high) {
        return ParameterProblem{
            key.name, line,
            fmt::format("is {}, not between {} and {}", *value, key.limits.low, key.limits.high)};
    }
    return std::nullopt;
}

} // namespace

std::vector<ParameterProblem> CheckParameters(const std::string& path)
{
    const std::string content = tables::ReadFile(path);
    const std::map<std::string_view, Place> places = PlacesOf(content);
    std::vector<ParameterProblem> problems;
    for (const Key& key : Keys()) {
        if (auto problem = Check(key, content, places)) problems.push_back(std::move(*problem));
    }
    return problems;
}

void LoadParameters(const std::string& path, CInclineSensor_Position& position, bool partial)
{
    std::vector<ParameterProblem> problems = CheckParameters(path);
    if (partial) std::erase_if(problems, [](const auto& problem) { return problem.line == 0; });
    if (!problems.empty()) {
        std::vector<std::string> sentences;
        sentences.reserve(problems.size());
        for (const auto& problem : problems)
            sentences.push_back(problem.key + ' ' + problem.what);
        const std::string reason = fmt::format("{}", fmt::join(sentences, "; "));
        const auto first = std::find_if(problems.begin(), problems.end(),
                                        [](const auto& problem) { return problem.line != 0; });
        if (first == problems.end()) throw tables::InputError(path, reason);
        throw tables::InputError(path, first->line, reason);
    }
    if (position.ConfigRead(path.c_str()) != 1) throw tables::InputError(path, "cannot be read");
}

} // namespace cli
