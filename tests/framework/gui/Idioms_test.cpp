// SPDX-License-Identifier: MIT
//
// The idioms of hosts written in the window framework's words, as such hosts write them.
#include "framework/gui/gui.h"

#include "framework/core/MessageBox.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr UINT kLabel = 10;
constexpr UINT kPicture = 11;
constexpr UINT kReset = 100;
constexpr UINT kFirstRate = 200;
constexpr UINT kLastRate = 203;
constexpr UINT WM_SENSOR = WM_APP + 1;
constexpr UINT WM_STATUS = WM_APP + 2;

void Dispatch()
{
    int count = 0;
    framework::Application events(count, nullptr, framework::Display::Memory);
    events.DispatchPending();
}

class MainFrame : public CFrameWnd
{
    DECLARE_DYNCREATE(MainFrame)

public:
    MainFrame() = default;
    ~MainFrame() override
    {
        if (m_deleted) ++*m_deleted;
    }

    int* m_deleted = nullptr;
    CStatic m_label;
    CStatic m_picture;
    CSize m_size;
    std::vector<std::string> m_done;

    std::vector<std::string> Take() { return std::exchange(m_done, {}); }

protected:
    BOOL PreCreateWindow(CREATESTRUCT& cs) override
    {
        if (!CFrameWnd::PreCreateWindow(cs)) return FALSE;
        cs.style &= ~WS_MAXIMIZEBOX;
        cs.dwExStyle |= WS_EX_CLIENTEDGE;
        cs.cx = 204;
        cs.cy = 104;
        return TRUE;
    }
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override
    {
        if (LOWORD(wParam) == 999) {
            m_done.push_back("own command");
            return TRUE;
        }
        return CFrameWnd::OnCommand(wParam, lParam);
    }

    afx_msg int OnCreate(LPCREATESTRUCT created)
    {
        if (CFrameWnd::OnCreate(created) == -1) return -1;
        m_label.Create(L"ready", WS_CHILD | WS_VISIBLE | SS_NOTIFY, CRect(0, 0, 50, 20), this,
                       kLabel);
        m_picture.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 30, 50, 50), this, kPicture);
        return 0;
    }
    afx_msg void OnSize(UINT type, int cx, int cy)
    {
        CFrameWnd::OnSize(type, cx, cy);
        m_size = CSize(cx, cy);
    }
    afx_msg void OnDestroy()
    {
        CFrameWnd::OnDestroy();
        m_done.emplace_back("destroyed");
    }
    afx_msg void OnReset() { m_done.emplace_back("reset"); }
    afx_msg void OnLabel() { m_done.emplace_back("label"); }
    afx_msg void OnRate(UINT id) { m_done.push_back("rate " + std::to_string(id)); }
    afx_msg LRESULT OnSensor(WPARAM wParam, LPARAM lParam)
    {
        m_done.push_back("sensor " + std::to_string(wParam));
        return static_cast<LRESULT>(wParam) + lParam;
    }
    afx_msg LRESULT OnStatus(WPARAM, LPARAM) { return 7; }

    DECLARE_MESSAGE_MAP()
};

IMPLEMENT_DYNCREATE(MainFrame, CFrameWnd)

BEGIN_MESSAGE_MAP(MainFrame, CFrameWnd)
ON_WM_CREATE()
ON_WM_SIZE()
ON_WM_DESTROY()
ON_COMMAND(kReset, &MainFrame::OnReset)
ON_COMMAND_RANGE(kFirstRate, kLastRate, &MainFrame::OnRate)
ON_STN_CLICKED(kLabel, OnLabel)
ON_MESSAGE(WM_SENSOR, &MainFrame::OnSensor)
ON_MESSAGE(WM_STATUS, OnStatus)
END_MESSAGE_MAP()

using Done = std::vector<std::string>;

// A frame of a program: made with new, it deletes itself.
class FrameIdioms : public testing::Test
{
protected:
    FrameIdioms()
    {
        m_frame->m_deleted = &m_deleted;
        EXPECT_TRUE(
            m_frame->Create(nullptr, L"Survey pole", WS_OVERLAPPEDWINDOW, CRect(20, 30, 300, 200)));
        m_frame->ShowWindow(SW_SHOW);
        m_frame->UpdateWindow();
    }
    ~FrameIdioms() override
    {
        if (!m_deleted) m_frame->DestroyWindow();
        EXPECT_EQ(m_deleted, 1);
    }

    int m_deleted = 0;
    MainFrame* m_frame = new MainFrame;
};

TEST_F(FrameIdioms, PreCreateWindowChangesHowItIsCreated)
{
    EXPECT_EQ(m_frame->m_size, CSize(200, 100)) << "204 x 104 with the edge";
    EXPECT_FALSE(m_frame->GetStyle() & WS_MAXIMIZEBOX);
    EXPECT_TRUE(m_frame->GetExStyle() & WS_EX_CLIENTEDGE);
}

TEST_F(FrameIdioms, PreCreateWindowMayRefuse)
{
    struct Refusing : CWnd
    {
        BOOL PreCreateWindow(CREATESTRUCT&) override { return FALSE; }
        void PostNcDestroy() override { ++ended; }
        int ended = 0;
    } window;
    EXPECT_FALSE(window.Create(L"STATIC", L"", WS_CHILD, CRect(0, 0, 9, 9), m_frame, 1));
    EXPECT_EQ(window.ended, 1);
}

TEST_F(FrameIdioms, FramesChooseTheirPlaceAndAreMadeFromTheirRuntimeClass)
{
    auto* const frame = static_cast<CFrameWnd*>(RUNTIME_CLASS(CFrameWnd)->CreateObject());
    ASSERT_TRUE(frame->Create(nullptr, L""));
    CRect place;
    frame->GetWindowRect(&place);
    EXPECT_EQ(place, CRect(CPoint(40, 40), CSize(640, 480)));
    EXPECT_TRUE(frame->DestroyWindow()) << "and deletes itself";
}

TEST_F(FrameIdioms, APaneFillsTheFrame)
{
    CStatic pane;
    pane.Create(L"", WS_CHILD, CRect(0, 0, 0, 0), m_frame, AFX_IDW_PANE_FIRST);
    m_frame->RecalcLayout();
    CRect rect;
    pane.GetClientRect(&rect);
    EXPECT_EQ(rect, CRect(0, 0, 200, 100));
    m_frame->MoveWindow(20, 30, 104, 54);
    pane.GetClientRect(&rect);
    EXPECT_EQ(rect, CRect(0, 0, 100, 50));
}

TEST_F(FrameIdioms, CommandsFindTheirMembers)
{
    EXPECT_EQ(m_frame->SendMessage(WM_COMMAND, MAKEWPARAM(kReset, 0), 0), 1);
    EXPECT_EQ(m_frame->SendMessage(WM_COMMAND, kLastRate), 1);
    EXPECT_EQ(m_frame->SendMessage(WM_COMMAND, kLastRate + 1), 0);
    EXPECT_EQ(m_frame->SendMessage(WM_COMMAND, MAKEWPARAM(kReset, 1), 0), 1) << "accelerator";
    const auto control = reinterpret_cast<LPARAM>(m_frame->m_label.GetSafeHwnd());
    EXPECT_EQ(m_frame->SendMessage(WM_COMMAND, MAKEWPARAM(kReset, 5), control), 0)
        << "a notification of a control with that id";
    EXPECT_EQ(::SendMessage(m_frame->GetSafeHwnd(), WM_COMMAND, 999, 0), 1);
    EXPECT_EQ(m_frame->Take(), (Done{"reset", "rate 203", "reset", "own command"}));
}

TEST_F(FrameIdioms, ALabelThatNotifiesTellsOfClicks)
{
    m_frame->m_label.SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(1, 1));
    m_frame->m_picture.SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(1, 1));
    EXPECT_EQ(m_frame->Take(), Done{"label"});
}

TEST_F(FrameIdioms, SentMessagesAreAnsweredAtOncePostedOnesInOrder)
{
    EXPECT_EQ(m_frame->SendMessage(WM_SENSOR, 4, 3), 7);
    EXPECT_EQ(m_frame->SendMessage(WM_STATUS), 7);
    m_frame->Take();
    EXPECT_TRUE(m_frame->PostMessage(WM_SENSOR, 1));
    EXPECT_TRUE(::PostMessage(m_frame->GetSafeHwnd(), WM_SENSOR, 2, 0));
    EXPECT_EQ(m_frame->Take(), Done{});
    Dispatch();
    EXPECT_EQ(m_frame->Take(), (Done{"sensor 1", "sensor 2"}));
}

TEST_F(FrameIdioms, AnotherThreadPostsMessages)
{
    HWND window = m_frame->GetSafeHwnd();
    std::thread sensor([window] {
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(::PostMessage(window, WM_SENSOR, static_cast<WPARAM>(i), 0));
    });
    sensor.join();
    Dispatch();
    EXPECT_EQ(m_frame->Take(), (Done{"sensor 0", "sensor 1", "sensor 2"}));
}

TEST_F(FrameIdioms, APostedMessageEndsWithItsWindow)
{
    HWND window = m_frame->GetSafeHwnd();
    EXPECT_TRUE(::IsWindow(window));
    m_frame->PostMessage(WM_SENSOR, 1);
    m_frame->SendMessage(WM_CLOSE);
    EXPECT_EQ(m_deleted, 1);
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_FALSE(::PostMessage(window, WM_SENSOR, 0, 0));
    EXPECT_EQ(::SendMessage(window, WM_SENSOR, 0, 0), 0);
    Dispatch();
}

TEST_F(FrameIdioms, ItemsHaveTexts)
{
    m_frame->SetDlgItemText(kLabel, L"12.5 degrees");
    CString text;
    EXPECT_EQ(m_frame->GetDlgItemText(kLabel, text), 12);
    EXPECT_EQ(text, L"12.5 degrees");
    wchar_t buffer[5] = L"????";
    EXPECT_EQ(m_frame->GetDlgItemText(kLabel, buffer, 5), 4);
    EXPECT_EQ(CString(buffer), L"12.5");
    EXPECT_EQ(m_frame->GetDlgItemText(4711, buffer, 0), 0);
    EXPECT_EQ(CString(buffer), L"12.5") << "a buffer without room is left alone";
    EXPECT_EQ(m_frame->GetDlgItemText(4711, buffer, 5), 0);
    EXPECT_EQ(CString(buffer), L"");
    EXPECT_EQ(m_frame->GetDlgItemText(4711, text), 0);
    EXPECT_EQ(text, L"");
}

TEST_F(FrameIdioms, PointsMoveBetweenWindowAndScreen)
{
    CPoint point(1, 2);
    m_frame->m_picture.ClientToScreen(&point);
    EXPECT_EQ(point, CPoint(20 + 2 + 1, 30 + 2 + 30 + 2)) << "frame, its edge, control, point";
    m_frame->ScreenToClient(&point);
    EXPECT_EQ(point, CPoint(1, 32));
    CRect rect;
    m_frame->m_picture.GetWindowRect(&rect);
    m_frame->ScreenToClient(&rect);
    EXPECT_EQ(rect, CRect(0, 30, 50, 50));
    m_frame->ClientToScreen(&rect);
    EXPECT_EQ(rect, CRect(22, 62, 72, 82));
}

TEST_F(FrameIdioms, WhatIsNotThereMovesNowhere)
{
    const CWnd none;
    CPoint point(1, 2);
    none.ClientToScreen(&point);
    none.ScreenToClient(&point);
    EXPECT_EQ(point, CPoint(1, 2)) << "without a window";
    CRect rect(1, 2, 3, 4);
    none.ClientToScreen(&rect);
    none.ScreenToClient(&rect);
    EXPECT_EQ(rect, CRect(1, 2, 3, 4)) << "without a window";
    m_frame->ClientToScreen(static_cast<POINT*>(nullptr));
    m_frame->ScreenToClient(static_cast<POINT*>(nullptr));
    m_frame->ClientToScreen(static_cast<RECT*>(nullptr));
    m_frame->ScreenToClient(static_cast<RECT*>(nullptr));
}

TEST_F(FrameIdioms, AControlMovesIntoAnotherParent)
{
    auto* const other = new CFrameWnd;
    ASSERT_TRUE(other->Create(nullptr, L"", WS_OVERLAPPEDWINDOW, CRect(0, 0, 90, 90)));
    other->ShowWindow(SW_SHOW);
    CStatic& label = m_frame->m_label;
    EXPECT_EQ(label.SetParent(other), m_frame);
    EXPECT_EQ(label.GetParent(), other);
    EXPECT_EQ(m_frame->GetDlgItem(kLabel), nullptr);
    EXPECT_EQ(other->GetDlgItem(kLabel), &label);
    EXPECT_TRUE(label.IsWindowVisible());
    EXPECT_EQ(other->SetParent(&label), nullptr) << "inside itself";
    other->DestroyWindow();
    EXPECT_EQ(label.GetSafeHwnd(), nullptr);
}

TEST_F(FrameIdioms, OwnersAreNotified)
{
    EXPECT_EQ(m_frame->m_label.GetOwner(), m_frame);
    EXPECT_EQ(m_frame->GetOwner(), nullptr);
    CWnd tool;
    ASSERT_TRUE(tool.CreateEx(0, AfxRegisterWndClass(0), L"", WS_POPUP, 0, 0, 20, 20,
                              m_frame->GetSafeHwnd(), nullptr));
    EXPECT_EQ(tool.GetOwner(), m_frame);
    EXPECT_EQ(tool.GetParent(), m_frame);
    m_frame->m_label.SetOwner(&tool);
    EXPECT_EQ(m_frame->m_label.GetOwner(), &tool);
    tool.DestroyWindow();
    EXPECT_EQ(m_frame->m_label.GetOwner(), m_frame);
}

TEST_F(FrameIdioms, OwnedWindowsEndWithTheirOwner)
{
    CWnd tool;
    CWnd ofTool;
    CWnd other;
    const auto create = [](CWnd& window, CWnd& owner) {
        return window.CreateEx(0, AfxRegisterWndClass(0), L"", WS_OVERLAPPED, 0, 0, 20, 20,
                               owner.GetSafeHwnd(), nullptr);
    };
    ASSERT_TRUE(create(tool, *m_frame) && create(ofTool, tool) && create(other, *m_frame));
    EXPECT_EQ(tool.GetParent(), nullptr) << "not a popup";
    tool.SetOwner(&other);
    EXPECT_EQ(tool.GetOwner(), &other);
    tool.SetOwner(nullptr);
    EXPECT_EQ(tool.GetOwner(), m_frame) << "as it was created";
    other.DestroyWindow();
    EXPECT_NE(tool.GetSafeHwnd(), nullptr);
    m_frame->DestroyWindow();
    EXPECT_EQ(tool.GetSafeHwnd(), nullptr);
    EXPECT_EQ(ofTool.GetSafeHwnd(), nullptr);
}

TEST_F(FrameIdioms, WindowsAreEnabledAndDisabled)
{
    CStatic& label = m_frame->m_label;
    EXPECT_TRUE(label.IsWindowEnabled());
    EXPECT_FALSE(label.EnableWindow(FALSE)) << "was not disabled";
    EXPECT_FALSE(label.IsWindowEnabled());
    EXPECT_TRUE(label.GetStyle() & WS_DISABLED);
    EXPECT_TRUE(label.EnableWindow(TRUE));
    EXPECT_FALSE(label.EnableWindow());
}

TEST_F(FrameIdioms, OnlyTheWindowWithTheMouseLosesItDisabled)
{
    m_frame->SetCapture();
    m_frame->m_label.EnableWindow(FALSE);
    EXPECT_EQ(CWnd::GetCapture(), m_frame) << "another was disabled";
    m_frame->EnableWindow(FALSE);
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
    m_frame->SetCapture();
    m_frame->EnableWindow(TRUE);
    EXPECT_EQ(CWnd::GetCapture(), m_frame) << "it was enabled";
    ReleaseCapture();
}

TEST_F(FrameIdioms, MessageBoxesHaveTitlesAndAnswers)
{
    std::vector<std::pair<CString, CString>> shown;
    const auto previous = framework::SetMessageBoxHandler(
        [&](const wchar_t* text, const wchar_t* title, unsigned style) {
            shown.emplace_back(text, title);
            return style == (MB_YESNO | MB_ICONQUESTION) ? IDYES : IDOK;
        });
    framework::SetModulePath(L"/opt/pole/Survey\\Pole");
    EXPECT_EQ(m_frame->MessageBox(L"Reset?", L"Pole", MB_YESNO | MB_ICONQUESTION), IDYES);
    EXPECT_EQ(AfxMessageBox(L"No sensor", MB_OK | MB_ICONSTOP), IDOK);
    framework::SetModulePath(L"");
    framework::SetMessageBoxHandler(previous);
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[0].second, L"Pole");
    EXPECT_EQ(shown[1].first, L"No sensor");
    EXPECT_EQ(shown[1].second, L"Survey\\Pole") << "a character of names here";
}

class Ground : public CView
{
    DECLARE_DYNCREATE(Ground)

public:
    int m_updates = 0;

protected:
    void OnDraw(CDC*) override {}
    void OnUpdate(CView* sender, LPARAM hint, CObject* object) override
    {
        ++m_updates;
        CView::OnUpdate(sender, hint, object);
    }
};

IMPLEMENT_DYNCREATE(Ground, CView)

TEST_F(FrameIdioms, AViewIsMadeFromItsClassAndUpdatedFirst)
{
    CView* const made = DYNAMIC_DOWNCAST(CView, RUNTIME_CLASS(Ground)->CreateObject());
    ASSERT_NE(made, nullptr);
    ASSERT_TRUE(made->Create(nullptr, nullptr, AFX_WS_DEFAULT_VIEW, CRect(0, 0, 20, 20), m_frame,
                             AFX_IDW_PANE_FIRST));
    made->UpdateWindow();
    made->OnInitialUpdate();
    EXPECT_EQ(STATIC_DOWNCAST(Ground, made)->m_updates, 1);
    CRect invalid;
    EXPECT_TRUE(made->GetUpdateRect(&invalid));

    CWnd* const pane = m_frame->GetDlgItem(AFX_IDW_PANE_FIRST);
    EXPECT_EQ(DYNAMIC_DOWNCAST(Ground, pane), made);
    EXPECT_EQ(DYNAMIC_DOWNCAST(CFrameWnd, pane), nullptr);
    EXPECT_EQ(DYNAMIC_DOWNCAST(CFrameWnd, static_cast<CWnd*>(nullptr)), nullptr);
}

} // namespace
