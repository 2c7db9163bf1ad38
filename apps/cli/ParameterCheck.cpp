// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterCheck.h"

#include "apps/tables/Errors.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>

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

// As the library reads it: the text from the first occurrence of the bracketed key to the next CR.
std::optional<ParameterProblem> Check(const Key& key, const std::string& content)
{
    const std::string bracketed = "[" + key.name + "]";
    const std::size_t at = content.find(bracketed);
    if (at == std::string::npos) return ParameterProblem{key.name, 0, "is missing"};

    const auto line = static_cast<std::uint64_t>(
        1 + std::count(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
    const std::size_t first = at + bracketed.size();
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
    std::vector<ParameterProblem> problems;
    for (const Key& key : Keys()) {
        if (auto problem = Check(key, content)) problems.push_back(std::move(*problem));
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
