// SPDX-License-Identifier: MIT
//
// The report of tiltpole solve: the graded search, the estimate, and which tip to store.
#pragma once

#include "apps/cli/solve/SolvedTip.h"
#include <nlohmann/json.hpp>
#include <string>

namespace cli {

/// A grade in words: its condition and what to do about it.
struct GradeWords
{
    const char* meaning;
    const char* advice;
};
GradeWords WordsOf(int status);

/// Which tip to store and why, in one or two sentences.
std::string Recommendation(const SolvedTip& solved);

std::string SolveText(const SolvedTip& solved);
nlohmann::ordered_json SolveJson(const SolvedTip& solved);

} // namespace cli
