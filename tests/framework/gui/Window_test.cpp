// SPDX-License-Identifier: MIT
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

// A window that paints its client area in one color and counts its calls.
class Painted : public CWnd
{
public:
    int paints = 0;
    int erasures = 0;
    int sizes = 0;
    int destroyed = 0;
    CSize lastSize;
    COLORREF color = RGB(10, 20, 30);

    BOOL CreateTop(int width, int height)
    {
        return CreateEx(0, AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW), L"test", WS_OVERLAPPED, 0,
                        0, width, height, nullptr, 0);
    }

protected:
    afx_msg void OnPaint()
    {
        CPaintDC dc(this);
        ++paints;
        CRect client;
        GetClientRect(&client);
        dc.FillSolidRect(&client, color);
    }
    afx_msg BOOL OnEraseBkgnd(CDC*)
    {
        ++erasures;
        return FALSE;
    }
    afx_msg void OnSize(UINT, int width, int height)
    {
        ++sizes;
        lastSize = {width, height};
    }
    afx_msg void OnDestroy() { ++destroyed; }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Painted, CWnd)
ON_WM_PAINT()
ON_WM_ERASEBKGND()
ON_WM_SIZE()
ON_WM_DESTROY()
END_MESSAGE_MAP()

COLORREF PixelOf(CWnd& window, int x, int y)
{
    CClientDC dc(&window);
    return dc.GetPixel(x, y);
}

TEST(Window, PaintsOnceShownAndAskedTo)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(40, 30));
    window.UpdateWindow();
    EXPECT_EQ(window.paints, 0) << "a hidden window is not painted";

    EXPECT_FALSE(window.ShowWindow(SW_SHOW));
    window.UpdateWindow();
    EXPECT_EQ(window.paints, 1);
    EXPECT_EQ(window.erasures, 1);
    EXPECT_EQ(PixelOf(window, 39, 29), RGB(10, 20, 30));

    window.UpdateWindow();
    EXPECT_EQ(window.paints, 1) << "nothing is invalid any more";
}

struct EventLoop
{
    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    framework::Application events{argc, argv, framework::Display::Memory};

    void DispatchPending() { events.DispatchPending(); }
};

TEST(Window, PaintsFromTheEventLoop)
{
    EventLoop events;
    Painted window;
    ASSERT_TRUE(window.CreateTop(40, 30));
    window.ShowWindow(SW_SHOW);
    events.DispatchPending();
    EXPECT_EQ(window.paints, 1);
    window.Invalidate(FALSE);
    events.DispatchPending();
    EXPECT_EQ(window.paints, 2);
    EXPECT_EQ(window.erasures, 1) << "invalidated without erasing";
}

TEST(Window, KeepsWhatIsDrawnOutsideAPaintUntilTheNextOne)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(40, 30));
    window.ShowWindow(SW_SHOW);
    window.UpdateWindow();
    {
        CClientDC dc(&window);
        dc.SetPixel(3, 4, RGB(200, 0, 0));
    }
    window.UpdateWindow();
    EXPECT_EQ(PixelOf(window, 3, 4), RGB(200, 0, 0));
    window.Invalidate();
    window.UpdateWindow();
    EXPECT_EQ(PixelOf(window, 3, 4), RGB(10, 20, 30));
}

TEST(Window, PaintsOnlyWhatIsInvalid)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(40, 30));
    window.ShowWindow(SW_SHOW);
    window.UpdateWindow();
    window.color = RGB(0, 99, 0);
    const CRect part(5, 6, 10, 12);
    window.InvalidateRect(&part);
    window.UpdateWindow();
    EXPECT_EQ(PixelOf(window, 5, 6), RGB(0, 99, 0));
    EXPECT_EQ(PixelOf(window, 9, 11), RGB(0, 99, 0));
    EXPECT_EQ(PixelOf(window, 10, 11), RGB(10, 20, 30));
    EXPECT_EQ(PixelOf(window, 4, 6), RGB(10, 20, 30));
}

TEST(Window, IsNotMadeWithoutAClassOrAParentForAChild)
{
    CWnd window;
    EXPECT_FALSE(window.CreateEx(0, L"no such class", L"", 0, 0, 0, 9, 9, nullptr, 0));
    EXPECT_FALSE(window.CreateEx(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, nullptr, 0));
    EXPECT_FALSE(window.Create(L"STATIC", L"", 0, CRect(0, 0, 9, 9), nullptr, 1));
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    EXPECT_FALSE(window.DestroyWindow());
}

TEST(Window, TakesTheIdOfAChildAsANumberOrAsAMenu)
{
    Painted top;
    ASSERT_TRUE(top.CreateTop(100, 100));
    CWnd asNumber;
    ASSERT_TRUE(asNumber.CreateEx(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, top.GetSafeHwnd(), 7));
    EXPECT_EQ(asNumber.GetDlgCtrlID(), 7);
    CWnd asMenu;
    ASSERT_TRUE(asMenu.CreateEx(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, top.GetSafeHwnd(),
                                reinterpret_cast<HMENU>(UINT_PTR{8})));
    EXPECT_EQ(asMenu.GetDlgCtrlID(), 8);
    CWnd none;
    ASSERT_TRUE(none.CreateEx(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 9, 9, nullptr, nullptr));
    EXPECT_EQ(none.GetDlgCtrlID(), 0);
}

TEST(Window, LosesThreePixelsASideToItsTwoEdges)
{
    Painted top;
    ASSERT_TRUE(top.CreateTop(100, 100));
    CWnd child;
    ASSERT_TRUE(child.CreateEx(WS_EX_CLIENTEDGE | WS_EX_STATICEDGE, L"STATIC", L"",
                               WS_CHILD | WS_VISIBLE, CRect(10, 20, 60, 50), &top, 7));
    CRect client;
    child.GetClientRect(&client);
    EXPECT_EQ(client, CRect(0, 0, 44, 24));
    CRect outer;
    child.GetWindowRect(&outer);
    EXPECT_EQ(outer.Size(), CSize(50, 30));
}

TEST(Window, TakesItsChildrenWithIt)
{
    Painted top;
    ASSERT_TRUE(top.CreateTop(100, 100));
    Painted child;
    ASSERT_TRUE(child.CreateEx(0, L"STATIC", L"", WS_CHILD, CRect(0, 0, 9, 9), &top, 7));
    EXPECT_EQ(top.GetDlgItem(7), &child);
    EXPECT_EQ(child.GetParent(), &top);
    EXPECT_TRUE(top.DestroyWindow());
    EXPECT_EQ(child.GetSafeHwnd(), nullptr);
    EXPECT_EQ(child.destroyed, 1);
    EXPECT_EQ(top.destroyed, 1);
}

TEST(Window, TellsItsNewClientSize)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(40, 30));
    window.MoveWindow(0, 0, 50, 20);
    EXPECT_EQ(window.lastSize, CSize(50, 20));
    const int told = window.sizes;
    window.MoveWindow(5, 5, 50, 20);
    EXPECT_EQ(window.sizes, told) << "moved, not sized";
}

TEST(Window, SurvivesEverySize)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(0, 0));
    window.ShowWindow(SW_SHOW);
    window.UpdateWindow();
    window.MoveWindow(0, 0, 4000, 4000);
    window.UpdateWindow();
    EXPECT_EQ(PixelOf(window, 3999, 3999), RGB(10, 20, 30));
    window.MoveWindow(0, 0, -5, 1000000);
    CRect client;
    window.GetClientRect(&client);
    EXPECT_EQ(client.Width(), 0);
}

// A host's dialog item that a control takes over.
class Subclassed : public CStatic
{
public:
    int prepared = 0;

    void PreSubclassWindow() override
    {
        ++prepared;
        ModifyStyle(0, 0x4000);
    }
};

TEST(Subclassing, TakesOverADialogItem)
{
    Painted dialog;
    ASSERT_TRUE(dialog.CreateTop(100, 100));
    ASSERT_NE(CreateWindowExW(0, L"static", L"", WS_CHILD | WS_VISIBLE, 0, 0, 20, 20,
                              dialog.GetSafeHwnd(), 42),
              nullptr);
    Subclassed control;
    EXPECT_FALSE(control.SubclassDlgItem(41, &dialog));
    ASSERT_TRUE(control.SubclassDlgItem(42, &dialog));
    EXPECT_EQ(control.prepared, 1);
    EXPECT_EQ(control.GetStyle() & 0x4000u, 0x4000u);
    EXPECT_EQ(dialog.GetDlgItem(42), &control);
    EXPECT_FALSE(control.SubclassDlgItem(42, &dialog)) << "it has a window";
}

TEST(Subclassing, AnswersInPlaceOfTheFirstOwner)
{
    Painted dialog;
    ASSERT_TRUE(dialog.CreateTop(100, 100));
    dialog.ShowWindow(SW_SHOW);
    CStatic holder;
    ASSERT_TRUE(holder.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 20, 20), &dialog, 5));
    Painted control;
    ASSERT_TRUE(control.SubclassWindow(holder.GetSafeHwnd()));
    control.Invalidate();
    control.UpdateWindow();
    EXPECT_GE(control.paints, 1);
    control.DestroyWindow();
    EXPECT_EQ(holder.GetSafeHwnd(), nullptr);
}

TEST(Subclassing, CallsTheHookForAWindowItMakes)
{
    Painted dialog;
    ASSERT_TRUE(dialog.CreateTop(100, 100));
    Subclassed control;
    ASSERT_TRUE(control.Create(L"", WS_CHILD, CRect(0, 0, 20, 20), &dialog, 5));
    EXPECT_EQ(control.prepared, 1);
}

TEST(Style, ChangesOnlyWhatIsAsked)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(10, 10));
    EXPECT_FALSE(window.ModifyStyle(0, 0));
    EXPECT_TRUE(window.ModifyStyle(0, 0x4000));
    EXPECT_FALSE(window.ModifyStyle(0, 0x4000)) << "it is set already";
    EXPECT_TRUE(window.ModifyStyle(0x4000, 0));
    EXPECT_EQ(window.GetStyle() & 0x4000u, 0u);
}

TEST(LentContext, BelongsToOneWindow)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(10, 10));
    Painted other;
    ASSERT_TRUE(other.CreateTop(10, 10));
    CDC* const lent = window.GetDC();
    EXPECT_EQ(other.ReleaseDC(lent), 0);
    EXPECT_EQ(window.ReleaseDC(lent), 1);
}

TEST(LentContext, StaysWhatItIsUntilReleased)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(10, 10));
    CDC* const first = window.GetDC();
    first->SetTextColor(RGB(1, 2, 3));
    std::vector<CDC*> others;
    for (int i = 0; i < 100; ++i) {
        others.push_back(window.GetDC());
        others.back()->SetTextColor(RGB(9, 9, 9));
    }
    EXPECT_EQ(first->GetTextColor(), RGB(1, 2, 3));
    EXPECT_EQ(window.ReleaseDC(first), 1);
}

TEST(Text, OfAWindowIsKept)
{
    Painted window;
    ASSERT_TRUE(window.CreateTop(10, 10));
    window.SetWindowText(L"Pole 2.00 m");
    CString text;
    window.GetWindowText(text);
    EXPECT_EQ(text, L"Pole 2.00 m");
    wchar_t buffer[5];
    EXPECT_EQ(window.GetWindowText(buffer, 5), 4);
    EXPECT_STREQ(buffer, L"Pole");
    EXPECT_EQ(window.GetWindowTextLength(), 11);
}

TEST(Text, IsEmptyAfterAMessageWithoutOne)
{
    CWnd window;
    ASSERT_TRUE(window.CreateEx(0, L"STATIC", L"before", 0, 0, 0, 10, 10, nullptr, 0));
    EXPECT_EQ(window.SendMessage(WM_SETTEXT, 0, 0), TRUE);
    EXPECT_EQ(window.GetWindowTextLength(), 0);
}

// The dark pixels of a window of the class STATIC that shows `text`.
struct StaticText
{
    Painted host;
    HWND item = nullptr;

    explicit StaticText(const wchar_t* text, DWORD style = 0)
    {
        EXPECT_TRUE(host.CreateTop(200, 100));
        host.ShowWindow(SW_SHOW);
        item = CreateWindowExW(0, L"STATIC", text, WS_CHILD | WS_VISIBLE | style, 0, 0, 60, 80,
                               host.GetSafeHwnd(), 3);
    }

    CWnd& Window() const { return *CWnd::FromHandle(item); }

    int Dark(int fromRow = 0, int toRow = 80) const
    {
        Window().UpdateWindow();
        CClientDC dc(&Window());
        int count = 0;
        for (int y = fromRow; y < toRow; ++y)
            for (int x = 0; x < 60; ++x)
                count += dc.GetPixel(x, y) == RGB(0, 0, 0);
        return count;
    }
};

TEST(StaticText, IsShownByAWindowWithoutAControl)
{
    EXPECT_EQ(StaticText(L"").Dark(), 0);
    EXPECT_GT(StaticText(L"Tip").Dark(), 10);
}

TEST(StaticText, IsPaintedAnewWhenItChanges)
{
    StaticText text(L"Tip");
    const int before = text.Dark();
    text.Window().SetWindowText(L"Tip and pole");
    EXPECT_GT(text.Dark(), before);
    text.Window().SetWindowText(L"");
    EXPECT_EQ(text.Dark(), 0);
}

TEST(StaticText, BreaksLinesBetweenWordsUnlessItsStyleKeepsThem)
{
    EXPECT_GT(StaticText(L"antenna antenna").Dark(20, 40), 10) << "a second line";
    EXPECT_EQ(StaticText(L"antenna antenna", SS_LEFTNOWORDWRAP).Dark(20, 40), 0);
    EXPECT_EQ(StaticText(L"antennaantennaantenna").Dark(20, 40), 0) << "one word is not broken";
    EXPECT_EQ(StaticText(L"tip", SS_CENTERIMAGE).Dark(0, 25), 0) << "in the middle of 80 rows";
}

TEST(StaticText, UnderlinesTheCharacterAfterAnAmpersand)
{
    const int plain = StaticText(L"Tip").Dark();
    EXPECT_GT(StaticText(L"&Tip").Dark(), plain);
    EXPECT_GT(StaticText(L"&Tip", SS_NOPREFIX).Dark(), StaticText(L"&Tip").Dark())
        << "the ampersand itself has more pixels than a line";
    EXPECT_EQ(StaticText(L"&&").Dark(), StaticText(L"&", SS_NOPREFIX).Dark());
    EXPECT_EQ(StaticText(L"Tip&").Dark(), plain);
}

TEST(Erasing, DoesNothingWithoutAContext)
{
    CWnd window;
    ASSERT_TRUE(window.CreateEx(0, L"STATIC", L"", 0, 0, 0, 10, 10, nullptr, 0));
    EXPECT_EQ(window.SendMessage(WM_ERASEBKGND, 0, 0), 0);
    CClientDC dc(&window);
    EXPECT_EQ(window.SendMessage(WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc.GetSafeHdc()), 0), 1);
}

// Records the ticks of its timers and stops each timer at its second tick.
class Ticking : public CWnd
{
public:
    std::vector<UINT_PTR> ticks;
    std::vector<BOOL> killed;

    Ticking()
    {
        CreateEx(0, AfxRegisterWndClass(0), L"test", WS_OVERLAPPED, 0, 0, 20, 20, nullptr, 0);
    }

    /// Dispatches until there are `count` ticks, or ten seconds have passed.
    void WaitFor(EventLoop& events, std::size_t count) const
    {
        using namespace std::chrono;
        const auto end = steady_clock::now() + seconds(10);
        while (ticks.size() < count && steady_clock::now() < end)
            events.DispatchPending();
    }

protected:
    afx_msg void OnTimer(UINT_PTR id)
    {
        ticks.push_back(id);
        if (std::count(ticks.begin(), ticks.end(), id) == 2) killed.push_back(KillTimer(id));
    }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Ticking, CWnd)
ON_WM_TIMER()
END_MESSAGE_MAP()

TEST(Timer, TicksUnderItsNumberUntilKilled)
{
    EventLoop events;
    Ticking window;
    EXPECT_EQ(window.SetTimer(7, 1, nullptr), 7u);
    EXPECT_EQ(window.SetTimer(9, 1, nullptr), 9u);
    window.WaitFor(events, 4);
    std::sort(window.ticks.begin(), window.ticks.end());
    EXPECT_EQ(window.ticks, (std::vector<UINT_PTR>{7, 7, 9, 9}));
    EXPECT_EQ(window.killed, (std::vector<BOOL>{TRUE, TRUE}));
}

TEST(Timer, WithoutAPeriodLeavesTimeForTheProgram)
{
    using namespace std::chrono;
    EventLoop events;
    Ticking window;
    const auto begin = steady_clock::now();
    window.SetTimer(7, 0, nullptr);
    window.WaitFor(events, 2);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(15)) << "two periods of 10";
}

TEST(Timer, IsKilledOnlyWhereThereIsOne)
{
    Ticking window;
    EXPECT_FALSE(window.KillTimer(7)) << "never set";
    window.SetTimer(7, 100000, nullptr);
    EXPECT_TRUE(window.KillTimer(7));
    EXPECT_FALSE(window.KillTimer(7)) << "killed already";
    CWnd none;
    EXPECT_EQ(none.SetTimer(7, 1, nullptr), 0u);
    EXPECT_FALSE(none.KillTimer(7));
}

} // namespace
