// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterCheck.h"

#include "apps/tables/Errors.h"
#include "apps/tables/FileKind.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <fmt/ranges.h>
#include <string>
#include <vector>

namespace cli {

void LoadParameters(const std::string& path, CInclineSensor_Position& position, bool partial)
{
    const std::string content = tables::ReadFile(path, quality::kLargestParameterFile);
    // Such a file has no key at all, which would do where keys may be missing.
    const std::string utf16 = tables::Utf16Kind(content);
    if (!utf16.empty()) throw tables::InputError(path, utf16);
    const auto problems = quality::LoadParameterText(
        content, position, partial ? quality::ParameterKeys::Some : quality::ParameterKeys::All);
    if (problems.empty()) return;

    std::vector<std::string> sentences;
    sentences.reserve(problems.size());
    for (const auto& problem : problems)
        sentences.push_back(problem.key + ' ' + problem.reason);
    const std::string reason = fmt::format("{}", fmt::join(sentences, "; "));
    const auto first = std::find_if(problems.begin(), problems.end(),
                                    [](const auto& problem) { return problem.line != 0; });
    if (first == problems.end()) throw tables::InputError(path, reason);
    throw tables::InputError(path, first->line, reason);
}

} // namespace cli
