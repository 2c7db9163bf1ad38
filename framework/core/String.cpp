// SPDX-License-Identifier: MIT
#include "framework/core/String.h"

#include "framework/core/TextConversion.h"

#include <algorithm>
#include <cwchar>

namespace {

constexpr const wchar_t* kWhiteSpace = L" \t\n\v\f\r";

std::wstring_view ViewOf(const wchar_t* text)
{
    return text == nullptr ? std::wstring_view() : std::wstring_view(text);
}

std::size_t NotNegative(int count)
{
    return static_cast<std::size_t>(std::max(0, count));
}

int PositionOf(std::size_t found)
{
    return found == std::wstring_view::npos ? -1 : static_cast<int>(found);
}

wchar_t Lower(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

wchar_t Upper(wchar_t c)
{
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

} // namespace

CString::CString(const wchar_t* text) : m_text(ViewOf(text)) {}

CString::CString(const wchar_t* text, int length)
{
    if (text != nullptr) m_text.assign(text, NotNegative(length));
}

CString::CString(const char* utf8)
{
    if (utf8 != nullptr) m_text = framework::FromUtf8(utf8);
}

CString::CString(const char* utf8, int length)
{
    if (utf8 != nullptr) m_text = framework::FromUtf8({utf8, NotNegative(length)});
}

CString::CString(wchar_t character, int repeat) : m_text(NotNegative(repeat), character) {}

CString& CString::operator=(const wchar_t* text)
{
    m_text = ViewOf(text);
    return *this;
}

CString& CString::operator=(const char* utf8)
{
    return *this = CString(utf8);
}

CString& CString::operator=(wchar_t character)
{
    m_text.assign(1, character);
    return *this;
}

void CString::SetAt(int index, wchar_t character)
{
    if (index >= 0 && index < GetLength()) m_text[static_cast<std::size_t>(index)] = character;
}

wchar_t CString::operator[](INT_PTR index) const noexcept
{
    return index >= 0 && index < GetLength() ? m_text[static_cast<std::size_t>(index)] : L'\0';
}

wchar_t* CString::GetBuffer(int minimumLength)
{
    m_text.resize(std::max(m_text.size(), NotNegative(minimumLength)));
    return m_text.data();
}

void CString::ReleaseBuffer(int newLength)
{
    const std::size_t length =
        newLength == -1 ? std::wcslen(m_text.c_str()) : NotNegative(newLength);
    m_text.resize(std::min(length, m_text.size()));
}

CString& CString::operator+=(const CString& text)
{
    m_text += text.m_text;
    return *this;
}

CString& CString::operator+=(const wchar_t* text)
{
    m_text += ViewOf(text);
    return *this;
}

CString& CString::operator+=(wchar_t character)
{
    m_text += character;
    return *this;
}

int CString::Compare(const wchar_t* other) const noexcept
{
    return std::wcscmp(m_text.c_str(), other == nullptr ? L"" : other);
}

int CString::CompareNoCase(const wchar_t* other) const noexcept
{
    const wchar_t* a = m_text.c_str();
    const wchar_t* b = other == nullptr ? L"" : other;
    while (*a != 0 && Lower(*a) == Lower(*b)) {
        ++a;
        ++b;
    }
    const wchar_t x = Lower(*a);
    const wchar_t y = Lower(*b);
    return (x > y) - (x < y);
}

CString CString::Mid(int first) const
{
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const
{
    const std::size_t from = std::min(NotNegative(first), m_text.size());
    return CString(std::wstring_view(m_text).substr(from, NotNegative(count)));
}

CString CString::Left(int count) const
{
    return Mid(0, count);
}

CString CString::Right(int count) const
{
    return Mid(GetLength() - std::min(GetLength(), std::max(0, count)));
}

CString CString::SpanIncluding(const wchar_t* set) const
{
    return CString(std::wstring_view(m_text).substr(0, m_text.find_first_not_of(ViewOf(set))));
}

CString CString::SpanExcluding(const wchar_t* set) const
{
    return CString(std::wstring_view(m_text).substr(0, m_text.find_first_of(ViewOf(set))));
}

int CString::Find(wchar_t character, int start) const noexcept
{
    if (start < 0 || start >= GetLength()) return -1;
    return PositionOf(m_text.find(character, static_cast<std::size_t>(start)));
}

int CString::Find(const wchar_t* text, int start) const noexcept
{
    if (text == nullptr || start < 0 || start >= GetLength()) return -1;
    return PositionOf(m_text.find(text, static_cast<std::size_t>(start)));
}

int CString::ReverseFind(wchar_t character) const noexcept
{
    return PositionOf(m_text.rfind(character));
}

int CString::FindOneOf(const wchar_t* set) const noexcept
{
    return PositionOf(m_text.find_first_of(ViewOf(set)));
}

CString CString::Tokenize(const wchar_t* separators, int& start) const
{
    const std::wstring_view set = ViewOf(separators);
    const std::size_t first = m_text.find_first_not_of(set, NotNegative(start));
    if (start < 0 || first == std::wstring::npos) {
        start = -1;
        return {};
    }
    const std::size_t last = std::min(m_text.find_first_of(set, first), m_text.size());
    CString part(std::wstring_view(m_text).substr(first, last - first));
    start = static_cast<int>(last) + 1; // not moved where the part does not fit into memory
    return part;
}

CString& CString::MakeUpper()
{
    std::transform(m_text.begin(), m_text.end(), m_text.begin(), Upper);
    return *this;
}

CString& CString::MakeLower()
{
    std::transform(m_text.begin(), m_text.end(), m_text.begin(), Lower);
    return *this;
}

CString& CString::MakeReverse()
{
    std::reverse(m_text.begin(), m_text.end());
    return *this;
}

CString& CString::TrimLeft()
{
    return TrimLeft(kWhiteSpace);
}

CString& CString::TrimLeft(wchar_t character)
{
    m_text.erase(0, m_text.find_first_not_of(character));
    return *this;
}

CString& CString::TrimLeft(const wchar_t* set)
{
    m_text.erase(0, m_text.find_first_not_of(ViewOf(set)));
    return *this;
}

CString& CString::TrimRight()
{
    return TrimRight(kWhiteSpace);
}

CString& CString::TrimRight(wchar_t character)
{
    m_text.erase(m_text.find_last_not_of(character) + 1);
    return *this;
}

CString& CString::TrimRight(const wchar_t* set)
{
    m_text.erase(m_text.find_last_not_of(ViewOf(set)) + 1);
    return *this;
}

CString& CString::Trim()
{
    return TrimRight().TrimLeft();
}

CString& CString::Trim(wchar_t character)
{
    return TrimRight(character).TrimLeft(character);
}

CString& CString::Trim(const wchar_t* set)
{
    return TrimRight(set).TrimLeft(set);
}

int CString::Replace(wchar_t from, wchar_t to)
{
    if (from == to) return 0;
    const auto count = std::count(m_text.begin(), m_text.end(), from);
    std::replace(m_text.begin(), m_text.end(), from, to);
    return static_cast<int>(count);
}

int CString::Replace(const wchar_t* from, const wchar_t* to)
{
    const std::wstring_view old = ViewOf(from);
    if (old.empty()) return 0;

    int count = 0;
    std::wstring result;
    std::size_t at = 0;
    for (;;) {
        const std::size_t found = m_text.find(old, at);
        result.append(m_text, at, found - at);
        if (found == std::wstring::npos) break;
        result += ViewOf(to);
        at = found + old.size();
        ++count;
    }
    m_text = std::move(result);
    return count;
}

int CString::Remove(wchar_t character)
{
    return static_cast<int>(std::erase(m_text, character));
}

int CString::Insert(int index, wchar_t character)
{
    m_text.insert(std::min(NotNegative(index), m_text.size()), 1, character);
    return GetLength();
}

int CString::Insert(int index, const wchar_t* text)
{
    m_text.insert(std::min(NotNegative(index), m_text.size()), ViewOf(text));
    return GetLength();
}

int CString::Delete(int index, int count)
{
    m_text.erase(std::min(NotNegative(index), m_text.size()), NotNegative(count));
    return GetLength();
}
