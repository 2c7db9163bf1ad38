// SPDX-License-Identifier: MIT
//
// A text file of values under bracketed keys, one "[key]value" per line, each ended by CR LF.
//
// Bytes are UTF-8 and keys are compared byte by byte. Looking a key up is a plain text search: the
// first occurrence of "[key]" counts, anywhere in the file, and the value ends at the next CR. A
// value without a CR after it is empty. A zero byte is an ordinary character.
//
//   KeyedTextFile file;
//   double offset = 0.0;
//   if (file.OpenForReading(L"/etc/pole/limits.txt")) file.ReadDouble("Offset", offset);
//
// Every operation that takes a path, a key or a text allocates and may throw std::bad_alloc; the
// file on disk is then unchanged.
#pragma once

#include "framework/core/String.h"

#include <span>
#include <string>
#include <string_view>

namespace tiltpole::positioning {

struct KeyedDouble
{
    std::string_view key;
    double* value;
};

class KeyedTextFile
{
public:
    /// Reads the whole content of the file into memory.
    /// @return 0 if the file does not exist, cannot be read or is larger than 256 MiB, or if a
    ///         device or pipe delivers more than 1 MiB
    int OpenForReading(const CString& path);

    /// Starts new content, which replaces the file at Close.
    /// @return 0 if `path` cannot be a file
    int OpenForWriting(const CString& path);

    /// Replaces the file with the lines written, if it was opened for writing, and discards them.
    /// @return 0, with the old file unchanged, if a line was refused or the content did not reach
    ///         the device
    int Close();

    /// Append a line. A line of more than 100 bytes or a number that is not finite is refused, and
    /// Close then leaves the old file unchanged. @return 0 if refused
    int WriteString(std::string_view key, const CString& value);
    int WriteInteger(std::string_view key, int value);
    int WriteDouble(std::string_view key, double value); // ten decimals, no exponent

    /// The value of a key. White space before a number is skipped and text after it ignored; text
    /// that is not a decimal number within range is read as 0.
    /// @return 0, with `value` unchanged, if the key is missing or its value is empty
    int ReadString(std::string_view key, CString& value) const;
    int ReadInteger(std::string_view key, int& value) const;
    int ReadDouble(std::string_view key, double& value) const;

    /// ReadDouble for all of `values` in one pass over the content. The keys must differ from
    /// each other and contain no brackets.
    void ReadDoubles(std::span<const KeyedDouble> values) const;

    /// The content read, or written so far, for use without a file.
    void SetContent(std::string content) { m_content = std::move(content); }
    const std::string& GetContent() const { return m_content; }

private:
    std::string_view ValueOf(std::string_view key) const;
    int AppendLine(std::string_view key, std::string_view value);

    CString m_path;
    std::string m_content;
    bool m_writing = false;
    bool m_failed = false;
};

} // namespace tiltpole::positioning
