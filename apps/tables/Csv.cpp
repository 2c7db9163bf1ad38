// SPDX-License-Identifier: MIT
#include "apps/tables/Csv.h"

#include "apps/tables/Dialect.h"
#include "apps/tables/FileKind.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tables {

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 16; // bytes read at a time

std::string SystemReason()
{
    return std::generic_category().message(errno);
}

// A field as messages show it: its first characters are enough to find it.
std::string Shown(std::string_view text)
{
    constexpr std::size_t kMost = 40;
    if (text.size() <= kMost) return std::string(text);
    return std::string(text.substr(0, kMost)) + "...";
}

// A line with nothing but separators and blanks contains no row.
bool IsEmptyLine(std::string_view line)
{
    return line.find_first_not_of(" \t,;") == std::string_view::npos;
}

bool IsComment(std::string_view line)
{
    const std::string_view text = Trim(line);
    return !text.empty() && text.front() == '#';
}

// `sep=;`, which spreadsheets write and read as a first line.
std::optional<char> DeclaredSeparator(std::string_view line)
{
    line = line.substr(0, line.find_last_not_of('"') + 1);
    line.remove_prefix(std::min(line.find_first_not_of('"'), line.size()));
    if (line.size() != 5 || !line.starts_with("sep=")) return std::nullopt;
    return line[4];
}

} // namespace

CsvReader::CsvReader(const std::string& path, std::uint64_t mostBytes)
    : m_name(path == "-" ? "<stdin>" : path),
      m_file(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)),
      m_mostBytes(mostBytes), m_buffer(2 * kChunk)
{
    if (m_file < 0) throw InputError(m_name, SystemReason());
    try {
        struct stat status = {}; // stays empty where it is not known
        fstat(m_file, &status);
        if (S_ISREG(status.st_mode)) m_size = static_cast<std::uint64_t>(status.st_size);
        ReadHeader();
    } catch (...) {
        if (m_file != STDIN_FILENO) close(m_file);
        throw;
    }
}

CsvReader::~CsvReader()
{
    if (m_file != STDIN_FILENO) close(m_file);
}

void CsvReader::ReadHeader()
{
    m_atEnd = !Fill();
    if (const std::string kind = ForeignKind({m_buffer.data(), m_end}); !kind.empty())
        throw InputError(m_name, kind);
    char* begin = nullptr;
    char* end = nullptr;
    if (!NextRowLine(begin, end))
        throw HeaderError("the file is empty; its first line must name the columns");

    const auto declared = DeclaredSeparator({begin, static_cast<std::size_t>(end - begin)});
    if (declared && !NextRowLine(begin, end))
        throw HeaderError("the file is empty; its first line must name the columns");
    m_headerLine = m_line;
    std::string header(begin, end);
    if (header.find('\0') != std::string::npos || header.find('\r') != std::string::npos)
        throw HeaderError(
            "the line contains NUL or CR characters; save the file as plain text with "
            "LF or CR LF at the end of each line");
    m_separator = declared ? *declared : DecideSeparator(header);
    if (const char* problem =
            SplitLine(header.data(), header.data() + header.size(), m_separator, m_fields))
        throw HeaderError(problem);
    if (m_fields.size() > 1 && m_fields.back().empty()) m_fields.pop_back();
    if (std::all_of(m_fields.begin(), m_fields.end(),
                    [](std::string_view field) { return ParseNumber(field).has_value(); }))
        throw HeaderError(
            fmt::format("the first line must name the columns, but consists of "
                        "numbers{}",
                        m_comments > 0 ? "; lines that start with # are not read" : ""));
    if (m_separator == kBlanks) {
        m_columns = JoinUnits(m_fields);
    } else {
        m_columns.assign(m_fields.begin(), m_fields.end());
    }
}

// Where the header leaves a choice, the first row is read ahead; Next returns it.
char CsvReader::DecideSeparator(const std::string& header)
{
    const std::vector<char> candidates = SeparatorsIn(header);
    if (candidates.size() > 1) {
        try {
            char* begin = nullptr;
            char* end = nullptr;
            if (NextRowLine(begin, end)) m_firstRow.emplace(begin, end);
        } catch (const InputError&) {
            m_firstFailure = std::current_exception();
        }
    }
    std::string problem;
    const char separator = SeparatorOf(header, candidates, m_firstRow, problem);
    if (!problem.empty()) throw HeaderError(problem);
    return separator;
}

// The next line that is neither empty nor a comment.
bool CsvReader::NextRowLine(char*& begin, char*& end)
{
    for (;;) {
        if (!NextLine(begin, end)) return false;
        if (m_line == 1 && end - begin >= 3 && std::memcmp(begin, "\xEF\xBB\xBF", 3) == 0)
            begin += 3;
        const std::string_view line(begin, static_cast<std::size_t>(end - begin));
        if (IsComment(line)) {
            ++m_comments;
        } else if (!IsEmptyLine(line)) {
            return true;
        }
    }
}

std::optional<std::size_t> CsvReader::Find(std::string_view name) const
{
    const auto found = std::find(m_columns.begin(), m_columns.end(), name);
    if (found == m_columns.end()) return std::nullopt;
    if (std::find(found + 1, m_columns.end(), name) != m_columns.end()) {
        throw HeaderError(fmt::format("the column {} appears twice", name));
    }
    return static_cast<std::size_t>(found - m_columns.begin());
}

std::size_t CsvReader::Require(std::string_view name) const
{
    const auto column = Find(name);
    if (!column) throw MissingColumns({std::string(name)});
    return *column;
}

InputError CsvReader::MissingColumns(const std::vector<std::string>& keys) const
{
    return HeaderError(fmt::format("missing in the header: {}; it names {}", fmt::join(keys, ", "),
                                   fmt::join(m_columns, ", ")));
}

bool CsvReader::Next()
{
    if (m_firstFailure) std::rethrow_exception(std::exchange(m_firstFailure, nullptr));
    char* begin = nullptr;
    char* end = nullptr;
    if (m_firstRow) {
        m_ownRow = std::move(*m_firstRow);
        m_firstRow.reset();
        begin = m_ownRow.data();
        end = begin + m_ownRow.size();
    } else if (!NextRowLine(begin, end)) {
        return false;
    }
    if (const char* problem = SplitLine(begin, end, m_separator, m_fields)) throw Error(problem);
    // A separator at the end of the line does not start another field.
    if (m_fields.size() == m_columns.size() + 1 && m_fields.back().empty()) m_fields.pop_back();
    if (m_fields.size() != m_columns.size()) {
        throw Error(fmt::format("{} fields where the header names {} columns{}", m_fields.size(),
                                m_columns.size(),
                                FieldCountHint(m_fields, m_columns.size(), m_separator)));
    }
    return true;
}

double CsvReader::Number(std::size_t column) const
{
    const auto value = ParseNumber(m_fields[column]);
    if (!value) {
        throw Error(fmt::format("{} is '{}', not a finite number{}", m_columns[column],
                                Shown(m_fields[column]), NumberHint(m_fields[column])));
    }
    return *value;
}

// The next line without its line end, as [begin, end) of the buffer.
bool CsvReader::NextLine(char*& begin, char*& end)
{
    std::size_t searched = 0;
    for (;;) {
        char* const unread = m_buffer.data() + m_begin;
        const std::size_t held = m_end - m_begin;
        auto* const lineEnd =
            static_cast<char*>(std::memchr(unread + searched, '\n', held - searched));
        if (lineEnd == nullptr && !m_atEnd && held <= kLongestLine) {
            searched = held;
            if (!Fill()) m_atEnd = true;
            continue;
        }
        if (lineEnd == nullptr && held == 0) return false;

        ++m_line;
        begin = unread;
        end = lineEnd != nullptr ? lineEnd : unread + held;
        m_begin += lineEnd != nullptr ? static_cast<std::size_t>(lineEnd - unread) + 1 : held;
        if (static_cast<std::size_t>(end - begin) > kLongestLine) {
            if (lineEnd == nullptr) DropRestOfLine();
            throw Error(fmt::format("the line is longer than {} bytes", kLongestLine));
        }
        if (end != begin && end[-1] == '\r') --end;
        return true;
    }
}

// Moves the unread bytes to the front of the buffer and appends a chunk of the file.
bool CsvReader::Fill()
{
    std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin),
              m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end), m_buffer.begin());
    m_end -= m_begin;
    m_begin = 0;
    if (m_buffer.size() - m_end < kChunk) m_buffer.resize(2 * m_buffer.size());

    ssize_t count = 0;
    do {
        count = read(m_file, m_buffer.data() + m_end, kChunk);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        m_failed = true;
        throw InputError(m_name, SystemReason());
    }
    m_end += static_cast<std::size_t>(count);
    m_bytesRead += static_cast<std::uint64_t>(count);
    if (m_bytesRead > m_mostBytes) {
        m_failed = true;
        throw InputError(m_name, TooLarge(m_mostBytes));
    }
    return count > 0;
}

void CsvReader::DropRestOfLine()
{
    for (;;) {
        m_begin = m_end = 0;
        if (!Fill()) {
            m_atEnd = true;
            return;
        }
        const auto* const lineEnd = static_cast<char*>(std::memchr(m_buffer.data(), '\n', m_end));
        if (lineEnd == nullptr) continue;
        m_begin = static_cast<std::size_t>(lineEnd - m_buffer.data()) + 1;
        return;
    }
}

} // namespace tables
