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
    int exitCode = -1; // negative: ended by the signal of that number
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

/// Standard error goes to the named file or device instead of `err`.
Outcome RunProgramWithErrorsInto(const std::string& errors,
                                 const std::vector<std::string>& arguments);

/// Standard input is the named file or device.
Outcome RunProgramFrom(const std::string& input, const std::vector<std::string>& arguments);

/// The standard streams of these numbers, 0 to 2, are closed.
Outcome RunProgramWithClosed(const std::vector<int>& streams,
                             const std::vector<std::string>& arguments);

/// Sends `signal` once `isReady`, which is asked again and again. Standard input is `input`, and
/// stays open.
/// @return exitCode is the number of the signal that ended the program, negative
Outcome RunProgramAndSignal(const std::vector<std::string>& arguments, const std::string& input,
                            const std::function<bool()>& isReady, int signal);

/// Standard output is a pipe that is closed after the first byte.
Outcome RunProgramIntoClosedPipe(const std::vector<std::string>& arguments);

/// Standard error is a terminal.
Outcome RunProgramOnTerminal(const std::vector<std::string>& arguments, const Source& input);

} // namespace apps::test
