// SPDX-License-Identifier: MIT
//
// The program run with a command line as one types it: words between blanks.
#pragma once

#include "tests/apps/cli/RunProgram.h"

#include <sstream>
#include <string>

namespace cli::test {

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

} // namespace cli::test
