// SPDX-License-Identifier: MIT
//
// Every entry of a message map, in one class: its message reaches its member, with its parameters.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr UINT kSave = 30;
constexpr UINT kFirstRate = 40;
constexpr UINT kLastRate = 42;
constexpr UINT kControl = 50;
constexpr UINT kLabel = 51;
constexpr UINT kChanged = 9; // a notification of the control
constexpr UINT WM_SENSOR = WM_APP + 1;

class Everything : public CWnd
{
public:
    std::string Take() { return std::exchange(m_called, {}); }

protected:
    afx_msg int OnCreate(LPCREATESTRUCT created)
    {
        Note("OnCreate", created->cx, created->cy);
        return CWnd::OnCreate(created);
    }
    afx_msg void OnDestroy() { Note("OnDestroy"); }
    afx_msg void OnNcDestroy() { Note("OnNcDestroy"); }
    afx_msg void OnClose() { Note("OnClose"); }
    afx_msg void OnPaint() { Note("OnPaint"); }
    afx_msg BOOL OnEraseBkgnd(CDC* dc)
    {
        Note("OnEraseBkgnd", dc != nullptr);
        return TRUE;
    }
    afx_msg void OnShowWindow(BOOL shown, UINT status) { Note("OnShowWindow", shown, status); }
    afx_msg void OnEnable(BOOL enabled) { Note("OnEnable", enabled); }
    afx_msg void OnMove(int x, int y) { Note("OnMove", x, y); }
    afx_msg void OnSize(UINT type, int width, int height) { Note("OnSize", type, width, height); }
    afx_msg void OnTimer(UINT_PTR id) { Note("OnTimer", id); }
    afx_msg void OnSetFocus(CWnd* previous) { Note("OnSetFocus", previous == this); }
    afx_msg void OnKillFocus(CWnd* next) { Note("OnKillFocus", next == this); }
    afx_msg void OnKeyDown(UINT key, UINT count, UINT flags)
    {
        Key("OnKeyDown", key, count, flags);
    }
    afx_msg void OnKeyUp(UINT key, UINT count, UINT flags) { Key("OnKeyUp", key, count, flags); }
    afx_msg void OnChar(UINT key, UINT count, UINT flags) { Key("OnChar", key, count, flags); }
    afx_msg void OnSysKeyDown(UINT k, UINT count, UINT flags)
    {
        Key("OnSysKeyDown", k, count, flags);
    }
    afx_msg void OnSysKeyUp(UINT key, UINT count, UINT flags)
    {
        Key("OnSysKeyUp", key, count, flags);
    }
    afx_msg void OnSysChar(UINT key, UINT count, UINT flags)
    {
        Key("OnSysChar", key, count, flags);
    }
    afx_msg void OnMouseMove(UINT flags, CPoint at) { Mouse("OnMouseMove", flags, at); }
    afx_msg void OnLButtonDown(UINT flags, CPoint at) { Mouse("OnLButtonDown", flags, at); }
    afx_msg void OnLButtonUp(UINT flags, CPoint at) { Mouse("OnLButtonUp", flags, at); }
    afx_msg void OnLButtonDblClk(UINT flags, CPoint at) { Mouse("OnLButtonDblClk", flags, at); }
    afx_msg void OnRButtonDown(UINT flags, CPoint at) { Mouse("OnRButtonDown", flags, at); }
    afx_msg void OnRButtonUp(UINT flags, CPoint at) { Mouse("OnRButtonUp", flags, at); }
    afx_msg void OnRButtonDblClk(UINT flags, CPoint at) { Mouse("OnRButtonDblClk", flags, at); }
    afx_msg void OnMButtonDown(UINT flags, CPoint at) { Mouse("OnMButtonDown", flags, at); }
    afx_msg void OnMButtonUp(UINT flags, CPoint at) { Mouse("OnMButtonUp", flags, at); }
    afx_msg void OnMButtonDblClk(UINT flags, CPoint at) { Mouse("OnMButtonDblClk", flags, at); }
    afx_msg BOOL OnMouseWheel(UINT flags, short delta, CPoint at)
    {
        Note("OnMouseWheel", flags, delta, at.x, at.y);
        return TRUE;
    }
    afx_msg void OnMouseLeave() { Note("OnMouseLeave"); }
    afx_msg void OnCaptureChanged(CWnd* next) { Note("OnCaptureChanged", next == this); }
    afx_msg LRESULT OnSensor(WPARAM wParam, LPARAM lParam)
    {
        Note("OnSensor", wParam, lParam);
        return 0;
    }
    afx_msg void OnNothing() { Note("OnNothing"); }
    afx_msg void OnSave() { Note("OnSave"); }
    afx_msg void OnRate(UINT id) { Note("OnRate", id); }
    afx_msg void OnChanged() { Note("OnChanged"); }
    afx_msg void OnLabelClicked() { Note("OnLabelClicked"); }
    afx_msg void OnLabelTwice() { Note("OnLabelTwice"); }
    afx_msg void OnLabelEnabled() { Note("OnLabelEnabled"); }
    afx_msg void OnLabelDisabled() { Note("OnLabelDisabled"); }

    DECLARE_MESSAGE_MAP()

private:
    template <class... Values>
    void Note(const char* name, Values... values)
    {
        std::ostringstream line;
        line << name;
        ((line << ' ' << values), ...);
        m_called += line.str() + '\n';
    }
    void Key(const char* name, UINT key, UINT count, UINT flags) { Note(name, key, count, flags); }
    void Mouse(const char* name, UINT flags, CPoint at) { Note(name, flags, at.x, at.y); }

    std::string m_called;
};

BEGIN_MESSAGE_MAP(Everything, CWnd)
ON_COMMAND(0, &Everything::OnNothing)
ON_WM_CREATE()
ON_WM_DESTROY()
ON_WM_NCDESTROY()
ON_WM_CLOSE()
ON_WM_PAINT()
ON_WM_ERASEBKGND()
ON_WM_SHOWWINDOW()
ON_WM_ENABLE()
ON_WM_MOVE()
ON_WM_SIZE()
ON_WM_TIMER()
ON_WM_SETFOCUS()
ON_WM_KILLFOCUS()
ON_WM_KEYDOWN()
ON_WM_KEYUP()
ON_WM_CHAR()
ON_WM_SYSKEYDOWN()
ON_WM_SYSKEYUP()
ON_WM_SYSCHAR()
ON_WM_MOUSEMOVE()
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONUP()
ON_WM_LBUTTONDBLCLK()
ON_WM_RBUTTONDOWN()
ON_WM_RBUTTONUP()
ON_WM_RBUTTONDBLCLK()
ON_WM_MBUTTONDOWN()
ON_WM_MBUTTONUP()
ON_WM_MBUTTONDBLCLK()
ON_WM_MOUSEWHEEL()
ON_WM_MOUSELEAVE()
ON_WM_CAPTURECHANGED()
ON_MESSAGE(WM_SENSOR, &Everything::OnSensor)
ON_COMMAND(kSave, OnSave)
ON_COMMAND_RANGE(kFirstRate, kLastRate, &Everything::OnRate)
ON_CONTROL(kChanged, kControl, &Everything::OnChanged)
ON_STN_CLICKED(kLabel, OnLabelClicked)
ON_STN_DBLCLK(kLabel, OnLabelTwice)
ON_STN_ENABLE(kLabel, OnLabelEnabled)
ON_STN_DISABLE(kLabel, OnLabelDisabled)
END_MESSAGE_MAP()

class MessageMapEntries : public testing::Test
{
protected:
    MessageMapEntries()
    {
        EXPECT_TRUE(m_window.CreateEx(0, AfxRegisterWndClass(0), L"", WS_POPUP, 5, 6, 40, 30,
                                      nullptr, nullptr));
    }

    // What is called for a message.
    std::string Called(UINT message, WPARAM wParam = 0, LPARAM lParam = 0)
    {
        m_window.Take();
        m_window.SendMessage(message, wParam, lParam);
        return m_window.Take();
    }
    std::string CalledByControl(UINT id, UINT code)
    {
        return Called(WM_COMMAND, MAKEWPARAM(static_cast<int>(id), static_cast<int>(code)),
                      reinterpret_cast<LPARAM>(m_window.GetSafeHwnd()));
    }

    Everything m_window;
};

TEST_F(MessageMapEntries, TellOfTheLifeOfAWindow)
{
    EXPECT_EQ(m_window.Take(), "OnCreate 40 30\nOnSize 0 40 30\nOnMove 5 6\n");
    EXPECT_EQ(Called(WM_CLOSE), "OnClose\n");
    EXPECT_EQ(Called(WM_PAINT), "OnPaint\n");
    EXPECT_EQ(Called(WM_SHOWWINDOW, TRUE, 3), "OnShowWindow 1 3\n");
    EXPECT_EQ(Called(WM_ENABLE, FALSE), "OnEnable 0\n");
    EXPECT_EQ(Called(WM_MOVE, 0, MAKELPARAM(-7, 8)), "OnMove -7 8\n");
    EXPECT_EQ(Called(WM_SIZE, SIZE_MAXIMIZED, MAKELPARAM(70, 80)), "OnSize 2 70 80\n");
    EXPECT_EQ(Called(WM_TIMER, 4), "OnTimer 4\n");
    CClientDC dc(&m_window);
    EXPECT_EQ(Called(WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc.GetSafeHdc())), "OnEraseBkgnd 1\n");
    m_window.DestroyWindow();
    EXPECT_EQ(m_window.Take(), "OnDestroy\nOnNcDestroy\n");
}

struct Input
{
    UINT message;
    const char* called;
};

TEST_F(MessageMapEntries, TellOfKeys)
{
    const Input cases[] = {
        {WM_KEYDOWN,    "OnKeyDown 65 1 16384\n"   },
        {WM_KEYUP,      "OnKeyUp 65 1 16384\n"     },
        {WM_CHAR,       "OnChar 65 1 16384\n"      },
        {WM_SYSKEYDOWN, "OnSysKeyDown 65 1 16384\n"},
        {WM_SYSKEYUP,   "OnSysKeyUp 65 1 16384\n"  },
        {WM_SYSCHAR,    "OnSysChar 65 1 16384\n"   },
    };
    for (const Input& c : cases)
        EXPECT_EQ(Called(c.message, 65, 0x40000001), c.called);
}

TEST_F(MessageMapEntries, TellOfTheMouse)
{
    const Input cases[] = {
        {WM_MOUSEMOVE,     "OnMouseMove 4 -3 9\n"    },
        {WM_LBUTTONDOWN,   "OnLButtonDown 4 -3 9\n"  },
        {WM_LBUTTONUP,     "OnLButtonUp 4 -3 9\n"    },
        {WM_LBUTTONDBLCLK, "OnLButtonDblClk 4 -3 9\n"},
        {WM_RBUTTONDOWN,   "OnRButtonDown 4 -3 9\n"  },
        {WM_RBUTTONUP,     "OnRButtonUp 4 -3 9\n"    },
        {WM_RBUTTONDBLCLK, "OnRButtonDblClk 4 -3 9\n"},
        {WM_MBUTTONDOWN,   "OnMButtonDown 4 -3 9\n"  },
        {WM_MBUTTONUP,     "OnMButtonUp 4 -3 9\n"    },
        {WM_MBUTTONDBLCLK, "OnMButtonDblClk 4 -3 9\n"},
    };
    for (const Input& c : cases)
        EXPECT_EQ(Called(c.message, MK_SHIFT, MAKELPARAM(-3, 9)), c.called);
    EXPECT_EQ(Called(WM_MOUSEWHEEL, MAKEWPARAM(MK_SHIFT, -120), MAKELPARAM(-3, 9)),
              "OnMouseWheel 4 -120 -3 9\n");
    EXPECT_EQ(Called(WM_MOUSELEAVE), "OnMouseLeave\n");
}

TEST_F(MessageMapEntries, TellOfFocusAndCaptureWithTheOtherWindow)
{
    const auto ours = reinterpret_cast<UINT_PTR>(m_window.GetSafeHwnd());
    EXPECT_EQ(Called(WM_SETFOCUS, ours), "OnSetFocus 1\n");
    EXPECT_EQ(Called(WM_SETFOCUS), "OnSetFocus 0\n");
    EXPECT_EQ(Called(WM_KILLFOCUS, ours), "OnKillFocus 1\n");
    EXPECT_EQ(Called(WM_CAPTURECHANGED, 0, static_cast<LPARAM>(ours)), "OnCaptureChanged 1\n");
}

TEST_F(MessageMapEntries, TellOfCommandsAndOwnMessages)
{
    EXPECT_EQ(Called(WM_SENSOR, 3, -4), "OnSensor 3 -4\n");
    EXPECT_EQ(Called(WM_COMMAND, kSave), "OnSave\n");
    EXPECT_EQ(Called(WM_COMMAND, MAKEWPARAM(kSave, 1)), "OnSave\n") << "accelerator";
    EXPECT_EQ(Called(WM_COMMAND, kFirstRate), "OnRate 40\n");
    EXPECT_EQ(Called(WM_COMMAND, kLastRate), "OnRate 42\n");
    EXPECT_EQ(Called(WM_COMMAND, kLastRate + 1), "");
    EXPECT_EQ(Called(WM_COMMAND, 0), "OnNothing\n") << "and no other command";
}

TEST_F(MessageMapEntries, TellOfTheNotificationsOfControls)
{
    EXPECT_EQ(CalledByControl(kControl, kChanged), "OnChanged\n");
    EXPECT_EQ(CalledByControl(kControl, kChanged + 1), "");
    EXPECT_EQ(CalledByControl(kLabel, STN_CLICKED), "OnLabelClicked\n");
    EXPECT_EQ(CalledByControl(kLabel, STN_DBLCLK), "OnLabelTwice\n");
    EXPECT_EQ(CalledByControl(kLabel, STN_ENABLE), "OnLabelEnabled\n");
    EXPECT_EQ(CalledByControl(kLabel, STN_DISABLE), "OnLabelDisabled\n");
}

// Overrides none of the members that its map names.
class Plain : public CWnd
{
public:
    std::vector<UINT> defaults;

protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        defaults.push_back(message);
        return message == WM_CLOSE ? 0 : CWnd::DefWindowProc(message, wParam, lParam);
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Plain, CWnd)
ON_WM_CREATE()
ON_WM_DESTROY()
ON_WM_NCDESTROY()
ON_WM_CLOSE()
ON_WM_PAINT()
ON_WM_ERASEBKGND()
ON_WM_SHOWWINDOW()
ON_WM_ENABLE()
ON_WM_MOVE()
ON_WM_SIZE()
ON_WM_TIMER()
ON_WM_SETFOCUS()
ON_WM_KILLFOCUS()
ON_WM_KEYDOWN()
ON_WM_KEYUP()
ON_WM_CHAR()
ON_WM_SYSKEYDOWN()
ON_WM_SYSKEYUP()
ON_WM_SYSCHAR()
ON_WM_MOUSEMOVE()
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONUP()
ON_WM_LBUTTONDBLCLK()
ON_WM_RBUTTONDOWN()
ON_WM_RBUTTONUP()
ON_WM_RBUTTONDBLCLK()
ON_WM_MBUTTONDOWN()
ON_WM_MBUTTONUP()
ON_WM_MBUTTONDBLCLK()
ON_WM_MOUSEWHEEL()
ON_WM_MOUSELEAVE()
ON_WM_CAPTURECHANGED()
END_MESSAGE_MAP()

TEST(MessageMapEntriesOfCWnd, AreHandledByDefault)
{
    Plain window;
    ASSERT_TRUE(
        window.CreateEx(0, AfxRegisterWndClass(0), L"", WS_POPUP, 5, 6, 40, 30, nullptr, nullptr));
    for (const UINT message :
         {WM_CLOSE,         WM_PAINT,      WM_ERASEBKGND,    WM_SHOWWINDOW,  WM_ENABLE,
          WM_MOVE,          WM_SIZE,       WM_TIMER,         WM_SETFOCUS,    WM_KILLFOCUS,
          WM_KEYDOWN,       WM_KEYUP,      WM_CHAR,          WM_SYSKEYDOWN,  WM_SYSKEYUP,
          WM_SYSCHAR,       WM_MOUSEMOVE,  WM_LBUTTONDOWN,   WM_LBUTTONUP,   WM_LBUTTONDBLCLK,
          WM_RBUTTONDOWN,   WM_RBUTTONUP,  WM_RBUTTONDBLCLK, WM_MBUTTONDOWN, WM_MBUTTONUP,
          WM_MBUTTONDBLCLK, WM_MOUSELEAVE, WM_CAPTURECHANGED}) {
        window.ValidateRect(nullptr);
        window.defaults.clear();
        window.SendMessage(message);
        EXPECT_EQ(window.defaults, std::vector<UINT>{message}) << std::hex << message;
    }
    window.defaults.clear();
    window.DestroyWindow();
    EXPECT_EQ(window.defaults, (std::vector<UINT>{WM_DESTROY, WM_NCDESTROY}));
}

} // namespace
