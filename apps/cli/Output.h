// SPDX-License-Identifier: MIT
//
// What a command writes. A file is replaced whole or not at all: it is written beside its place,
// flushed to the disk and renamed. Standard output is buffered and every failing write is noticed.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace cli {

class Output
{
public:
    /// @param path  "-" is standard output; a device or a pipe is written in place
    /// @throws InputError when it cannot be opened for writing
    explicit Output(const std::string& path);

    /// Drops a file that was not finished; the old one stays.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// @throws InputError when a write fails, OutputClosed when standard output has no reader
    void Write(std::string_view text);

    /// Writes what is held back and puts the file in its place. Nothing may be written after it.
    /// @throws as Write
    void Finish();

private:
    void Flush();
    [[noreturn]] void Fail() const;

    std::string m_name;   // for messages
    std::string m_target; // final name
    std::string m_beside; // name while being written; empty when written in place
    int m_file = -1;
    std::string m_held;
};

/// Sees that no file that is written is one that is read, under whatever name: readings often exist
/// once only. Empty names and "-" are no files.
/// @throws InputError that names the file
void KeepInputs(std::initializer_list<std::string> outputs,
                std::initializer_list<std::string> inputs);

/// Replaces the file by the content, whole or not at all.
/// @throws InputError when that fails
void WriteFile(const std::string& path, std::string_view content);

} // namespace cli
