// SPDX-License-Identifier: MIT
#include "apps/tables/Csv.h"

#include "apps/tables/Numbers.h"
#include "apps/tables/ReadFile.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

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

bool IsBlank(const char* begin, const char* end)
{
    return Trim({begin, static_cast<std::size_t>(end - begin)}).empty();
}

// The separator is the first one outside quotes; a header with one column has none.
char SeparatorOf(const char* begin, const char* end)
{
    bool quoted = false;
    for (const char* at = begin; at != end; ++at) {
        if (*at == '"') quoted = !quoted;
        if (!quoted && (*at == ';' || *at == ',')) return *at;
    }
    return ',';
}

} // namespace

CsvReader::CsvReader(const std::string& path, std::uint64_t mostBytes)
    : m_name(path == "-" ? "<stdin>" : path),
      m_file(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)),
      m_mostBytes(mostBytes), m_buffer(2 * kChunk)
{
    if (m_file < 0) throw InputError(m_name, SystemReason());
    try {
        struct stat status = {};
        if (fstat(m_file, &status) == 0 && S_ISREG(status.st_mode)) {
            m_size = static_cast<std::uint64_t>(status.st_size);
        }
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
    char* begin = nullptr;
    char* end = nullptr;
    do {
        if (!NextLine(begin, end)) {
            throw HeaderError("the file is empty; its first line must name the columns");
        }
        if (m_line == 1 && end - begin >= 3 && std::memcmp(begin, "\xEF\xBB\xBF", 3) == 0) {
            begin += 3;
        }
    } while (IsBlank(begin, end));

    m_headerLine = m_line;
    m_separator = SeparatorOf(begin, end);
    Split(begin, end);
    if (m_fields.size() > 1 && m_fields.back().empty()) m_fields.pop_back();
    m_columns.assign(m_fields.begin(), m_fields.end());
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
    if (!column) throw HeaderError(fmt::format("there is no column {}", name));
    return *column;
}

bool CsvReader::Next()
{
    char* begin = nullptr;
    char* end = nullptr;
    do {
        if (!NextLine(begin, end)) return false;
    } while (IsBlank(begin, end));

    Split(begin, end);
    // A separator at the end of the line does not start another field.
    if (m_fields.size() == m_columns.size() + 1 && m_fields.back().empty()) m_fields.pop_back();
    if (m_fields.size() != m_columns.size()) {
        throw Error(fmt::format("{} fields where the header names {} columns", m_fields.size(),
                                m_columns.size()));
    }
    return true;
}

double CsvReader::Number(std::size_t column) const
{
    const auto value = ParseNumber(m_fields[column]);
    if (!value) {
        throw Error(fmt::format("{} is '{}', not a finite number", m_columns[column],
                                Shown(m_fields[column])));
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

void CsvReader::Split(char* begin, char* end)
{
    m_fields.clear();
    for (char* at = begin;; ++at) {
        while (at != end && (*at == ' ' || *at == '\t'))
            ++at;
        if (at != end && *at == '"') {
            at = SplitQuoted(at, end);
        } else {
            char* const stop = std::find(at, end, m_separator);
            m_fields.push_back(Trim({at, static_cast<std::size_t>(stop - at)}));
            at = stop;
        }
        if (at == end) return;
    }
}

// Adds the quoted field that opens at `at`; doubled quotes are reduced in place. Returns the
// position of the separator behind it, or `end`.
char* CsvReader::SplitQuoted(char* at, char* end)
{
    char* const first = at + 1;
    char* last = first;
    char* next = first;
    for (;; ++next) {
        if (next == end) throw Error("a quoted field is not closed on its line");
        if (*next == '"') {
            if (next + 1 == end || next[1] != '"') break;
            ++next;
        }
        *last++ = *next;
    }
    m_fields.emplace_back(first, static_cast<std::size_t>(last - first));
    ++next;
    while (next != end && (*next == ' ' || *next == '\t'))
        ++next;
    if (next != end && *next != m_separator) throw Error("text follows a quoted field");
    return next;
}

} // namespace tables
