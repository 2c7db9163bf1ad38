// SPDX-License-Identifier: MIT
#include "framework/core/MessageBox.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

using framework::SetMessageBoxHandler;

namespace {

class MessageBox : public testing::Test
{
protected:
    ~MessageBox() override { SetMessageBoxHandler(nullptr); }

    std::wstring m_shown;
    unsigned m_style = 0;

    void Record(int answer)
    {
        SetMessageBoxHandler(
            [this, answer](const wchar_t* text, const wchar_t* title, unsigned style) {
                m_shown = std::wstring(title) + L"/" + text;
                m_style = style;
                return answer;
            });
    }
};

} // namespace

TEST_F(MessageBox, WritesTitleAndTextToStandardErrorByDefault)
{
    testing::internal::CaptureStderr();
    const int answer = MessageBoxW(nullptr, L"\u6821\u51C6 failed", L"Warning", MB_ICONEXCLAMATION);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Warning: \xE6\xA0\xA1\xE5\x87\x86 failed\n");
    EXPECT_EQ(answer, IDOK);
}

TEST_F(MessageBox, CallsTheHandlerThatTheHostSet)
{
    Record(42);
    EXPECT_EQ(MessageBoxW(nullptr, L"text", L"Warning", MB_ICONSTOP), 42);
    EXPECT_EQ(m_shown, L"Warning/text");
    EXPECT_EQ(m_style, MB_ICONSTOP);
}

TEST_F(MessageBox, NeverPassesNullToItsHandler)
{
    Record(IDOK);
    MessageBoxW(nullptr, nullptr, nullptr, MB_OK);
    EXPECT_EQ(m_shown, L"Error/");
}

TEST_F(MessageBox, ReturnsThePreviousHandler)
{
    Record(1);
    const auto previous = SetMessageBoxHandler([](auto, auto, auto) { return 2; });
    EXPECT_EQ(MessageBoxW(nullptr, L"", L"", MB_OK), 2);
    ASSERT_TRUE(previous);
    EXPECT_EQ(previous(L"b", L"a", 0), 1);
    EXPECT_EQ(m_shown, L"a/b");
}

TEST_F(MessageBox, ReturnsToTheDefaultForAnEmptyHandler)
{
    Record(1);
    SetMessageBoxHandler(nullptr);
    testing::internal::CaptureStderr();
    MessageBoxW(nullptr, L"x", L"y", MB_OK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "y: x\n");
    EXPECT_TRUE(m_shown.empty());
}

TEST_F(MessageBox, MayChangeItsHandlerWhileTheHandlerRuns)
{
    const std::string message(100, 'm'); // too long for the function object itself
    SetMessageBoxHandler([message](auto, auto, auto) {
        SetMessageBoxHandler([](auto, auto, auto) { return 2; });
        return static_cast<int>(message.size());
    });
    EXPECT_EQ(MessageBoxW(nullptr, L"", L"", MB_OK), 100);
    EXPECT_EQ(MessageBoxW(nullptr, L"", L"", MB_OK), 2);
}

TEST_F(MessageBox, HasTheStylesOfTheFramework)
{
    EXPECT_EQ(MB_ICONSTOP, 0x10u);
    EXPECT_EQ(MB_ICONEXCLAMATION, 0x30u);
    EXPECT_EQ(MB_ICONINFORMATION, 0x40u);
}
