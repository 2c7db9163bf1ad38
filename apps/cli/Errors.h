// SPDX-License-Identifier: MIT
//
// How a program ends: the exit codes, and the exceptions that lead to them.
//
// A command throws InputError for anything it cannot read; main() prints the text as one line on
// standard error and exits with kUnreadable.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace cli {

enum ExitCode : int {
    kDone = 0,       // the work is done
    kNegative = 1,   // the work is done and its outcome is negative: no samples, refused, no fit
    kUnreadable = 2, // wrong use, unreadable input, or output that cannot be written
};

/// Input that cannot be used. The text is one plain sentence and stands alone.
class InputError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    /// `file:line: reason`; the line is counted from 1.
    InputError(const std::string& file, std::uint64_t line, const std::string& reason)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + reason)
    {}

    /// `file: reason`, where no line can be named.
    InputError(const std::string& file, const std::string& reason)
        : std::runtime_error(file + ": " + reason)
    {}
};

/// The reader of standard output has gone (`| head`): the program ends quietly, with kDone.
class OutputClosed : public std::runtime_error
{
public:
    OutputClosed() : std::runtime_error("standard output was closed") {}
};

} // namespace cli
