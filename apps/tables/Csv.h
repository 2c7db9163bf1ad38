// SPDX-License-Identifier: MIT
//
// Delimited text, read one row at a time by column names.
//
//   separator   one of , ; TAB, or runs of blanks; the header and, where it leaves a choice, the
//               first row decide for the whole file (Dialect.h). The decimal sign is a point
//   lines       end with LF or CR LF; skipped are a UTF-8 byte-order mark, empty lines, those that
//               start with # and, before the header, a line `sep=;`
//   fields      may be quoted with ", quotes inside are doubled; a quoted field ends on its line
//   memory      one line at a time, and no line beyond kLongestLine; files may be of any size
//               unless the caller keeps their rows and gives a limit
//
//     CsvReader rows("points.csv");
//     const std::size_t north = rows.Require("N");
//     while (rows.Next()) Use(rows.Number(north));
#pragma once

#include "apps/tables/Errors.h"
#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tables {

class CsvReader
{
public:
    static constexpr std::size_t kLongestLine = std::size_t{1} << 20; // bytes

    /// Opens the file and reads its header line.
    /// @param path  "-" is standard input, shown as <stdin> in messages
    /// @param mostBytes  a longer file is an InputError once that much has been read
    /// @throws InputError when it cannot be read, is no plain text, has no header, or has one that
    ///         could be split in two ways
    explicit CsvReader(const std::string& path, std::uint64_t mostBytes = UINT64_MAX);
    ~CsvReader();
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;

    const std::vector<std::string>& Columns() const { return m_columns; }

    /// The position of the column with exactly this name, if any.
    /// @throws InputError when the header contains the name twice
    std::optional<std::size_t> Find(std::string_view name) const;

    /// The position of the column with exactly this name.
    /// @throws InputError naming the column when the header lacks it
    std::size_t Require(std::string_view name) const;

    /// Reads the next row. After an InputError the bad line has been consumed, and a caller that
    /// skips bad rows may call again.
    /// @return false at the end of the file
    /// @throws InputError for a row with more or fewer fields than the header, an unclosed quote, a
    ///         line that is too long, a failed read
    bool Next();

    /// One field of the current row; valid until Next is called.
    std::string_view Field(std::size_t column) const { return m_fields[column]; }

    /// One field of the current row as a finite number.
    /// @throws InputError naming line, column and text
    double Number(std::size_t column) const;

    /// An error about the current row: `file:line: reason`.
    InputError Error(const std::string& reason) const { return {m_name, m_line, reason}; }

    /// An error about the header line.
    InputError HeaderError(const std::string& reason) const
    {
        return {m_name, m_headerLine, reason};
    }

    /// An error that names columns which the header lacks, and those that it has.
    InputError MissingColumns(const std::vector<std::string>& keys) const;

    /// True after a failed read, after which there are no more rows: unlike a bad row, it cannot
    /// be skipped.
    bool Failed() const { return m_failed; }

    const std::string& Name() const { return m_name; }
    std::uint64_t Line() const { return m_line; }           // of the current row, from 1
    std::uint64_t BytesRead() const { return m_bytesRead; } // so far
    std::uint64_t Size() const { return m_size; }           // bytes of a regular file, else 0

private:
    bool NextLine(char*& begin, char*& end);
    bool Fill();
    void DropRestOfLine();
    void ReadHeader();
    char DecideSeparator(const std::string& header);
    bool NextRowLine(char*& begin, char*& end);

    std::string m_name;
    int m_file;
    std::uint64_t m_mostBytes;
    std::uint64_t m_size = 0;
    std::uint64_t m_bytesRead = 0;
    std::uint64_t m_line = 0;
    std::uint64_t m_headerLine = 1;
    bool m_failed = false;
    bool m_atEnd = false;
    char m_separator = ',';
    std::vector<char> m_buffer;
    std::size_t m_begin = 0; // unread bytes of m_buffer
    std::size_t m_end = 0;
    std::vector<std::string> m_columns;
    std::vector<std::string_view> m_fields; // point into m_buffer or m_ownRow
    std::uint64_t m_comments = 0;
    std::optional<std::string> m_firstRow; // read ahead of Next
    std::exception_ptr m_firstFailure;     // likewise, where it cannot be read
    std::string m_ownRow;
};

} // namespace tables
