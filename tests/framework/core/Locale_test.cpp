// SPDX-License-Identifier: MIT
//
// The same digits in every locale: a decimal comma and grouping dots, in C++ and, where the
// system has such a locale, in C.
#include "framework/core/core.h"

#include "tests/framework/core/TextOf.h"

#include <clocale>
#include <cstdio>
#include <gtest/gtest.h>
#include <locale>
#include <string>

namespace {

class CommaPunctuation : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class WideCommaPunctuation : public std::numpunct<wchar_t>
{
    wchar_t do_decimal_point() const override { return L','; }
    wchar_t do_thousands_sep() const override { return L'.'; }
    std::string do_grouping() const override { return "\3"; }
};

class InCommaLocale : public testing::Test
{
protected:
    InCommaLocale() : m_cBefore(std::setlocale(LC_ALL, nullptr))
    {
        const std::locale comma(std::locale(std::locale::classic(), new CommaPunctuation),
                                new WideCommaPunctuation);
        m_before = std::locale::global(comma);
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "ru_RU.UTF-8"})
            if (std::setlocale(LC_ALL, name) != nullptr) break;
    }
    ~InCommaLocale() override
    {
        std::locale::global(m_before);
        std::setlocale(LC_ALL, m_cBefore.c_str());
    }

private:
    std::string m_cBefore;
    std::locale m_before;
};

} // namespace

TEST_F(InCommaLocale, FormatKeepsPointAndPlainDigits)
{
    CString text;
    text.Format(L"%.3f %e %g %d", 1234567.5, 0.25, 0.5, 1234567);
    EXPECT_EQ(text, L"1234567.500 2.500000e-01 0.5 1234567");
}

TEST_F(InCommaLocale, NumbersAreReadWithAPoint)
{
    const auto number = framework::ParseDouble(L"1.5,5");
    EXPECT_EQ(number.value, 1.5);
    EXPECT_EQ(number.used, 3u);
    EXPECT_EQ(framework::ParseInteger(L"1.234").value, 1);
}

TEST_F(InCommaLocale, TextAndPathsAreUtf8)
{
    EXPECT_EQ(framework::ToUtf8(L"\u00E4\u6D4B"), "\xC3\xA4\xE6\xB5\x8B");
    const CString path = CString(testing::TempDir().c_str()) + L"/\u00E4\u6D4B.txt";
    ASSERT_TRUE(framework::ReplaceFileContent(path, "x"));
    EXPECT_NE(GetFileAttributesW(path), INVALID_FILE_ATTRIBUTES);
    std::FILE* file = std::fopen((testing::TempDir() + "/\xC3\xA4\xE6\xB5\x8B.txt").c_str(), "rb");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_TRUE(CFile::Remove(path));
}
