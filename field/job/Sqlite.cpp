// SPDX-License-Identifier: MIT
#include "field/job/Sqlite.h"

#include "framework/core/TextConversion.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <sqlite3.h>
#include <system_error>
#include <utility>

namespace tiltpole::field {

namespace {

constexpr int kBusyMs = 250;       // a live program waits in AddPoint no longer than this
constexpr int kLongest = 16 << 20; // bytes of one value or row

std::string SystemReason(sqlite3* handle)
{
    const int number = sqlite3_system_errno(handle);
    return number == 0 ? "" : " (" + std::generic_category().message(number) + ")";
}

std::string ReasonOf(sqlite3* handle, int code)
{
    switch (code & 0xff) {
    case SQLITE_FULL:
        return "the disk is full";
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return "another program has locked the file";
    case SQLITE_READONLY:
        return "the file or its folder may not be written";
    case SQLITE_CANTOPEN:
        return "the file cannot be opened" + SystemReason(handle);
    case SQLITE_IOERR:
        return "the disk reports an error" + SystemReason(handle);
    case SQLITE_NOTADB:
        return "the file is not a job: it is no GeoPackage";
    case SQLITE_CORRUPT:
        return "the file is damaged";
    case SQLITE_NOMEM:
        return "there is not enough memory";
    case SQLITE_TOOBIG:
        return "a text is longer than 16 MiB";
    default:
        return sqlite3_errmsg(handle); // without a handle, that memory has run out
    }
}

// SQLite takes options with a file name only in a URI, where some characters mean something else.
std::string UriOf(const std::string& path)
{
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            const auto byte = static_cast<unsigned char>(c);
            uri += {'%', kHex[byte >> 4], kHex[byte & 15]};
        } else
            uri += c;
    }
    return uri + "?immutable=1";
}

int FlagsOf(SqliteAccess access)
{
    switch (access) {
    case SqliteAccess::Look:
        return SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    case SqliteAccess::Read: // the journal of a program that crashed is played back first
    case SqliteAccess::Write:
        return SQLITE_OPEN_READWRITE;
    case SqliteAccess::Make:
        break;
    }
    return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
}

// Ill-formed parts become U+FFFD.
std::string Mended(std::string_view text)
{
    return framework::ToUtf8(framework::FromUtf8(text));
}

} // namespace

bool IsUtf8(std::string_view text)
{
    return Mended(text) == text;
}

Sqlite::Sqlite(const std::string& path, SqliteAccess access)
{
    const std::string name = access == SqliteAccess::Look ? UriOf(path) : path;
    const int code = sqlite3_open_v2(name.c_str(), &m_handle, FlagsOf(access), nullptr);
    if (code != SQLITE_OK) {
        std::string reason = ReasonOf(m_handle, code);
        sqlite3_close(m_handle);
        throw SqliteFailure(std::move(reason));
    }
    sqlite3_extended_result_codes(m_handle, 1);
    sqlite3_busy_timeout(m_handle, kBusyMs);
    sqlite3_limit(m_handle, SQLITE_LIMIT_LENGTH, kLongest);
}

Sqlite::~Sqlite()
{
    sqlite3_close(m_handle);
}

void Sqlite::Run(const char* sql)
{
    const int code = sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) throw SqliteFailure(ReasonOf(m_handle, code));
}

std::int64_t Sqlite::LastId() const
{
    return sqlite3_last_insert_rowid(m_handle);
}

std::int64_t Sqlite::Changes() const
{
    return sqlite3_changes(m_handle);
}

bool Sqlite::IsWriteProtected() const
{
    return sqlite3_db_readonly(m_handle, "main") == 1;
}

bool Sqlite::InTransaction() const
{
    return sqlite3_get_autocommit(m_handle) == 0;
}

Statement::Statement(const Sqlite& sqlite, const char* sql) : m_sqlite(sqlite)
{
    const int code = sqlite3_prepare_v2(sqlite.Handle(), sql, -1, &m_statement, nullptr);
    if (code != SQLITE_OK) throw SqliteFailure(ReasonOf(sqlite.Handle(), code));
}

Statement::~Statement()
{
    sqlite3_finalize(m_statement);
}

// A parameter that could not be bound would be NULL in silence.
void Statement::Check(int code) const
{
    if (code != SQLITE_OK) throw SqliteFailure(ReasonOf(m_sqlite.Handle(), code));
}

Statement& Statement::Add(double value)
{
    ++m_parameter;
    Check(std::isfinite(value) ? sqlite3_bind_double(m_statement, m_parameter, value)
                               : sqlite3_bind_null(m_statement, m_parameter));
    return *this;
}

Statement& Statement::Add(std::int64_t value)
{
    Check(sqlite3_bind_int64(m_statement, ++m_parameter, value));
    return *this;
}

Statement& Statement::Add(const std::optional<std::int64_t>& value)
{
    if (value) return Add(*value);
    Check(sqlite3_bind_null(m_statement, ++m_parameter));
    return *this;
}

Statement& Statement::Add(std::string_view text)
{
    ++m_parameter;
    if (text.empty()) {
        Check(sqlite3_bind_null(m_statement, m_parameter));
        return *this;
    }
    const std::string whole = Mended(text);
    Check(sqlite3_bind_text64(m_statement, m_parameter, whole.data(), whole.size(),
                              SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::AddBytes(std::string_view bytes)
{
    ++m_parameter;
    Check(bytes.empty() ? sqlite3_bind_null(m_statement, m_parameter)
                        : sqlite3_bind_blob64(m_statement, m_parameter, bytes.data(), bytes.size(),
                                              SQLITE_TRANSIENT));
    return *this;
}

bool Statement::Step()
{
    m_column = 0;
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    throw SqliteFailure(ReasonOf(m_sqlite.Handle(), code));
}

void Statement::TryStep() noexcept
{
    sqlite3_step(m_statement);
}

double Statement::Number()
{
    const int column = m_column++;
    if (sqlite3_column_type(m_statement, column) == SQLITE_NULL)
        return std::numeric_limits<double>::quiet_NaN();
    return sqlite3_column_double(m_statement, column);
}

std::int64_t Statement::Integer()
{
    return sqlite3_column_int64(m_statement, m_column++);
}

std::optional<std::int64_t> Statement::MaybeInteger()
{
    const int column = m_column++;
    if (sqlite3_column_type(m_statement, column) == SQLITE_NULL) return std::nullopt;
    return sqlite3_column_int64(m_statement, column);
}

std::string Statement::Text()
{
    return MaybeText().value_or(std::string{});
}

std::optional<std::string> Statement::MaybeText()
{
    const int column = m_column++;
    if (sqlite3_column_type(m_statement, column) == SQLITE_NULL) return std::nullopt;
    const void* bytes = sqlite3_column_blob(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    // A number that another program wrote becomes a text, which takes memory.
    if (bytes == nullptr && sqlite3_errcode(m_sqlite.Handle()) == SQLITE_NOMEM)
        throw SqliteFailure(ReasonOf(m_sqlite.Handle(), SQLITE_NOMEM));
    if (bytes == nullptr) return std::string{}; // of what is empty SQLite tells no place
    return std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

Transaction::Transaction(Sqlite& sqlite) : m_sqlite(sqlite), m_rollback(sqlite, "ROLLBACK")
{
    sqlite.Run("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    // SQLite has taken it back already after some failures; where it cannot, the next opening does.
    if (m_sqlite.InTransaction()) m_rollback.TryStep();
}

void Transaction::Commit()
{
    m_sqlite.Run("COMMIT");
}

} // namespace tiltpole::field
