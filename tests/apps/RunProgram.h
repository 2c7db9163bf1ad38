// SPDX-License-Identifier: MIT
//
// Runs the built program as a user would: arguments, standard input, output, exit code.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace apps::test {

struct Outcome
{
    int exitCode = -1; // -1: ended by a signal
    std::string out;
    std::string err;
    long peakMemory = 0; // of the process [KiB]
};

/// Returns standard input block by block; an empty block ends it.
using Source = std::function<std::string()>;

/// @param arguments  without the program's name; the first is the command
Outcome RunProgram(const std::vector<std::string>& arguments, const std::string& input = {});
Outcome RunProgram(const std::vector<std::string>& arguments, const Source& input);

/// Standard output goes to the named file or device instead of `out`.
Outcome RunProgramInto(const std::string& output, const std::vector<std::string>& arguments);

/// Standard output is a pipe that is closed after the first byte.
Outcome RunProgramIntoClosedPipe(const std::vector<std::string>& arguments);

/// Standard error is a terminal.
Outcome RunProgramOnTerminal(const std::vector<std::string>& arguments, const Source& input);

} // namespace apps::test
