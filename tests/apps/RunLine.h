// SPDX-License-Identifier: MIT
//
// Runs the program with a command line as typed: words separated by blanks.
#pragma once

#include "tests/apps/RunProgram.h"

#include <sstream>
#include <string>

namespace apps::test {

struct LineOutcome
{
    int exitCode;
    std::string output; // standard output, then standard error
};

inline LineOutcome RunLine(const std::string& line)
{
    std::istringstream words(line);
    std::vector<std::string> arguments;
    for (std::string word; words >> word;)
        arguments.push_back(word);
    const Outcome outcome = RunProgram(arguments);
    return {outcome.exitCode, outcome.out + outcome.err};
}

} // namespace apps::test
