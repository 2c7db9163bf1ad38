// SPDX-License-Identifier: MIT
//
// A text file of values under bracketed keys, one "[key]value" per line, each ended by CR LF.
//
// Bytes are UTF-8; keys are compared byte by byte. A key is looked for as a plain text: the first
// place in the whole file that reads "[key]" counts, in whatever line, and its value goes up to
// the next CR. A value without a CR behind it is empty. A 0 byte is a character like others.
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
    /// Takes the whole content of the file into memory.
    /// @return 0 where there is no such file, it cannot be read, or exceeds 256 MiB
    int OpenForReading(const CString& path);

    /// Begins a new content; the file is replaced by it at Close.
    /// @return 0 where `path` cannot be a file
    int OpenForWriting(const CString& path);

    /// Puts what was written in the place of the file, whole or not at all, and forgets it.
    /// @return 0, with the old file as it was, where a line could not be written or the content
    ///         did not reach the device
    int Close();

    /// Append a line. One longer than 100 bytes, or a number that is not finite, is refused and
    /// fails the file. @return 0 where refused
    int WriteString(std::string_view key, const CString& value);
    int WriteInteger(std::string_view key, int value);
    int WriteDouble(std::string_view key, double value); // ten decimals, no exponent

    /// The value of a key. Numbers: white space is skipped, trailing text ignored; what is no
    /// decimal number, or out of range, gives 0.
    /// @return 0, with `value` as it was, where the key is missing or its value is empty
    int ReadString(std::string_view key, CString& value) const;
    int ReadInteger(std::string_view key, int& value) const;
    int ReadDouble(std::string_view key, double& value) const;

    /// ReadDouble for all of `values` in one pass over the content. Keys differ and hold no
    /// brackets.
    void ReadDoubles(std::span<const KeyedDouble> values) const;

    /// Content as read or written so far, for use without a file.
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
