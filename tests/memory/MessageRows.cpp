// SPDX-License-Identifier: MIT
//
// Messages, and painting.
#include "tests/memory/Drawn.h"
#include "tests/memory/Rows.h"

#include <new>
#include <string>

namespace sweep {

namespace {

// Makes the protected operations of a window callable.
struct Reach : CWnd
{
    using CWnd::Default;
    using CWnd::DefWindowProc;
    using CWnd::GetMessageMap;
    using CWnd::GetThisMessageMap;
    using CWnd::OnCaptureChanged;
    using CWnd::OnChar;
    using CWnd::OnClose;
    using CWnd::OnCommand;
    using CWnd::OnCreate;
    using CWnd::OnDestroy;
    using CWnd::OnEnable;
    using CWnd::OnEraseBkgnd;
    using CWnd::OnKeyDown;
    using CWnd::OnKeyUp;
    using CWnd::OnKillFocus;
    using CWnd::OnLButtonDblClk;
    using CWnd::OnLButtonDown;
    using CWnd::OnLButtonUp;
    using CWnd::OnMButtonDblClk;
    using CWnd::OnMButtonDown;
    using CWnd::OnMButtonUp;
    using CWnd::OnMouseLeave;
    using CWnd::OnMouseMove;
    using CWnd::OnMouseWheel;
    using CWnd::OnMove;
    using CWnd::OnNcDestroy;
    using CWnd::OnPaint;
    using CWnd::OnRButtonDblClk;
    using CWnd::OnRButtonDown;
    using CWnd::OnRButtonUp;
    using CWnd::OnSetFocus;
    using CWnd::OnShowWindow;
    using CWnd::OnSize;
    using CWnd::OnSysChar;
    using CWnd::OnSysKeyDown;
    using CWnd::OnSysKeyUp;
    using CWnd::OnTimer;
    using CWnd::PostNcDestroy;
    using CWnd::PreCreateWindow;
    using CWnd::PreSubclassWindow;
    using CWnd::WindowProc;
};

struct Reached
{
    Reach window;
    CDC dc;

    Reached()
    {
        window.CreateEx(0, PlainClass(), L"reached", WS_OVERLAPPED, 0, 0, 60, 40, nullptr, 0);
        dc.CreateCompatibleDC(nullptr);
    }
};

// Each handler does what is the default of no message: nothing.
Row Handlers()
{
    return WithoutMemory<Reached>(
        "CWnd::OnCaptureChanged CWnd::OnChar CWnd::OnClose CWnd::OnCommand CWnd::OnCreate"
        " CWnd::OnDestroy CWnd::OnEnable CWnd::OnEraseBkgnd CWnd::OnKeyDown CWnd::OnKeyUp"
        " CWnd::OnKillFocus CWnd::OnLButtonDblClk CWnd::OnLButtonDown CWnd::OnLButtonUp"
        " CWnd::OnMButtonDblClk CWnd::OnMButtonDown CWnd::OnMButtonUp CWnd::OnMouseLeave"
        " CWnd::OnMouseMove CWnd::OnMouseWheel CWnd::OnMove CWnd::OnNcDestroy CWnd::OnPaint"
        " CWnd::OnRButtonDblClk CWnd::OnRButtonDown CWnd::OnRButtonUp CWnd::OnSetFocus"
        " CWnd::OnShowWindow CWnd::OnSize CWnd::OnSysChar CWnd::OnSysKeyDown CWnd::OnSysKeyUp"
        " CWnd::OnTimer CWnd::Default CWnd::DefWindowProc CWnd::WindowProc CWnd::PostNcDestroy"
        " CWnd::PreCreateWindow CREATESTRUCTW CWnd::PreSubclassWindow CWnd::GetMessageMap"
        " CWnd::GetThisMessageMap",
        [](Reached& reached) {
            Reach& w = reached.window;
            const CPoint at(1, 2);
            w.OnCaptureChanged(nullptr);
            w.OnChar(L'a', 1, 0);
            w.OnClose();
            w.OnCommand(0, 0);
            CREATESTRUCT made;
            w.OnCreate(&made);
            w.OnDestroy();
            w.OnEnable(TRUE);
            w.OnEraseBkgnd(&reached.dc);
            w.OnKeyDown(VK_TAB, 1, 0);
            w.OnKeyUp(VK_TAB, 1, 0);
            w.OnKillFocus(nullptr);
            w.OnLButtonDblClk(0, at);
            w.OnLButtonDown(0, at);
            w.OnLButtonUp(0, at);
            w.OnMButtonDblClk(0, at);
            w.OnMButtonDown(0, at);
            w.OnMButtonUp(0, at);
            w.OnMouseLeave();
            w.OnMouseMove(0, at);
            w.OnMouseWheel(0, 120, at);
            w.OnMove(1, 2);
            w.OnNcDestroy();
            w.OnPaint();
            w.OnRButtonDblClk(0, at);
            w.OnRButtonDown(0, at);
            w.OnRButtonUp(0, at);
            w.OnSetFocus(nullptr);
            w.OnShowWindow(TRUE, 0);
            w.OnSize(0, 60, 40);
            w.OnSysChar(L'a', 1, 0);
            w.OnSysKeyDown(VK_TAB, 1, 0);
            w.OnSysKeyUp(VK_TAB, 1, 0);
            w.OnTimer(1);
            w.Default();
            w.DefWindowProc(WM_APP, 0, 0);
            w.WindowProc(WM_APP, 0, 0);
            w.PostNcDestroy();
            w.PreCreateWindow(made);
            w.PreSubclassWindow();
            EXPECT_EQ(w.GetMessageMap(), Reach::GetThisMessageMap());
            EXPECT_TRUE(IsWindow(w.GetSafeHwnd()));
        });
}

// A window that draws when it is painted, and remembers whom it was told by.
struct Painter : CWnd
{
    HGDIOBJ pen = nullptr;
    int painted = 0;

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message != WM_PAINT) return CWnd::WindowProc(message, wParam, lParam);
        CPaintDC dc(this);
        CPen wide(PS_SOLID, 5, RGB(1, 200, 100));
        dc.SelectObject(&wide);
        dc.MoveTo(3, 3);
        dc.LineTo(20, 15);
        dc.SelectStockObject(BLACK_PEN);
        ++painted;
        return 0;
    }
};

struct Shown
{
    Host host;
    Painter window;

    Shown() { window.Create(PlainClass(), L"", kInHost, CRect(2, 2, 40, 30), &host.window, 1); }
};

std::string DescribeShown(const Shown& constant)
{
    auto& s = const_cast<Shown&>(constant); // asking is not const
    return Describe(s.window);
}

Row Painting(const char* covers, std::function<void(Shown&)> run)
{
    // Where a paint ends early all of it is still to be painted, and what it has drawn is there.
    return Operation<Shown>(covers, Shortage::Throws, std::move(run), DescribeShown,
                            {[](const Shown& s) {
                                 CRect invalid;
                                 const_cast<Painter&>(s.window).GetUpdateRect(&invalid);
                                 return invalid == CRect(0, 0, 38, 28) && s.window.painted == 0;
                             },
                             {}});
}

struct Contexts : Shown
{
    int result = 0;
};

Row Lending(const char* covers, std::function<void(Contexts&)> run)
{
    return Operation<Contexts>(covers, Shortage::Throws, std::move(run), [](const Contexts& c) {
        return std::to_string(c.result) + ' ' + DescribeShown(c);
    });
}

void AddPaintingRows(std::vector<Row>& rows)
{
    rows.push_back(Lending("CClientDC::CClientDC", [](Contexts& c) {
        const CClientDC dc(&c.window);
        c.result = dc.GetWindow() == &c.window;
    }));
    rows.push_back(Lending("CWindowDC::CWindowDC", [](Contexts& c) {
        const CWindowDC dc(&c.window);
        c.result = dc.GetSafeHdc() != nullptr;
    }));
    rows.push_back(Lending("CWnd::GetDC CWnd::ReleaseDC", [](Contexts& c) {
        CDC* const dc = c.window.GetDC();
        c.result = c.window.ReleaseDC(dc);
    }));
    rows.push_back(Lending("CPaintDC::CPaintDC", [](Contexts& c) {
        const CPaintDC dc(&c.window);
        c.result = dc.GetSafeHdc() != nullptr;
    }));
    rows.push_back(Lending("CWnd::BeginPaint CWnd::EndPaint", [](Contexts& c) {
        PAINTSTRUCT paint;
        c.result = c.window.BeginPaint(&paint) != nullptr;
        c.window.EndPaint(&paint);
    }));
    rows.push_back(Painting("CWnd::UpdateWindow", [](Shown& s) { s.window.UpdateWindow(); }));
    rows.push_back(Painting("CWnd::RedrawWindow", [](Shown& s) {
        s.host.window.RedrawWindow(nullptr, nullptr,
                                   RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }));
    struct Lent : Contexts
    {
        CClientDC client{&window};
        CWindowDC whole{&window};
        CPaintDC painted{&window};
    };
    rows.push_back(WithoutMemory<Lent>(
        "CClientDC::GetRuntimeClass CWindowDC::GetRuntimeClass CPaintDC::GetRuntimeClass"
        " CWnd::ValidateRect CWnd::GetUpdateRect",
        [](Lent& l) {
            EXPECT_EQ(l.client.GetRuntimeClass(), RUNTIME_CLASS(CClientDC));
            EXPECT_EQ(l.whole.GetRuntimeClass(), RUNTIME_CLASS(CWindowDC));
            EXPECT_EQ(l.painted.GetRuntimeClass(), RUNTIME_CLASS(CPaintDC));
            CRect box;
            l.window.GetUpdateRect(&box);
            l.window.ValidateRect(nullptr);
            EXPECT_FALSE(l.window.GetUpdateRect(&box));
        }));
    rows.push_back(
        WithoutMemory<Pair>("CWnd::Invalidate CWnd::InvalidateRect CWnd::SetRedraw", [](Pair& p) {
            p.child.Invalidate();
            const CRect box(1, 2, 3, 4);
            p.child.InvalidateRect(&box);
            p.child.SetRedraw(FALSE);
        }));
}

// Handles a message by another one, for which memory may be short, and then as is usual.
struct Nesting : CWnd
{
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_APP) return static_cast<LRESULT>(std::wstring(100, L'x').size());
        if (message != WM_SETFONT) return CWnd::WindowProc(message, wParam, lParam);
        try {
            SendMessage(WM_APP);
        } catch (const std::bad_alloc&) {
            isShort = true;
        }
        return Default();
    }

    bool isShort = false;
};

struct Lettered
{
    Nesting window;
    CFont font;

    Lettered()
    {
        window.CreateEx(0, PlainClass(), L"", WS_OVERLAPPED, 0, 0, 60, 40, nullptr, 0);
        font.CreatePointFont(100, L"");
    }
};

// A window whose handle has no object of the host's.
struct Nested
{
    CWnd host;
    HWND bare = nullptr;
    LRESULT result = 0;

    Nested()
    {
        host.CreateEx(0, PlainClass(), L"host", WS_OVERLAPPED, 0, 0, 60, 40, nullptr, 0);
        bare = MakeBare(host, 8);
    }
};

std::string DescribeNested(const Nested& n)
{
    return std::to_string(n.result) + ' '
           + std::to_string(::SendMessage(n.bare, WM_GETTEXTLENGTH, 0, 0));
}

// The list of a message map is made for the first message: all of it, or none.
struct Listed : CWnd
{
    afx_msg void OnMove(int, int) {}
    afx_msg void OnTimer(UINT_PTR) {}
    static const AFX_MSGMAP_ENTRY* Entries() { return GetThisMessageMap()->lpEntries; }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Listed, CWnd)
ON_WM_MOVE()
ON_WM_TIMER()
END_MESSAGE_MAP()

int CountOfEntries()
{
    int count = 0;
    for (const AFX_MSGMAP_ENTRY* entry = Listed::Entries(); entry->nMessage != 0; ++entry)
        ++count;
    return count;
}

void CheckListing()
{
    const Pair pair;
    Listed window;
    window.Attach(pair.bare);
    for (long k = 1;; ++k) {
        reference::AllocationRound round(k, reference::Failing::One);
        try {
            round.Run([&] { window.SendMessage(WM_APP); });
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(CountOfEntries(), 0) << "allocation " << k;
        }
        if (!round.HasFailed()) break;
    }
    EXPECT_EQ(CountOfEntries(), 2);
    window.Detach();
}

} // namespace

std::vector<Row> MessageRows()
{
    std::vector<Row> rows;
    rows.push_back(Handlers());
    rows.push_back({"CWnd::WindowProc", CheckListing});
    AddPaintingRows(rows);
    rows.push_back(Operation<Nested>(
        "SendMessage CWnd::SendMessage", Shortage::Throws,
        [](Nested& n) {
            n.result = ::SendMessage(n.bare, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(kName));
        },
        DescribeNested));
    rows.push_back(Operation<Lettered>(
        "CWnd::Default", Shortage::Reports, [](Lettered& l) { l.window.SetFont(&l.font, FALSE); },
        [](const Lettered& l) {
            return std::string(l.window.GetFont() == &l.font ? "font" : "none")
                   + (l.window.isShort ? " short" : "");
        },
        {[](const Lettered& l) { return l.window.GetFont() == &l.font; },
         [](Lettered& l) { l.window.isShort = false; }}));
    return rows;
}

} // namespace sweep
