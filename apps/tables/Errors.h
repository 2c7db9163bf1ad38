// SPDX-License-Identifier: MIT
//
// Failures that end a program: input that cannot be used, and output that nobody reads.
//
// main() prints the text of an InputError as one line on standard error and exits with
// cli::kUnreadable.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tables {

/// Input that cannot be used. The text is one complete sentence.
class InputError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    /// `file:line: reason`; lines count from 1.
    InputError(const std::string& file, std::uint64_t line, const std::string& reason)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + reason)
    {}

    /// `file: reason`, where there is no line to name.
    InputError(const std::string& file, const std::string& reason)
        : std::runtime_error(file + ": " + reason)
    {}
};

/// The reader of standard output has closed it (`| head`): the program ends quietly with kDone.
class OutputClosed : public std::runtime_error
{
public:
    OutputClosed() : std::runtime_error("standard output was closed") {}
};

} // namespace tables
