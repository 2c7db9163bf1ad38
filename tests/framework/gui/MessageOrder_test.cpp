// SPDX-License-Identifier: MIT
//
// Which messages a window gets, and in which order.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace {

struct Sent
{
    UINT message;
    LPARAM lParam;

    bool operator==(const Sent&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Sent& sent)
    {
        return out << std::hex << sent.message << std::dec << " ("
                   << framework::LowWord(sent.lParam) << ", " << framework::HighWord(sent.lParam)
                   << ')';
    }
};

constexpr LPARAM Pair(int low, int high)
{
    return framework::PackWords(low, high);
}

// Records the messages on creation, place, visibility and end; of the words that come with them
// those of WM_SIZE and WM_MOVE, and whether WM_SHOWWINDOW shows.
class Listening : public CWnd
{
public:
    std::vector<Sent> sent;

    std::vector<Sent> Take() { return std::exchange(sent, {}); }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        switch (message) {
        case WM_CREATE:
        case WM_DESTROY:
        case WM_NCDESTROY:
        case WM_CLOSE:
            sent.push_back({message, 0});
            break;
        case WM_SIZE:
        case WM_MOVE:
            sent.push_back({message, lParam});
            break;
        case WM_SHOWWINDOW:
            sent.push_back({message, static_cast<LPARAM>(wParam)});
            break;
        default:
            break;
        }
        return CWnd::WindowProc(message, wParam, lParam);
    }
};

using Messages = std::vector<Sent>;

TEST(MessageOrder, OfAWindowsLife)
{
    Listening window;
    ASSERT_TRUE(window.CreateEx(WS_EX_STATICEDGE, L"STATIC", L"", WS_OVERLAPPED | WS_VISIBLE, 10,
                                20, 42, 32, nullptr, 0));
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_CREATE, 0      },
                                 {WM_SIZE,   Pair(40, 30)},
                                 {WM_MOVE,         Pair(11,          21)},
                                 {WM_SHOWWINDOW,      TRUE   }
    }));
    window.MoveWindow(12, 20, 42, 32);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_MOVE, Pair(13, 21)}
    }));
    window.MoveWindow(12, 20, 52, 32);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_SIZE, Pair(50, 30)}
    }));
    window.MoveWindow(10, 20, 42, 32);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_MOVE, Pair(11, 21)},
                                 {WM_SIZE, Pair(40, 30)}
    }));
    window.MoveWindow(10, 20, 42, 32);
    EXPECT_EQ(window.Take(), Messages{}) << "nothing changes";
    window.SetWindowPos(nullptr, 99, 99, 62, 32, SWP_NOMOVE | SWP_HIDEWINDOW);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_SIZE, Pair(60, 30)},
                                 {WM_SHOWWINDOW,       FALSE }
    }));
    window.ShowWindow(SW_HIDE);
    EXPECT_EQ(window.Take(), Messages{}) << "hidden already";
    window.ShowWindow(SW_SHOW);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_SHOWWINDOW, TRUE}
    }));
    window.SendMessage(WM_CLOSE);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_CLOSE,     0},
                                 {WM_DESTROY,   0},
                                 {WM_NCDESTROY, 0}
    }));
}

// A host that makes its controls in OnCreate and places them in OnSize.
class Dialog : public CWnd
{
public:
    CStatic label;

protected:
    afx_msg int OnCreate(LPCREATESTRUCT)
    {
        return label.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 0, 0), this, 1) ? 0 : -1;
    }
    afx_msg void OnSize(UINT, int width, int height) { label.MoveWindow(5, 5, width / 2, height); }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Dialog, CWnd)
ON_WM_CREATE()
ON_WM_SIZE()
END_MESSAGE_MAP()

TEST(MessageOrder, LetsAHostMakeControlsAndThenPlaceThem)
{
    Dialog dialog;
    ASSERT_TRUE(
        dialog.CreateEx(0, AfxRegisterWndClass(0), L"", WS_OVERLAPPED, 0, 0, 80, 60, nullptr, 0));
    CRect client;
    dialog.label.GetClientRect(&client);
    EXPECT_EQ(client, CRect(0, 0, 40, 60));
}

} // namespace
