// SPDX-License-Identifier: MIT
//
// What a job needs of SQLite: a connection, a prepared statement, a transaction. Every failure is a
// SqliteFailure, whose text is one clause for the surveyor; none leaves field/job.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace tiltpole::field {

class SqliteFailure : public std::exception
{
public:
    explicit SqliteFailure(std::string text) : m_text(std::move(text)) {}
    const char* what() const noexcept override { return m_text.c_str(); }

private:
    std::string m_text; // "the disk is full"
};

/// How a connection may use its file.
enum class SqliteAccess {
    Look,  ///< as it lies on the disk: nothing is locked, no journal is played back
    Read,  ///< no row is written
    Write, ///< the file must be there
    Make,  ///< as Write; a file that is not there is made
};

class Sqlite
{
public:
    Sqlite(const std::string& path, SqliteAccess access);
    ~Sqlite();
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    /// Statements separated by semicolons; their rows are dropped.
    void Run(const char* sql);

    std::int64_t LastId() const;
    std::int64_t Changes() const; ///< rows that the last statement changed
    bool InTransaction() const;
    bool IsWriteProtected() const; ///< opened for reading since nothing else is allowed
    sqlite3* Handle() const { return m_handle; }

private:
    sqlite3* m_handle = nullptr;
};

class Statement
{
public:
    Statement(const Sqlite& sqlite, const char* sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Binds the next parameter. Numbers that are not finite and empty texts become NULL.
    Statement& Add(double value);
    Statement& Add(std::int64_t value);
    Statement& Add(const std::optional<std::int64_t>& value);
    Statement& Add(std::string_view text); ///< bytes that are not UTF-8 become U+FFFD
    Statement& AddBytes(std::string_view bytes);

    /// @return whether there is a row
    bool Step();
    void TryStep() noexcept;

    /// The next column of the row. NULL is NaN, 0, nothing or an empty text.
    double Number();
    std::int64_t Integer();
    std::optional<std::int64_t> MaybeInteger();
    std::string Text(); ///< the bytes of a text or a BLOB
    std::optional<std::string> MaybeText();

private:
    void Check(int code) const;

    const Sqlite& m_sqlite;
    sqlite3_stmt* m_statement = nullptr;
    int m_parameter = 0;
    int m_column = 0;
};

/// BEGIN IMMEDIATE; taken back unless committed, also where memory has run out: what takes it back
/// is prepared before it begins.
class Transaction
{
public:
    explicit Transaction(Sqlite& sqlite);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

private:
    Sqlite& m_sqlite;
    Statement m_rollback;
};

/// Whether the text is well-formed UTF-8.
bool IsUtf8(std::string_view text);

} // namespace tiltpole::field
