// SPDX-License-Identifier: MIT
//
// Windows: made, taken over, moved, asked, and their objects.
#include "tests/memory/Drawn.h"
#include "tests/memory/Rows.h"

#include <memory>
#include <new>

namespace sweep {

namespace {

std::string DescribePair(const Pair& p)
{
    return Describe(p);
}

Row OnPair(const char* covers, Shortage shortage, std::function<void(Pair&)> run,
           AfterFailure<Pair> after = {})
{
    return Operation<Pair>(covers, shortage, std::move(run), DescribePair, std::move(after));
}

// Classes stay until the program ends: each name is registered once, whatever failed before.
void CheckClasses()
{
    int number = 0;
    const long plain = reference::ForEveryFailingAllocation([&](reference::AllocationRound& round) {
        CString name;
        name.Format(L"a class of the allocation sweep, number %d", ++number);
        const WNDCLASS made{CS_DBLCLKS, nullptr, name.GetString()};
        BOOL isRegistered = FALSE;
        try {
            isRegistered = round.Run([&] { return AfxRegisterClass(&made); });
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(round.HasFailed());
        }
        EXPECT_EQ(AfxRegisterClass(&made), !isRegistered) << "with memory again";
    });
    EXPECT_GT(plain, 0);
    UINT style = 0x10000;
    const long unnamed =
        reference::ForEveryFailingAllocation([&](reference::AllocationRound& round) {
            style += 0x100;
            LPCTSTR name = nullptr;
            try {
                name = round.Run([&] { return AfxRegisterWndClass(style); });
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(round.HasFailed());
            }
            LPCTSTR const again = AfxRegisterWndClass(style);
            EXPECT_TRUE(!name || name == again);
            EXPECT_NE(again, AfxRegisterWndClass(style + 1));
        });
    EXPECT_GT(unnamed, 0);
}

// What is still to be made, in a host's window.
struct Unmade
{
    LPCTSTR plain = PlainClass();
    CWnd host;
    CWnd window;
    CStatic label;
    HWND made = nullptr;
    int result = 0;

    Unmade() { host.CreateEx(0, PlainClass(), L"host", WS_OVERLAPPED, 0, 0, 60, 40, nullptr, 0); }
};

std::string DescribeUnmade(const Unmade& constant)
{
    auto& u = const_cast<Unmade&>(constant); // asking is not const
    std::string children;
    for (const int id : {1, 2, 3, static_cast<int>(AFX_IDW_PANE_FIRST)})
        children += u.host.GetDlgItem(id) ? 'y' : 'n';
    return Describe(u.window) + Describe(u.label) + children
           + (IsWindow(u.made) ? "made " : "none ") + std::to_string(u.result);
}

Row Creating(const char* covers, std::function<void(Unmade&)> run)
{
    return Operation<Unmade>(covers, Shortage::Reports, std::move(run), DescribeUnmade);
}

struct Drawer : CView
{
    ~Drawer() override { ++ended; }
    int& ended;
    explicit Drawer(int& count) : ended(count) {}
    void OnDraw(CDC* dc) override { dc->FillSolidRect(0, 0, 9, 9, RGB(5, 5, 5)); }
    using CView::OnPaint;
    using CView::OnPrepareDC;
    using CView::OnUpdate;
    using CView::PostNcDestroy;
    using CView::PreCreateWindow;
};

struct Frame : CFrameWnd
{
    ~Frame() override { ++ended; }
    int& ended;
    explicit Frame(int& count) : ended(count) {}
    using CFrameWnd::OnSize;
    using CFrameWnd::PostNcDestroy;
    using CFrameWnd::PreCreateWindow;
};

// Frames and views that were made with new: they end with their window, or where there is none.
template <class Made>
struct OnItsOwn
{
    CWnd host;
    int ended = 0;
    Made* made = nullptr;

    OnItsOwn() { host.CreateEx(0, PlainClass(), L"host", WS_OVERLAPPED, 0, 0, 60, 40, nullptr, 0); }
    OnItsOwn(const OnItsOwn&) = delete;
    OnItsOwn& operator=(const OnItsOwn&) = delete;
    ~OnItsOwn()
    {
        if (made) made->DestroyWindow();
    }
};

template <class Made>
Row Owning(const char* covers, std::function<BOOL(Made&, CWnd&)> create)
{
    using State = OnItsOwn<Made>;
    return Operation<State>(
        covers, Shortage::Throws,
        [create](State& s) {
            if (s.made) return;
            auto* const made = new Made(s.ended);
            s.made = create(*made, s.host) ? made : nullptr;
        },
        [](const State& s) {
            return s.made ? std::string("made") : "none, " + std::to_string(s.ended) + " ended";
        },
        {[](const State& s) { return !s.made && s.ended == 1; }, {}});
}

void AddCreationRows(std::vector<Row>& rows)
{
    rows.push_back({"AfxRegisterClass AfxRegisterWndClass", CheckClasses});
    rows.push_back(Creating("CWnd::CreateEx", [](Unmade& u) {
        u.result =
            u.window.CreateEx(0, u.plain, kName, WS_OVERLAPPED, CRect(1, 2, 30, 20), nullptr, 0);
    }));
    rows.push_back(Creating("CWnd::Create", [](Unmade& u) {
        u.result = u.window.Create(u.plain, kName, kHidden, CRect(1, 2, 30, 20), &u.host, 1);
    }));
    rows.push_back(Creating("CreateWindowExW", [](Unmade& u) {
        if (!u.made)
            u.made =
                CreateWindowExW(0, u.plain, kName, kHidden, 0, 0, 9, 9, u.host.GetSafeHwnd(), 2);
    }));
    rows.push_back(Creating("CStatic::Create CStatic::CStatic", [](Unmade& u) {
        u.result = u.label.Create(kName, kHidden, CRect(1, 2, 30, 20), &u.host, 3);
    }));
    rows.push_back(Owning<Frame>("CFrameWnd::Create CFrameWnd::CFrameWnd", [](Frame& f, CWnd&) {
        return f.Create(nullptr, kName, WS_OVERLAPPED, CRect(0, 0, 30, 20));
    }));
    rows.push_back(Owning<Drawer>("CView::PreCreateWindow CView::CView", [](Drawer& v, CWnd& host) {
        return v.Create(nullptr, kName, kHidden, CRect(0, 0, 30, 20), &host, 4);
    }));
    rows.push_back(
        OnPair("CWnd::DestroyWindow", Shortage::Never, [](Pair& p) { p.child.DestroyWindow(); }));
    rows.push_back(OnPair("CWnd::Attach", Shortage::Throws, [](Pair& p) {
        CWnd other;
        if (other.Attach(p.child.GetSafeHwnd())) ++p.result;
        other.Detach();
    }));
    rows.push_back(
        OnPair("CWnd::SubclassWindow CWnd::UnsubclassWindow", Shortage::Throws, [](Pair& p) {
            CWnd other;
            if (other.SubclassWindow(p.child.GetSafeHwnd())) ++p.result;
            other.UnsubclassWindow();
        }));
    rows.push_back(OnPair("CWnd::SubclassDlgItem", Shortage::Throws, [](Pair& p) {
        CWnd other;
        if (other.SubclassDlgItem(8, &p.top)) ++p.result;
        other.UnsubclassWindow();
    }));
}

// Objects, by each way to make them.

struct alignas(128) Aligned : CWnd
{};

struct Ways
{
    std::unique_ptr<CWnd> window;
    std::unique_ptr<CObject> object;
    std::unique_ptr<Aligned> aligned;
};

Row By(const char* covers, Shortage shortage, std::function<void(Ways&)> run)
{
    return Operation<Ways>(covers, shortage, std::move(run), [](const Ways& w) {
        return std::string(w.window || w.object || w.aligned ? "made" : "none");
    });
}

void AddObjectRows(std::vector<Row>& rows)
{
    rows.push_back(By("CWnd::operatornew CWnd::operatordelete CWnd::CWnd", Shortage::Throws,
                      [](Ways& w) { w.window.reset(new CWnd); }));
    rows.push_back(By("CWnd::operatornew", Shortage::Reports,
                      [](Ways& w) { w.window.reset(new (std::nothrow) CWnd); }));
    rows.push_back(
        By("CWnd::operatornew", Shortage::Throws, [](Ways& w) { w.aligned.reset(new Aligned); }));
    rows.push_back(By("CWnd::CreateObject", Shortage::Throws,
                      [](Ways& w) { w.object.reset(CWnd::CreateObject()); }));
    rows.push_back(By("CFrameWnd::CreateObject", Shortage::Throws,
                      [](Ways& w) { w.object.reset(CFrameWnd::CreateObject()); }));
}

void AddRelationRows(std::vector<Row>& rows)
{
    const auto find = [&](const char* covers, std::function<bool(Pair&)> found) {
        rows.push_back(Operation<Pair>(
            covers, Shortage::Throws, [found](Pair& p) { p.result = found(p); },
            [](const Pair& p) { return std::to_string(p.result); }));
    };
    find("CWnd::FromHandle", [](Pair& p) { return CWnd::FromHandle(p.bare); });
    find("CWnd::GetDlgItem", [](Pair& p) { return p.top.GetDlgItem(8); });
    // The others answer with the object of a window that has none.
    struct Inner : Pair
    {
        CWnd object;
        Inner() { object.CreateEx(0, PlainClass(), L"", kHidden, 0, 0, 5, 5, bare, 1); }
    };
    const auto ask = [&](const char* covers, std::function<bool(Inner&)> found) {
        rows.push_back(Operation<Inner>(
            covers, Shortage::Throws, [found](Inner& p) { p.result = found(p); },
            [](const Inner& p) { return std::to_string(p.result); }));
    };
    ask("CWnd::GetParent", [](Inner& i) { return i.object.GetParent(); });
    ask("CWnd::GetOwner", [](Inner& i) { return i.object.GetOwner(); });
    rows.push_back(Operation<Inner>(
        "CWnd::SetParent", Shortage::Throws,
        [](Inner& i) { i.result = i.object.SetParent(&i.top) != nullptr; },
        [](const Inner& i) {
            const CWnd* const parent = i.object.GetParent();
            const bool isAmong = const_cast<Inner&>(i).top.GetDlgItem(1) != nullptr;
            return std::string(parent == &i.top ? "top " : "bare ") + (isAmong ? "among " : "not ")
                   + std::to_string(i.result);
        }));
    rows.push_back(OnPair("CWnd::SetFocus", Shortage::Never, [](Pair& p) {
        p.child.SetFocus();
        p.result = CWnd::GetFocus() == &p.child;
    }));
    rows.push_back(OnPair("CWnd::SetCapture ReleaseCapture", Shortage::Never, [](Pair& p) {
        p.child.SetCapture();
        p.result = CWnd::GetCapture() == &p.child;
        ReleaseCapture();
    }));
}

void AddTextRows(std::vector<Row>& rows)
{
    rows.push_back(OnPair("CWnd::SetWindowText", Shortage::Throws,
                          [](Pair& p) { p.child.SetWindowText(kName); }));
    rows.push_back(OnPair("CWnd::SetDlgItemText", Shortage::Throws,
                          [](Pair& p) { p.top.SetDlgItemText(7, kName); }));
    struct Named : Pair
    {
        Named() { child.SetWindowText(kName); }
    };
    const auto get = [&](const char* covers, std::function<void(Named&)> run) {
        rows.push_back(Operation<Named>(covers, Shortage::Throws, std::move(run),
                                        [](const Named& n) { return Describe(n); }));
    };
    get("CWnd::GetWindowText", [](Named& n) { n.child.GetWindowText(n.text); });
    get("CWnd::GetDlgItemText", [](Named& n) { n.result = n.top.GetDlgItemText(7, n.text); });
    rows.push_back(WithoutMemory<Named>(
        "CWnd::GetWindowText CWnd::GetDlgItemText CWnd::GetWindowTextLength", [](Named& n) {
            wchar_t buffer[90] = {};
            EXPECT_EQ(n.child.GetWindowText(buffer, 90), n.child.GetWindowTextLength());
            EXPECT_EQ(n.top.GetDlgItemText(7, buffer, 90), n.child.GetWindowTextLength());
        }));
}

void AddPlaceRows(std::vector<Row>& rows)
{
    rows.push_back(OnPair("CWnd::SetWindowPos", Shortage::Reports, [](Pair& p) {
        p.result = p.child.SetWindowPos(nullptr, 8, 9, 40, 35, SWP_FRAMECHANGED);
    }));
    rows.push_back(OnPair("CWnd::MoveWindow", Shortage::Reports,
                          [](Pair& p) { p.child.MoveWindow(8, 9, 40, 35); }));
    rows.push_back(OnPair("CWnd::ShowWindow", Shortage::Never,
                          [](Pair& p) { p.result = p.child.ShowWindow(SW_SHOW) + 1; }));
    rows.push_back(OnPair("CWnd::SetTimer CWnd::KillTimer", Shortage::Throws, [](Pair& p) {
        p.result = static_cast<int>(p.child.SetTimer(3, 100000, nullptr));
        p.child.KillTimer(3);
    }));
    rows.push_back(OnPair("CWnd::PostMessage PostMessage", Shortage::Throws,
                          [](Pair& p) { p.result = p.child.PostMessage(WM_APP); }));
    struct Framed : Pair
    {
        int ended = 0;
        Frame frame{ended};
        Drawer pane{ended};
        Framed()
        {
            frame.Create(nullptr, L"", WS_OVERLAPPED, CRect(0, 0, 30, 20));
            pane.Create(nullptr, L"", kHidden, CRect(0, 0, 3, 2), &frame, AFX_IDW_PANE_FIRST);
        }
    };
    const auto lay = [&](const char* covers, std::function<void(Framed&)> run) {
        rows.push_back(
            Operation<Framed>(covers, Shortage::Reports, std::move(run), [](const Framed& f) {
                return Describe(const_cast<Drawer&>(f.pane));
            }));
    };
    lay("CFrameWnd::RecalcLayout", [](Framed& f) { f.frame.RecalcLayout(); });
    lay("CFrameWnd::OnSize", [](Framed& f) { f.frame.OnSize(0, 30, 20); });
    rows.push_back(WithoutMemory<Framed>(
        "CFrameWnd::PreCreateWindow CFrameWnd::PostNcDestroy CView::PostNcDestroy"
        " CView::OnInitialUpdate CView::OnUpdate CView::OnPrepareDC CFrameWnd::GetRuntimeClass"
        " CView::GetRuntimeClass",
        [](Framed& f) {
            CREATESTRUCT made;
            made.lpszClass = L"STATIC";
            EXPECT_TRUE(f.frame.PreCreateWindow(made));
            f.frame.PostNcDestroy();
            f.pane.PostNcDestroy();
            f.pane.OnInitialUpdate();
            f.pane.OnUpdate(nullptr, 0, nullptr);
            f.pane.OnPrepareDC(nullptr);
            EXPECT_TRUE(f.frame.IsKindOf(RUNTIME_CLASS(CFrameWnd)));
            EXPECT_TRUE(f.pane.IsKindOf(RUNTIME_CLASS(CView)));
            EXPECT_EQ(f.ended, 0);
        }));
}

void AddQuietRows(std::vector<Row>& rows)
{
    rows.push_back(WithoutMemory<Pair>(
        "CWnd::Detach CWnd::FromHandlePermanent CWnd::GetStyle CWnd::GetExStyle CWnd::ModifyStyle"
        " CWnd::ModifyStyleEx CWnd::GetDlgCtrlID CWnd::SetDlgCtrlID CWnd::SetOwner"
        " CWnd::ClientToScreen CWnd::ScreenToClient CWnd::GetClientRect CWnd::GetWindowRect"
        " CWnd::IsWindowVisible CWnd::EnableWindow CWnd::IsWindowEnabled CWnd::GetFocus"
        " CWnd::GetCapture CWnd::SetFont CWnd::GetRuntimeClass IsWindow TrackMouseEvent",
        [](Pair& p) {
            EXPECT_EQ(CWnd::FromHandlePermanent(p.child.GetSafeHwnd()), &p.child);
            p.child.ModifyStyle(0, p.child.GetStyle());
            p.child.ModifyStyleEx(0, p.child.GetExStyle());
            p.child.SetDlgCtrlID(p.child.GetDlgCtrlID());
            p.child.SetOwner(&p.top);
            CRect box;
            p.child.GetClientRect(&box);
            p.child.ClientToScreen(&box);
            p.child.ScreenToClient(&box);
            CPoint point(1, 2);
            p.child.ClientToScreen(&point);
            p.child.ScreenToClient(&point);
            p.child.GetWindowRect(&box);
            EXPECT_FALSE(p.child.IsWindowVisible());
            EXPECT_TRUE(IsWindow(p.child.GetSafeHwnd()));
            p.child.EnableWindow(FALSE);
            EXPECT_FALSE(p.child.IsWindowEnabled());
            p.child.EnableWindow(TRUE);
            CWnd::GetFocus();
            CWnd::GetCapture();
            p.child.SetFont(nullptr);
            EXPECT_TRUE(p.child.IsKindOf(RUNTIME_CLASS(CWnd)));
            TRACKMOUSEEVENT leave{sizeof leave, TME_LEAVE, p.child.GetSafeHwnd(), 0};
            EXPECT_TRUE(TrackMouseEvent(&leave));
            CWnd().Detach();
        }));
    struct Lettered : Pair
    {
        CFont font;
        Lettered()
        {
            CFont made;
            made.CreatePointFont(100, L"");
            child.SetFont(&made);
        }
    };
    rows.push_back(Operation<Lettered>(
        "CWnd::GetFont", Shortage::Throws,
        [](Lettered& l) { l.result = l.child.GetFont() != nullptr; },
        [](const Lettered& l) { return std::to_string(l.result); }));
}

} // namespace

std::vector<Row> WindowRows()
{
    std::vector<Row> rows;
    AddCreationRows(rows);
    AddObjectRows(rows);
    AddRelationRows(rows);
    AddTextRows(rows);
    AddPlaceRows(rows);
    AddQuietRows(rows);
    return rows;
}

} // namespace sweep
