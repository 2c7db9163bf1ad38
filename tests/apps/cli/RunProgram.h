// SPDX-License-Identifier: MIT
//
// Runs the built program as a user would: arguments, standard input, what it prints, how it ends.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace cli::test {

struct Outcome
{
    int exitCode = -1; // -1: ended by a signal
    std::string out;
    std::string err;
    long peakMemory = 0; // of the process [KiB]
};

/// Hands out the bytes of standard input block by block; an empty block ends it.
using Source = std::function<std::string()>;

/// @param arguments  behind the program's name; the first is the command
Outcome RunProgram(const std::vector<std::string>& arguments, const std::string& input = {});
Outcome RunProgram(const std::vector<std::string>& arguments, const Source& input);

/// Standard output goes to the named file or device instead of `out`.
Outcome RunProgramInto(const std::string& output, const std::vector<std::string>& arguments);

/// Standard output is a pipe whose reader goes after the first byte.
Outcome RunProgramIntoClosedPipe(const std::vector<std::string>& arguments);

/// Standard error is a terminal.
Outcome RunProgramOnTerminal(const std::vector<std::string>& arguments, const Source& input);

} // namespace cli::test
