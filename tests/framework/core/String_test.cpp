// SPDX-License-Identifier: MIT
#include "framework/core/String.h"

#include "tests/framework/core/TextOf.h"

#include <climits>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace {

struct Part
{
    int first, count;
    const wchar_t* expected;
    const char* why;
};

struct Search
{
    const wchar_t* what;
    int start, expected;
    const char* why;
};

} // namespace

TEST(String, IsMadeFromWideAndUtf8Text)
{
    EXPECT_EQ(CString(), L"");
    EXPECT_EQ(CString(L"pole"), L"pole");
    EXPECT_EQ(CString("h\xC3\xB6he"), L"h\u00F6he");
    EXPECT_EQ(CString("h\xC3\xB6he", 3), L"h\u00F6");
    EXPECT_EQ(CString("\xFF"), L"\uFFFD");
    EXPECT_EQ(CString(L'x', 3), L"xxx");
    EXPECT_EQ(CString(L'x'), L"x");
    EXPECT_EQ(CString(L"antenna", 3), L"ant");
}

TEST(String, TakesNullAndNegativeLengthsAsEmpty)
{
    EXPECT_TRUE(CString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CString(static_cast<const wchar_t*>(nullptr), 4).IsEmpty());
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr), 4).IsEmpty());
    EXPECT_TRUE(CString(L"abc", -1).IsEmpty());
    EXPECT_TRUE(CString("abc", -1).IsEmpty());
    EXPECT_TRUE(CString(L'x', -1).IsEmpty());
}

TEST(String, IsCopiedAndMovedByValue)
{
    const CString first = L"tip";
    CString second = first;
    second += L"!";
    EXPECT_EQ(first, L"tip");
    const CString third = std::move(second);
    EXPECT_EQ(third, L"tip!");
    static_assert(std::is_nothrow_move_constructible_v<CString>);
}

TEST(String, IsAssignedEveryKindOfText)
{
    CString text = L"old";
    text = L"wide";
    EXPECT_EQ(text, L"wide");
    text = "narrow";
    EXPECT_EQ(text, L"narrow");
    text = L'c';
    EXPECT_EQ(text, L"c");
    text = static_cast<const wchar_t*>(nullptr);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(String, MayBeAssignedAPartOfItself)
{
    CString text = L"a text that is longer than any small buffer";
    text = text.GetString() + 2;
    EXPECT_EQ(text, L"text that is longer than any small buffer");
    text = L"ab";
    for (int i = 0; i < 4; ++i)
        text += text.GetString();
    EXPECT_EQ(text, CString(L"abababababababababababababababab"));
    text = L"ab";
    text.Insert(1, text);
    EXPECT_EQ(text, L"aabb");
}

TEST(String, KeepsItsLengthApartFromTheClosingZero)
{
    const CString text(L"a\0b", 3);
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_EQ(text[2], L'b');
    EXPECT_EQ(text.GetString()[3], L'\0');
}

TEST(String, ReturnsCharactersAndZeroWhereThereIsNone)
{
    CString text = L"abc";
    EXPECT_EQ(text.GetAt(1), L'b');
    EXPECT_EQ(text[2], L'c');
    EXPECT_EQ(text[3], L'\0');
    EXPECT_EQ(text[-1], L'\0');
    EXPECT_EQ(text.GetAt(99), L'\0');
    text.SetAt(0, L'x');
    text.SetAt(3, L'y');
    text.SetAt(-1, L'y');
    EXPECT_EQ(text, L"xbc");
}

TEST(String, IsEmptyAfterEmpty)
{
    CString text = L"abc";
    EXPECT_FALSE(text.IsEmpty());
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetLength(), 0);
}

TEST(String, LendsABufferAndTakesWhatWasWritten)
{
    CString text = L"abc";
    wchar_t* buffer = text.GetBuffer(10);
    for (int i = 0; i < 10; ++i)
        buffer[i] = L'x';
    text.ReleaseBuffer(4);
    EXPECT_EQ(text, L"xxxx");

    buffer = text.GetBuffer(10);
    buffer[0] = L'p';
    buffer[1] = L'\0';
    text.ReleaseBuffer();
    EXPECT_EQ(text, L"p");
}

TEST(String, KeepsItsTextInALentBuffer)
{
    CString text = L"abc";
    EXPECT_EQ(std::wstring(text.GetBuffer(100)), L"abc");
    text.ReleaseBuffer();
    EXPECT_EQ(text.GetLength(), 3);
    text.GetBuffer(-5);
    text.ReleaseBuffer(1000);
    EXPECT_EQ(text, L"abc");
}

TEST(String, MidLimitsPositionAndCountToTheText)
{
    constexpr Part cases[] = {
        {1,  2,       L"bc",   "inside"                   },
        {0,  4,       L"abcd", "all"                      },
        {2,  99,      L"cd",   "count behind the end"     },
        {2,  INT_MAX, L"cd",   "count that would overflow"},
        {4,  1,       L"",     "at the end"               },
        {99, 1,       L"",     "behind the end"           },
        {-3, 2,       L"ab",   "negative position is 0"   },
        {1,  -1,      L"",     "negative count is 0"      },
    };
    for (const Part& c : cases)
        EXPECT_EQ(CString(L"abcd").Mid(c.first, c.count), c.expected) << c.why;
    EXPECT_EQ(CString(L"abcd").Mid(1), L"bcd");
    EXPECT_EQ(CString(L"abcd").Mid(5), L"");
    EXPECT_EQ(CString(L"abcd").Mid(-5), L"abcd");
}

TEST(String, LeftAndRightLimitTheCount)
{
    const CString text = L"abcd";
    EXPECT_EQ(text.Left(2), L"ab");
    EXPECT_EQ(text.Left(9), L"abcd");
    EXPECT_EQ(text.Left(-1), L"");
    EXPECT_EQ(text.Right(1), L"d");
    EXPECT_EQ(text.Right(9), L"abcd");
    EXPECT_EQ(text.Right(-1), L"");
    EXPECT_EQ(text.Right(0), L"");
    EXPECT_EQ(text.Right(INT_MIN), L"");
}

TEST(String, FindsTextFromAPositionOn)
{
    constexpr Search cases[] = {
        {L"ab",      0,  0,  "at the start"            },
        {L"ab",      1,  2,  "next"                    },
        {L"ab",      3,  -1, "none left"               },
        {L"abac",    0,  2,  "overlapping beginnings"  },
        {L"ababacx", 0,  -1, "longer than the text"    },
        {L"ab",      6,  -1, "start at the end"        },
        {L"ab",      99, -1, "start behind the end"    },
        {L"ab",      -1, -1, "negative start"          },
        {L"",        2,  2,  "empty text is everywhere"},
        {L"",        6,  -1, "but not behind the end"  },
    };
    const CString text = L"ababac";
    for (const Search& c : cases)
        EXPECT_EQ(text.Find(c.what, c.start), c.expected) << c.why;
    EXPECT_EQ(text.Find(static_cast<const wchar_t*>(nullptr)), -1);
    EXPECT_EQ(CString().Find(L""), -1);
}

TEST(String, FindsCharactersFromBothEnds)
{
    const CString text = L"ababac";
    EXPECT_EQ(text.Find(L'b'), 1);
    EXPECT_EQ(text.Find(L'b', 2), 3);
    EXPECT_EQ(text.Find(L'b', 4), -1);
    EXPECT_EQ(text.Find(L'b', 6), -1);
    EXPECT_EQ(text.Find(L'b', -1), -1);
    EXPECT_EQ(text.ReverseFind(L'a'), 4);
    EXPECT_EQ(text.ReverseFind(L'x'), -1);
    EXPECT_EQ(text.FindOneOf(L"xcb"), 1);
    EXPECT_EQ(text.FindOneOf(L"xyz"), -1);
    EXPECT_EQ(text.FindOneOf(nullptr), -1);
}

TEST(String, ComparesByCharacterCode)
{
    EXPECT_EQ(CString(L"abc").Compare(L"abc"), 0);
    EXPECT_LT(CString(L"abc").Compare(L"abd"), 0);
    EXPECT_GT(CString(L"abc").Compare(L"ab"), 0);
    EXPECT_LT(CString(L"Z").Compare(L"a"), 0);
    EXPECT_GT(CString(L"\u00E9").Compare(L"z"), 0);
    EXPECT_EQ(CString().Compare(nullptr), 0);
    EXPECT_GT(CString(L"a").Compare(nullptr), 0);
}

TEST(String, ComparesWithoutCaseOnRequest)
{
    EXPECT_EQ(CString(L"aBc").CompareNoCase(L"AbC"), 0);
    EXPECT_LT(CString(L"abc").CompareNoCase(L"ABD"), 0);
    EXPECT_GT(CString(L"ABC").CompareNoCase(L"ab"), 0);
    EXPECT_LT(CString(L"AB").CompareNoCase(L"abc"), 0);
    EXPECT_EQ(CString().CompareNoCase(nullptr), 0);
    // Letters that are neighbors of the alphabet's ends have no case.
    EXPECT_NE(CString(L"@[").CompareNoCase(L"`{"), 0);
}

TEST(String, HasTheRelationalOperators)
{
    const CString a = L"a";
    const CString b = L"b";
    EXPECT_TRUE(a == CString(L"a") && a == L"a" && L"a" == a && a == "a");
    EXPECT_TRUE(a != b && a != L"b" && L"b" != a);
    EXPECT_TRUE(a < b && a < L"b" && L"a" < b && a <= b && a <= L"a" && L"a" <= a);
    EXPECT_TRUE(b > a && b > L"a" && L"b" > a && b >= a && b >= L"b" && L"b" >= b);
    EXPECT_FALSE(a == b || a > b || b < a || a != L"a");
}

TEST(String, IsJoinedWithTextAndCharacters)
{
    const CString b = L"b";
    EXPECT_EQ(b + b, L"bb");
    EXPECT_EQ(b + L"c", L"bc");
    EXPECT_EQ(L"a" + b, L"ab");
    EXPECT_EQ(b + L'c', L"bc");
    EXPECT_EQ(L'a' + b, L"ab");
    CString text;
    text += L"x";
    text += b;
    text += L'y';
    text.Append(L"z");
    text += static_cast<const wchar_t*>(nullptr);
    EXPECT_EQ(text, L"xbyz");
}

TEST(String, TrimsWhiteSpaceOrGivenCharacters)
{
    EXPECT_EQ(CString(L" \t\n\v\f\rab \r\n").Trim(), L"ab");
    EXPECT_EQ(CString(L"  ab  ").TrimLeft(), L"ab  ");
    EXPECT_EQ(CString(L"  ab  ").TrimRight(), L"  ab");
    EXPECT_EQ(CString(L" \t ").Trim(), L"");
    EXPECT_EQ(CString(L"").Trim(), L"");
    EXPECT_EQ(CString(L"xxabxx").Trim(L'x'), L"ab");
    EXPECT_EQ(CString(L"xxabxx").TrimLeft(L'x'), L"abxx");
    EXPECT_EQ(CString(L"xxabxx").TrimRight(L'x'), L"xxab");
    EXPECT_EQ(CString(L"xyabyx").Trim(L"xy"), L"ab");
    EXPECT_EQ(CString(L"xyabyx").TrimLeft(L"xy"), L"abyx");
    EXPECT_EQ(CString(L"xyabyx").TrimRight(L"xy"), L"xyab");
    EXPECT_EQ(CString(L" ab ").Trim(L""), L" ab ");
    EXPECT_EQ(CString(L"a b").Trim(), L"a b");
}

TEST(String, ChangesCaseOfAsciiLettersOnly)
{
    EXPECT_EQ(CString(L"aZ@[`{9\u00E9").MakeUpper(), L"AZ@[`{9\u00E9");
    EXPECT_EQ(CString(L"aZ@[`{9\u00C9").MakeLower(), L"az@[`{9\u00C9");
    EXPECT_EQ(CString(L"abc").MakeReverse(), L"cba");
}

TEST(String, ReplacesAndCounts)
{
    CString text = L"E+01 E+02";
    EXPECT_EQ(text.Replace(L"E+0", L"E+"), 2);
    EXPECT_EQ(text, L"E+1 E+2");
    EXPECT_EQ(text.Replace(L"none", L"x"), 0);
    EXPECT_EQ(text.Replace(L"", L"x"), 0);
    EXPECT_EQ(text.Replace(nullptr, L"x"), 0);
    EXPECT_EQ(text.Replace(L"E+", nullptr), 2);
    EXPECT_EQ(text, L"1 2");
    EXPECT_EQ(text.Replace(L'1', L'3'), 1);
    EXPECT_EQ(text.Replace(L'3', L'3'), 0);
    EXPECT_EQ(text, L"3 2");
}

TEST(String, ReplacesInOnePassFromTheLeft)
{
    CString text = L"aaaa";
    EXPECT_EQ(text.Replace(L"aa", L"aaa"), 2);
    EXPECT_EQ(text, L"aaaaaa");
    text = L"aaa";
    EXPECT_EQ(text.Replace(L"aa", L"b"), 1);
    EXPECT_EQ(text, L"ba");
}

TEST(String, InsertsDeletesAndRemoves)
{
    CString text = L"ac";
    EXPECT_EQ(text.Insert(1, L'b'), 3);
    EXPECT_EQ(text.Insert(99, L"d"), 4);
    EXPECT_EQ(text.Insert(-1, L"_"), 5);
    EXPECT_EQ(text.Insert(0, nullptr), 5);
    EXPECT_EQ(text, L"_abcd");
    EXPECT_EQ(text.Delete(0), 4);
    EXPECT_EQ(text.Delete(2, 99), 2);
    EXPECT_EQ(text.Delete(99, 1), 2);
    EXPECT_EQ(text.Delete(0, -1), 2);
    EXPECT_EQ(text, L"ab");
    text = L"a,b,,";
    EXPECT_EQ(text.Remove(L','), 3);
    EXPECT_EQ(text.Remove(L','), 0);
    EXPECT_EQ(text, L"ab");
}

TEST(String, SpansWhatIsAndIsNotInASet)
{
    const CString text = L"12.5 m";
    EXPECT_EQ(text.SpanIncluding(L"0123456789"), L"12");
    EXPECT_EQ(text.SpanIncluding(L"xyz"), L"");
    EXPECT_EQ(text.SpanIncluding(nullptr), L"");
    EXPECT_EQ(text.SpanExcluding(L" "), L"12.5");
    EXPECT_EQ(text.SpanExcluding(L"xyz"), L"12.5 m");
    EXPECT_EQ(text.SpanExcluding(nullptr), L"12.5 m");
}

TEST(String, TokenizeSkipsEmptyPartsAndEndsWithMinusOne)
{
    const CString text = L",,ab,c;d,";
    int at = 0;
    EXPECT_EQ(text.Tokenize(L",;", at), L"ab");
    EXPECT_EQ(text.Tokenize(L",;", at), L"c");
    EXPECT_EQ(text.Tokenize(L",;", at), L"d");
    EXPECT_GE(at, 0);
    EXPECT_EQ(text.Tokenize(L",;", at), L"");
    EXPECT_EQ(at, -1);
    EXPECT_EQ(text.Tokenize(L",;", at), L"");
    EXPECT_EQ(at, -1);
}

TEST(String, TokenizeWithoutSeparatorsReturnsTheRest)
{
    const CString text = L"abc";
    int at = 1;
    EXPECT_EQ(text.Tokenize(nullptr, at), L"bc");
    EXPECT_EQ(text.Tokenize(L"", at), L"");
    EXPECT_EQ(at, -1);
}
