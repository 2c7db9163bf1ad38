#include "framework/core/core.h"

#include <gtest/gtest.h>

TEST(String, IsMadeFromWideAndUtf8Text)
{
    EXPECT_EQ(CString(L"pole"), L"pole");
    EXPECT_EQ(CString("h\xC3\xB6he"), L"h\u00F6he");
    EXPECT_EQ(CString(L'x', 3), L"xxx");
    EXPECT_EQ(CString(L"antenna", 3), L"ant");
}

TEST(String, FormatTakesAStringForPercentS)
{
    const CString name = L"tip";
    CString text;
    text.Format(L"%s %ls %hs %d %5.2f|%-4d|%03d", name, L"wide", "narrow", 7, 1.005, 3, 5);
    EXPECT_EQ(text, L"tip wide narrow 7  1.00|3   |005");
}

TEST(Array, GrowsAndReturnsThePositionOfWhatItAdds)
{
    CArray<int, int> numbers;
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(numbers.Add(i * i), i);
    EXPECT_EQ(numbers.GetSize(), 100);
    EXPECT_EQ(numbers[99], 99 * 99);
}
