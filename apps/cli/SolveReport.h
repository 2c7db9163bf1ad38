// SPDX-License-Identifier: MIT
//
// What tiltpole solve says: the graded search, the estimate beside it, and which one to store.
#pragma once

#include "apps/cli/SolvedTip.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

/// A grade in words: what it means, and what to do about it.
struct GradeWords
{
    const char* meaning;
    const char* advice;
};
GradeWords WordsOf(int status);

/// What to store and why, in one or two sentences.
std::string Recommendation(const SolvedTip& solved);

std::string SolveText(const SolvedTip& solved);
nlohmann::ordered_json SolveJson(const SolvedTip& solved);

} // namespace cli
