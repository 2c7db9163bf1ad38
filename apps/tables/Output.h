// SPDX-License-Identifier: MIT
//
// Output files of the commands. A file is replaced atomically: it is written under a temporary name
// in the same folder, flushed to disk and renamed. Standard output is buffered, and every failed
// write is reported.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace tables {

class Output
{
public:
    /// @param path  "-" is standard output; a device or a pipe is written directly
    /// @throws InputError when it cannot be opened for writing
    explicit Output(const std::string& path);

    /// Discards a file that was not finished; the previous file remains.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// @throws InputError when a write fails, OutputClosed when standard output has no reader
    void Write(std::string_view text);

    /// Writes what is still buffered and renames the file. Nothing may be written afterward.
    /// @throws as Write
    void Finish();

private:
    void Flush();
    [[noreturn]] void Fail() const;

    std::string m_name;   // for messages
    std::string m_target; // final name
    std::string m_beside; // temporary name; empty when written directly
    int m_file = -1;
    std::string m_buffered;
};

/// Prevents a command from overwriting its own input, also under another name: recordings often
/// exist only once. Empty names and "-" are ignored.
/// @throws InputError naming the output file
void KeepInputs(std::initializer_list<std::string> outputs,
                std::initializer_list<std::string> inputs);

/// Replaces the file atomically.
/// @throws InputError when that fails
void WriteFile(const std::string& path, std::string_view content);

} // namespace tables
