// SPDX-License-Identifier: MIT
//
// Windows that do not fit into memory, or their pictures.
#include "controls/GraphCompass.h"
#include "framework/gui/gui.h"

#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

namespace {

using reference::AllocationRound;
using reference::Failing;

struct ShortMemory : testing::Test
{
    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    framework::Application application{argc, argv, framework::Display::Memory};
    CWnd window;

    ShortMemory()
    {
        EXPECT_TRUE(window.CreateEx(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 40, 30, nullptr, 0));
        if (!reference::CanFailAllocations()) m_skip = true;
    }
    void SetUp() override
    {
        if (m_skip) GTEST_SKIP() << "another tool has put its own allocator in place";
    }

private:
    bool m_skip = false;
};

TEST_F(ShortMemory, LeavesTheWindowAsItWas)
{
    CDC* const lent = window.GetDC();
    for (const int k : {1, 2}) { // the picture and its pixels
        AllocationRound round(k, Failing::One);
        const BOOL sized =
            round.Run([&] { return window.SetWindowPos(nullptr, 5, 6, 400, 300, 0); });
        ASSERT_TRUE(round.HasFailed()) << k;
        EXPECT_FALSE(sized);
        CRect place;
        window.GetWindowRect(&place);
        EXPECT_EQ(place, CRect(0, 0, 40, 30));
        EXPECT_EQ(lent->SetPixel(39, 29, RGB(1, 2, 3)), RGB(1, 2, 3)) << "it still has its picture";
        EXPECT_EQ(lent->GetPixel(40, 30), CLR_INVALID);
    }
    EXPECT_TRUE(window.SetWindowPos(nullptr, 5, 6, 400, 300, 0)) << "with memory again";
}

// What a child allocates before its native window: the name of its class, its record, its text, the
// entries with its parent and its object, its picture and the pixels. The toolkit does not survive
// a failure of its own.
constexpr long kOwnAllocations = 7;

// Twice, as the list of all windows grows at first and has room for one more then.
TEST_F(ShortMemory, MakesNoWindow)
{
    for (long n = 0; n < 2 * kOwnAllocations; ++n) {
        const long k = n % kOwnAllocations + 1;
        SCOPED_TRACE(k);
        CWnd parent;
        CWnd child;
        ASSERT_TRUE(parent.CreateEx(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 40, 30, nullptr, 0));
        AllocationRound round(k, Failing::One);
        EXPECT_FALSE(round.Run([&] {
            return child.Create(L"STATIC", L"tip of the pole", WS_CHILD, CRect(0, 0, 40, 30),
                                &parent, 7);
        }));
        EXPECT_TRUE(round.HasFailed());
        EXPECT_EQ(child.GetSafeHwnd(), nullptr);
        EXPECT_EQ(parent.GetDlgItem(7), nullptr);
        EXPECT_TRUE(
            child.Create(L"STATIC", L"tip of the pole", WS_CHILD, CRect(0, 0, 40, 30), &parent, 7))
            << "with memory again";
    }
}

TEST_F(ShortMemory, MakesNoWindowWithoutAnObject)
{
    for (long k = 1; k <= 5; ++k) {
        AllocationRound round(k, Failing::AllFrom);
        const HWND made = round.Run([&] {
            return CreateWindowExW(0, L"STATIC", L"tip of the pole", WS_CHILD, 0, 0, 40, 30,
                                   window.GetSafeHwnd(), 7);
        });
        ASSERT_TRUE(round.HasFailed()) << k;
        EXPECT_EQ(made, nullptr) << k;
        EXPECT_EQ(window.GetDlgItem(7), nullptr) << k;
    }
}

TEST_F(ShortMemory, MakesNoObject)
{
    std::vector<void*> made; // until what remembers them grows
    bool isThrown = false;
    for (int i = 0; i < 100 && !isThrown; ++i) {
        AllocationRound round(2, Failing::One);
        try {
            made.push_back(round.Run([] { return CWnd::operator new(sizeof(CWnd)); }));
        } catch (const std::bad_alloc&) {
            isThrown = round.HasFailed();
        }
    }
    EXPECT_TRUE(isThrown);
    AllocationRound round(2, Failing::One);
    constexpr std::align_val_t kWide{64};
    EXPECT_THROW(round.Run([] { return CWnd::operator new(sizeof(CWnd), kWide); }), std::bad_alloc);
    AllocationRound again(2, Failing::One);
    EXPECT_EQ(again.Run([] { return CWnd::operator new(sizeof(CWnd), std::nothrow); }), nullptr);
    for (void* const memory : made)
        CWnd::operator delete(memory);
    CWnd* const object = new CWnd;
    EXPECT_TRUE(object->CreateEx(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 9, 9, nullptr, 0))
        << "with memory again";
    delete object;
}

// The colors of a window, row by row.
std::vector<COLORREF> Pixels(CWnd& shown)
{
    CRect client;
    shown.GetClientRect(&client);
    CClientDC dc(&shown);
    std::vector<COLORREF> pixels;
    for (int y = 0; y < client.bottom; ++y)
        for (int x = 0; x < client.right; ++x)
            pixels.push_back(dc.GetPixel(x, y));
    return pixels;
}

TEST_F(ShortMemory, LeavesAControlThatDrawsAgain)
{
    CGraphCompass dial;
    window.ShowWindow(SW_SHOW);
    ASSERT_TRUE(dial.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 40, 30), &window, 1));
    dial.UpdateWindow();
    dial.SetValue(77);
    const std::vector<COLORREF> expected = Pixels(dial);
    const long failures = reference::ForEveryFailingAllocation([&](AllocationRound& round) {
        bool thrown = false;
        try {
            round.Run([&] { dial.SetValue(30); });
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        EXPECT_TRUE(!thrown || round.HasFailed());
        dial.SetValue(77);
        EXPECT_EQ(Pixels(dial), expected);
    });
    EXPECT_GT(failures, 0);
}

} // namespace
