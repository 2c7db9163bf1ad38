// SPDX-License-Identifier: MIT
/// @class CString
/// CString: the window framework's wide string.
///
///     CString line;
///     line.Format(L"%s: %.3f m", L"pole length", 2.0);
///     const int colon = line.Find(L':');
///     const CString name = line.Left(colon); // "pole length"
///     CFile::Remove(L"/tmp/" + name);        // converts to const wchar_t*
///
/// Positions and lengths are counted in wide characters. One that is out of range is limited to the
/// text and never an error; a null pointer is an empty text. Case conversion knows the letters of
/// ASCII only and white space is that of ASCII: no locale is consulted.
///
/// What makes a text or a longer one throws std::bad_alloc where memory does not suffice, and the
/// text is then unchanged. Operations that are noexcept, Empty, SetAt, Delete, Remove, the Trim and
/// Make functions do not allocate.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Format.h"
#include "framework/core/Types.h"

#include <compare>
#include <string>
#include <string_view>

class TILTPOLE_API CString
{
public:
    CString() = default;
    CString(const wchar_t* text);
    CString(const wchar_t* text, int length);
    /// From UTF-8; ill-formed parts become U+FFFD.
    CString(const char* utf8);
    CString(const char* utf8, int length);
    explicit CString(wchar_t character, int repeat = 1);
    explicit CString(std::wstring_view text) : m_text(text) {}
    explicit CString(std::wstring&& text) : m_text(std::move(text)) {}

    CString& operator=(const wchar_t* text);
    CString& operator=(const char* utf8);
    CString& operator=(wchar_t character);

    int GetLength() const noexcept { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const noexcept { return m_text.empty(); }
    void Empty() noexcept { m_text.clear(); }

    /// The character at `index`; 0 where the text has none there.
    wchar_t GetAt(int index) const noexcept { return (*this)[index]; }
    /// Does nothing where `index` is not in the text.
    void SetAt(int index, wchar_t character);
    wchar_t operator[](INT_PTR index) const noexcept;

    operator const wchar_t*() const noexcept { return m_text.c_str(); }
    const wchar_t* GetString() const noexcept { return m_text.c_str(); }

    /// A buffer of at least `minimumLength` characters and a closing 0, for the caller to write to.
    /// No other operation may be called before ReleaseBuffer.
    wchar_t* GetBuffer(int minimumLength = 0);
    /// Ends the use of the buffer. The text then has `newLength` characters; with -1 it ends at the
    /// first 0.
    void ReleaseBuffer(int newLength = -1);

    CString& operator+=(const CString& text);
    CString& operator+=(const wchar_t* text);
    CString& operator+=(wchar_t character);
    void Append(const wchar_t* text) { *this += text; }

    /// Compares character codes up to the first 0. Returns a value below 0, 0 or above 0.
    int Compare(const wchar_t* other) const noexcept;
    int CompareNoCase(const wchar_t* other) const noexcept;

    /// From `first` to the end; empty where `first` is past the end.
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Left(int count) const;
    CString Right(int count) const;
    /// The leading characters that are (are not) in `set`.
    CString SpanIncluding(const wchar_t* set) const;
    CString SpanExcluding(const wchar_t* set) const;

    /// Position of the first occurrence at or after `start`; -1 where there is none or `start` is
    /// not a position in the text.
    int Find(wchar_t character, int start = 0) const noexcept;
    int Find(const wchar_t* text, int start = 0) const noexcept;
    int ReverseFind(wchar_t character) const noexcept;
    int FindOneOf(const wchar_t* set) const noexcept;

    /// The next part of the text between characters of `separators`, from `start` on; empty parts
    /// are skipped. `start` moves past it. When no part is left, the result is empty and `start`
    /// -1.
    CString Tokenize(const wchar_t* separators, int& start) const;

    CString& MakeUpper();
    CString& MakeLower();
    CString& MakeReverse();

    CString& TrimLeft();
    CString& TrimLeft(wchar_t character);
    CString& TrimLeft(const wchar_t* set);
    CString& TrimRight();
    CString& TrimRight(wchar_t character);
    CString& TrimRight(const wchar_t* set);
    CString& Trim();
    CString& Trim(wchar_t character);
    CString& Trim(const wchar_t* set);

    /// Number of replacements.
    int Replace(wchar_t from, wchar_t to);
    int Replace(const wchar_t* from, const wchar_t* to);
    /// Number of characters removed.
    int Remove(wchar_t character);
    /// New length; an index past the end appends.
    int Insert(int index, wchar_t character);
    int Insert(int index, const wchar_t* text);
    /// New length.
    int Delete(int index, int count = 1);

    /// Sets the text to `format` with its arguments inserted; see framework/core/Format.h.
    template <class... Arguments>
    void Format(const wchar_t* format, const Arguments&... arguments)
    {
        // Into another text first: an argument may refer to this one.
        CString result;
        result.AppendFormat(format, arguments...);
        m_text = std::move(result.m_text);
    }

    template <class... Arguments>
    void AppendFormat(const wchar_t* format, const Arguments&... arguments)
    {
        const framework::FormatArgument list[] = {framework::FormatArgument(arguments)...,
                                                  framework::FormatArgument()};
        std::wstring addition;
        framework::AppendFormatted(addition, format, list, sizeof...(arguments));
        m_text += addition;
    }

    friend bool operator==(const CString& a, const CString& b) noexcept
    {
        return a.Compare(b) == 0;
    }
    friend bool operator==(const CString& a, const wchar_t* b) noexcept
    {
        return a.Compare(b) == 0;
    }
    friend std::strong_ordering operator<=>(const CString& a, const CString& b) noexcept
    {
        return a.Compare(b) <=> 0;
    }
    friend std::strong_ordering operator<=>(const CString& a, const wchar_t* b) noexcept
    {
        return a.Compare(b) <=> 0;
    }

    friend CString operator+(const CString& a, const CString& b) { return CString(a) += b; }
    friend CString operator+(const CString& a, const wchar_t* b) { return CString(a) += b; }
    friend CString operator+(const wchar_t* a, const CString& b) { return CString(a) += b; }
    friend CString operator+(const CString& a, wchar_t b) { return CString(a) += b; }
    friend CString operator+(wchar_t a, const CString& b) { return CString(a) += b; }

private:
    std::wstring m_text;
};
