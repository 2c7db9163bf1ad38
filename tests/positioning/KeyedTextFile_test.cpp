// SPDX-License-Identifier: MIT
#include "positioning/detail/KeyedTextFile.h"

#include "tests/framework/core/Folder.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck/gtest.h>
#include <string>

namespace {

using tiltpole::positioning::KeyedTextFile;

KeyedTextFile Holding(std::string content)
{
    KeyedTextFile file;
    file.SetContent(std::move(content));
    return file;
}

TEST(KeyedTextFile, WritesOneLinePerValue)
{
    const TestFolder folder;
    KeyedTextFile file;
    ASSERT_EQ(file.OpenForWriting(folder.File("a.txt")), 1);
    EXPECT_EQ(file.WriteDouble("Real", -1.5), 1);
    EXPECT_EQ(file.WriteInteger("Count", -42), 1);
    EXPECT_EQ(file.WriteString("Name", L"mast 7"), 1);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(folder.Read("a.txt"), "[Real]-1.5000000000\r\n[Count]-42\r\n[Name]mast 7\r\n");
}

TEST(KeyedTextFile, ReadsBackWhatItWrote)
{
    const TestFolder folder;
    KeyedTextFile file;
    file.OpenForWriting(folder.File("a.txt"));
    file.WriteDouble("Real", 1e9 / 3);
    file.WriteInteger("Count", std::numeric_limits<int>::min());
    file.WriteString("Name", CString("Höhe 磁力计"));
    ASSERT_EQ(file.Close(), 1);

    ASSERT_EQ(file.OpenForReading(folder.File("a.txt")), 1);
    double real = 0;
    int count = 0;
    CString name;
    EXPECT_EQ(file.ReadDouble("Real", real), 1);
    EXPECT_EQ(file.ReadInteger("Count", count), 1);
    EXPECT_EQ(file.ReadString("Name", name), 1);
    EXPECT_DOUBLE_EQ(real, 333333333.3333333135);
    EXPECT_EQ(count, std::numeric_limits<int>::min());
    EXPECT_EQ(name, CString("Höhe 磁力计"));
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(file.ReadInteger("Count", count), 0) << "a closed file holds nothing";
}

TEST(KeyedTextFile, EmptiesAFileThatWasThere)
{
    const TestFolder folder;
    folder.Write("a.txt", "something longer than what follows");
    KeyedTextFile file;
    file.OpenForWriting(folder.File("a.txt"));
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(folder.Read("a.txt"), "");
}

TEST(KeyedTextFile, CannotBeOpenedWhereThereIsNoFile)
{
    const TestFolder folder;
    std::filesystem::create_directory(folder.Native() / "sub");
    KeyedTextFile file;
    EXPECT_EQ(file.OpenForReading(folder.File("missing.txt")), 0);
    EXPECT_EQ(file.OpenForReading(folder.File("sub")), 0);
    EXPECT_EQ(file.OpenForReading(L""), 0);
    EXPECT_EQ(file.OpenForWriting(folder.File("sub")), 0);
    EXPECT_EQ(file.OpenForWriting(L""), 0);
}

TEST(KeyedTextFile, LeavesTheDestinationUnchangedWhereAValueIsMissing)
{
    const KeyedTextFile file = Holding("[Empty]\r\n[Last]5");
    for (const char* key : {"Empty", "Last", "Other", "empty"}) {
        double real = 1.25;
        int count = 7;
        CString text = L"as it was";
        EXPECT_EQ(file.ReadDouble(key, real), 0) << key;
        EXPECT_EQ(file.ReadInteger(key, count), 0) << key;
        EXPECT_EQ(file.ReadString(key, text), 0) << key;
        EXPECT_EQ(real, 1.25);
        EXPECT_EQ(count, 7);
        EXPECT_EQ(text, L"as it was");
    }
}

struct LookupCase
{
    const char* content;
    const wchar_t* expected; // of key "k"
    const char* why;
};

TEST(KeyedTextFile, LooksAKeyUpAsPlainText)
{
    constexpr LookupCase cases[] = {
        {"[k]1\r\n[k]2\r\n",     L"1",         "the first occurrence wins"          },
        {"[a]x[k]3\r\n[k]4\r\n", L"3",         "wherever in a line it stands"       },
        {"# [k]5\r\n",           L"5",         "in a comment too"                   },
        {"[[k]6\r\n",            L"6",         "behind another bracket"             },
        {"[K]1\r\n[k]7\r\n",     L"7",         "case matters"                       },
        {"[kk]1\r\n[ k]2\r\n",   L"as it was", "blanks and longer keys do not match"},
        {"[k]8\n[x]9\r\n",       L"8\n[x]9",   "only CR ends a value"               },
        {"[k]10\r",              L"10",        "LF need not follow"                 },
        {"[k]\r\n[k]11\r\n",     L"as it was", "an empty first value counts"        },
        {"[k] 12 \r\n",          L" 12 ",      "blanks belong to the value"         },
    };
    for (const LookupCase& c : cases) {
        CString text = L"as it was";
        Holding(c.content).ReadString("k", text);
        EXPECT_EQ(text, c.expected) << c.why;
    }
}

TEST(KeyedTextFile, ContinuesAfterAZeroByte)
{
    using namespace std::string_literals;
    const KeyedTextFile file = Holding("\0[a]1\0002\r\n[b]3\r\n"s);
    double a = 0;
    double b = 0;
    EXPECT_EQ(file.ReadDouble("a", a), 1);
    EXPECT_EQ(file.ReadDouble("b", b), 1);
    EXPECT_EQ(a, 1.0) << "a zero byte ends a number like any other text";
    EXPECT_EQ(b, 3.0);
}

struct NumberCase
{
    const char* text;
    double real;
    int integer;
};

TEST(KeyedTextFile, ReadsNumbersAtTheStartOfAText)
{
    constexpr NumberCase cases[] = {
        {"12.5",        12.5,         12        },
        {" \t\v\f\n-3", -3,           -3        },
        {"+.5e1x",      5,            0         },
        {"7 8",         7,            7         },
        {"1e2",         100,          1         },
        {"1e",          1,            1         },
        {"2,5",         2,            2         },
        {"0x10",        0,            0         },
        {"nan",         0,            0         },
        {"inf",         0,            0         },
        {"-Infinity",   0,            0         },
        {"1e999",       0,            1         },
        {"-1e999",      0,            -1        },
        {"1e-999",      0,            1         },
        {"abc",         0,            0         },
        {"-",           0,            0         },
        {".",           0,            0         },
        {"2147483647",  2147483647.0, 2147483647},
        {"2147483648",  2147483648.0, 0         },
        {"[x]4",        0,            0         },
    };
    for (const NumberCase& c : cases) {
        const KeyedTextFile file = Holding(std::string("[k]") + c.text + "\r\n");
        double real = 99;
        int integer = 99;
        EXPECT_EQ(file.ReadDouble("k", real), 1) << c.text;
        EXPECT_EQ(file.ReadInteger("k", integer), 1) << c.text;
        EXPECT_EQ(real, c.real) << c.text;
        EXPECT_EQ(integer, c.integer) << c.text;
    }
}

TEST(KeyedTextFile, RefusesALineOfMoreThanAHundredBytes)
{
    const TestFolder folder;
    folder.Write("a.txt", "old");
    KeyedTextFile file;
    file.OpenForWriting(folder.File("a.txt"));
    EXPECT_EQ(file.WriteString("k", CString(L'x', 95)), 1) << "100 bytes with brackets and CR LF";
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(folder.Read("a.txt").size(), 100U);

    file.OpenForWriting(folder.File("a.txt"));
    EXPECT_EQ(file.WriteInteger("n", 1), 1);
    EXPECT_EQ(file.WriteString("k", CString(L'x', 96)), 0);
    EXPECT_EQ(file.WriteString("k", CString(L'ö', 48)), 0) << "bytes count, not characters";
    EXPECT_EQ(file.WriteDouble("k", 1e300), 0);
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(folder.Read("a.txt").size(), 100U) << "the old file stays";
    EXPECT_EQ(folder.Names().size(), 1U);

    file.OpenForWriting(folder.File("a.txt"));
    EXPECT_EQ(file.WriteInteger("n", 1), 1);
    EXPECT_EQ(file.Close(), 1) << "a new content is not concerned";
    EXPECT_EQ(folder.Read("a.txt"), "[n]1\r\n");
}

TEST(KeyedTextFile, RefusesWhatIsNotFinite)
{
    const TestFolder folder;
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        KeyedTextFile file;
        file.OpenForWriting(folder.File("a.txt"));
        EXPECT_EQ(file.WriteDouble("k", value), 0);
        EXPECT_EQ(file.Close(), 0);
        EXPECT_EQ(folder.Names().size(), 0U);
    }
}

// One pass for many keys finds the same values as one look-up per key, in texts made of fragments
// that could confuse it.
RC_GTEST_PROP(KeyedTextFile, ReadsManyKeysAsItReadsEach, ())
{
    using namespace std::string_literals;
    const auto parts = *rc::gen::container<std::vector<std::string>>(
        rc::gen::element("["s, "]"s, "[a]"s, "[b"s, "b]"s, "[bb]"s, "c]"s, "[c"s, "\r"s, "\r\n"s,
                         "1"s, "-2.5"s, "e3"s, " "s, "x"s, "\0"s, "a"s));
    std::string content;
    for (const std::string& part : parts)
        content += part;
    const KeyedTextFile file = Holding(content);

    constexpr std::array<const char*, 5> keys = {"a", "bb", "c", "b", "1"};
    std::array<double, 5> together = {9, 9, 9, 9, 9};
    std::array<double, 5> apart = together;
    std::array<tiltpole::positioning::KeyedDouble, 5> wanted;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        wanted[i] = {keys[i], &together[i]};
        file.ReadDouble(keys[i], apart[i]);
    }
    file.ReadDoubles(wanted);
    RC_ASSERT(together == apart);
}

} // namespace
