// SPDX-License-Identifier: MIT
//
// Any sequence of operations on a CString gives what loops over a vector of characters give.
#include "framework/core/String.h"
#include "fuzz/Input.h"

#include <string>
#include <vector>

namespace {

using fuzz::Input;
using fuzz::Require;
using Model = std::vector<wchar_t>;

constexpr wchar_t kLetters[] = L"aabbAB zZ\t,@[`{\u00E9\n";

wchar_t LetterOf(Input& input)
{
    return kLetters[input.Below(std::size(kLetters) - 1)];
}

std::wstring TextOf(Input& input)
{
    std::wstring text(static_cast<std::size_t>(input.Below(5)), L'a');
    for (wchar_t& c : text)
        c = LetterOf(input);
    return text;
}

bool Has(const std::wstring& set, wchar_t c)
{
    for (const wchar_t s : set)
        if (s == c) return true;
    return false;
}

bool StartsAt(const Model& model, std::size_t at, const std::wstring& text)
{
    if (at + text.size() > model.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (model[at + i] != text[i]) return false;
    return true;
}

int Find(const Model& model, const std::wstring& text, int start)
{
    if (start < 0 || start >= static_cast<int>(model.size())) return -1;
    for (std::size_t at = static_cast<std::size_t>(start); at <= model.size(); ++at)
        if (StartsAt(model, at, text)) return static_cast<int>(at);
    return -1;
}

Model Mid(const Model& model, int first, int count)
{
    Model part;
    for (long long i = std::max(first, 0); i < std::max(first, 0) + static_cast<long long>(count);
         ++i)
        if (i < static_cast<long long>(model.size()))
            part.push_back(model[static_cast<std::size_t>(i)]);
        else
            break;
    return part;
}

int Replace(Model& model, const std::wstring& from, const std::wstring& to)
{
    if (from.empty()) return 0;
    Model result;
    int count = 0;
    for (std::size_t at = 0; at < model.size();) {
        if (StartsAt(model, at, from)) {
            result.insert(result.end(), to.begin(), to.end());
            at += from.size();
            ++count;
        } else {
            result.push_back(model[at++]);
        }
    }
    model = result;
    return count;
}

Model Token(const Model& model, const std::wstring& separators, int& start)
{
    Model token;
    if (start >= 0)
        for (std::size_t at = static_cast<std::size_t>(start); at < model.size(); ++at) {
            if (!Has(separators, model[at])) {
                token.push_back(model[at]);
                start = static_cast<int>(at) + 2;
            } else if (!token.empty()) {
                break;
            }
        }
    if (token.empty()) start = -1;
    return token;
}

wchar_t Turned(wchar_t c, wchar_t first, wchar_t last, int by)
{
    return c >= first && c <= last ? static_cast<wchar_t>(c + by) : c;
}

void TrimLeft(Model& model, const std::wstring& set)
{
    while (!model.empty() && Has(set, model.front()))
        model.erase(model.begin());
}

void TrimRight(Model& model, const std::wstring& set)
{
    while (!model.empty() && Has(set, model.back()))
        model.pop_back();
}

void Insert(Model& model, int index, const std::wstring& text)
{
    const auto at = std::min(model.size(), static_cast<std::size_t>(std::max(index, 0)));
    model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), text.begin(), text.end());
}

void Delete(Model& model, int index, int count)
{
    const auto at = static_cast<std::size_t>(std::max(index, 0));
    for (int i = 0; i < count && at < model.size(); ++i)
        model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
}

int Sign(int value)
{
    return (value > 0) - (value < 0);
}

int Compare(const Model& model, const std::wstring& other, bool lower)
{
    const auto fold = [lower](wchar_t c) { return lower ? Turned(c, L'A', L'Z', 32) : c; };
    for (std::size_t i = 0;; ++i) {
        const wchar_t x = i < model.size() ? fold(model[i]) : L'\0';
        const wchar_t y = i < other.size() ? fold(other[i]) : L'\0';
        if (x != y) return x < y ? -1 : 1;
        if (x == 0) return 0;
    }
}

bool AreSame(const CString& text, const Model& model)
{
    if (text.GetLength() != static_cast<int>(model.size())) return false;
    for (std::size_t i = 0; i < model.size(); ++i)
        if (text.GetAt(static_cast<int>(i)) != model[i]) return false;
    return text.GetString()[model.size()] == 0;
}

/// A position or a count: mostly within the text, at times far outside.
int PlaceOf(Input& input)
{
    const int code = input.Below(64);
    if (code == 63) return std::numeric_limits<int>::max();
    if (code == 62) return std::numeric_limits<int>::min();
    return code - 6;
}

void Ask(Input& input, const CString& text, const Model& model)
{
    const std::wstring other = TextOf(input);
    const int first = PlaceOf(input);
    const int count = PlaceOf(input);
    const int size = static_cast<int>(model.size());
    Require(AreSame(text.Mid(first, count), Mid(model, first, count)));
    Require(AreSame(text.Mid(first), Mid(model, first, size)));
    Require(AreSame(text.Left(count), Mid(model, 0, count)));
    Require(AreSame(text.Right(count), Mid(model, std::max(0, size - std::max(0, count)), size)));
    Require(text.Find(other.c_str(), first) == Find(model, other, first));
    const wchar_t letter = LetterOf(input);
    Require(text.Find(letter, first) == Find(model, std::wstring(1, letter), first));
    Require(Sign(text.Compare(other.c_str())) == Compare(model, other, false));
    Require(Sign(text.CompareNoCase(other.c_str())) == Compare(model, other, true));

    int place = first;
    int expected = first;
    for (int i = 0; i < 3; ++i) {
        Require(AreSame(text.Tokenize(other.c_str(), place), Token(model, other, expected)));
        Require(place == expected);
    }
    std::size_t including = 0;
    while (including < model.size() && Has(other, model[including]))
        ++including;
    std::size_t excluding = 0;
    while (excluding < model.size() && !Has(other, model[excluding]))
        ++excluding;
    Require(AreSame(text.SpanIncluding(other.c_str()), Mid(model, 0, static_cast<int>(including))));
    Require(AreSame(text.SpanExcluding(other.c_str()), Mid(model, 0, static_cast<int>(excluding))));
    Require(text.FindOneOf(other.c_str())
            == (excluding < model.size() ? static_cast<int>(excluding) : -1));
    int last = -1;
    for (int i = 0; i < size; ++i)
        if (model[static_cast<std::size_t>(i)] == letter) last = i;
    Require(text.ReverseFind(letter) == last);
}

void Change(Input& input, CString& text, Model& model)
{
    const int what = input.Below(16);
    const std::wstring other = TextOf(input);
    const int place = PlaceOf(input);
    switch (what) {
    case 0:
    case 1:
    case 2:
        text += other.c_str();
        model.insert(model.end(), other.begin(), other.end());
        break;
    case 3:
        Insert(model, place, other);
        Require(text.Insert(place, other.c_str()) == static_cast<int>(model.size()));
        break;
    case 4: {
        const int count = PlaceOf(input);
        Delete(model, place, count);
        Require(text.Delete(place, count) == static_cast<int>(model.size()));
        break;
    }
    case 5: {
        const std::wstring to = TextOf(input);
        const int count = Replace(model, other, to);
        Require(text.Replace(other.c_str(), to.c_str()) == count);
        break;
    }
    case 6: {
        const wchar_t gone = LetterOf(input);
        const int count = Replace(model, std::wstring(1, gone), L"");
        Require(text.Remove(gone) == count);
        break;
    }
    case 7:
        TrimLeft(model, other);
        text.TrimLeft(other.c_str());
        break;
    case 8:
        TrimRight(model, other);
        text.TrimRight(other.c_str());
        break;
    case 9:
        TrimLeft(model, L" \t\n\v\f\r");
        TrimRight(model, L" \t\n\v\f\r");
        text.Trim();
        break;
    case 10:
        for (wchar_t& c : model)
            c = Turned(c, L'a', L'z', -32);
        text.MakeUpper();
        break;
    case 11:
        for (wchar_t& c : model)
            c = Turned(c, L'A', L'Z', 32);
        text.MakeLower();
        break;
    case 12: {
        Model turned(model.rbegin(), model.rend());
        model = turned;
        text.MakeReverse();
        break;
    }
    case 13: {
        const wchar_t letter = LetterOf(input);
        text.SetAt(place, letter);
        if (place >= 0 && place < static_cast<int>(model.size()))
            model[static_cast<std::size_t>(place)] = letter;
        break;
    }
    case 14: { // of itself
        if (model.size() > 40) break;
        const auto from = static_cast<std::size_t>(input.Below(8));
        if (from > model.size()) break;
        const std::wstring tail(model.begin() + static_cast<std::ptrdiff_t>(from), model.end());
        Insert(model, place, tail);
        text.Insert(place, text.GetString() + from);
        break;
    }
    default: {
        if (model.size() > 40) break;
        text.Format(L"%s%d%ls", text.GetString(), place, other.c_str());
        const std::wstring digits = std::to_wstring(place) + other;
        model.insert(model.end(), digits.begin(), digits.end());
        break;
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    CString text;
    Model model;
    while (!input.Ended()) {
        Change(input, text, model);
        Require(AreSame(text, model));
        if (model.size() > 200) break;
    }
    Ask(input, text, model);
    if (!input.Ended()) Ask(input, text, model);
    return 0;
}
