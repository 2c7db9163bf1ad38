// SPDX-License-Identifier: MIT
//
// The words of message parameters. Hosts know these names from macros, which take whatever converts
// to an integer; the compilers' warnings about conversions are errors here.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

template <class Packed>
class MessageWords : public testing::Test
{};

using Integers =
    testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, int, unsigned, long,
                   unsigned long, long long, unsigned long long, WPARAM, LPARAM, LRESULT, DWORD,
                   LONG, WORD, UINT, bool, char, wchar_t, char16_t>;
TYPED_TEST_SUITE(MessageWords, Integers);

TYPED_TEST(MessageWords, ComeOutOfEveryInteger)
{
    const auto one = static_cast<TypeParam>(1);
    EXPECT_EQ(LOWORD(one), 1);
    EXPECT_EQ(HIWORD(one), 0);
    if constexpr (sizeof(TypeParam) >= 4) {
        const auto packed = static_cast<TypeParam>(0x12345678);
        EXPECT_EQ(LOWORD(packed), 0x5678);
        EXPECT_EQ(HIWORD(packed), 0x1234);
    }
}

TYPED_TEST(MessageWords, GoIntoParametersFromEveryInteger)
{
    const auto low = static_cast<TypeParam>(1);
    EXPECT_EQ(MAKELONG(low, 2), 0x20001);
    EXPECT_EQ(MAKEWPARAM(low, low), WPARAM{0x10001});
    EXPECT_EQ(MAKELPARAM(2, low), LPARAM{0x10002});
}

TEST(MessageWords, OfNegativeNumbersAreTheirLowestBits)
{
    constexpr LPARAM place = MAKELPARAM(-5, -7);
    EXPECT_EQ(static_cast<short>(LOWORD(place)), -5);
    EXPECT_EQ(static_cast<short>(HIWORD(place)), -7);
    EXPECT_EQ(LOWORD(-1), 0xFFFF);
    EXPECT_EQ(HIWORD(LPARAM{-1}), 0xFFFF);
    EXPECT_EQ(place, LPARAM{0xFFF9FFFB}) << "not extended";
    EXPECT_EQ(MAKELONG(0xFFFF, 0xFFFF), -1);
}

TEST(MessageWords, ComeOutOfEnumeratorsAndPointersToo)
{
    enum Command { kCommand = 0x70003 };
    enum class Id : UINT { Dial = 0x70004 };
    EXPECT_EQ(LOWORD(kCommand), 3);
    EXPECT_EQ(HIWORD(kCommand), 7);
    EXPECT_EQ(LOWORD(Id::Dial), 4);
    EXPECT_EQ(HIWORD(static_cast<LPCTSTR>(nullptr)), 0);
    int object = 0;
    EXPECT_EQ(LOWORD(&object), reinterpret_cast<std::uintptr_t>(&object) & 0xFFFF);
}

// Each in a place where the language wants a constant.
TEST(MessageWords, AreConstantsOfConstants)
{
    static_assert(HIWORD(MAKEWPARAM(3, 4)) == 4);
    enum { kLow = LOWORD(0x50006) };
    const char rows[HIWORD(LPARAM{0x50006})] = {};
    EXPECT_EQ(sizeof rows, 5U);
    switch (kLow) {
    case LOWORD(MAKELPARAM(6, 0)):
        break;
    default:
        ADD_FAILURE();
    }
}

struct Message
{
    static const LPARAM kParameter = 0x10002; // without a definition: its address is not taken
    unsigned bits : 20;
};

TEST(MessageWords, TakeWhatHasNoAddress)
{
    EXPECT_EQ(HIWORD(Message::kParameter), 1);
    EXPECT_EQ(LOWORD(Message{0x80009}.bits), 9);
}

} // namespace
