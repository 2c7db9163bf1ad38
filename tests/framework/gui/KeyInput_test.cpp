// SPDX-License-Identifier: MIT
//
// Which messages a window gets from keyboard and focus, what reaches the members of a message map,
// and what is left to the host. Every event comes from Qt.
#include "tests/framework/gui/Input.h"

#include <algorithm>
#include <string_view>

namespace framework::test {
namespace {

TEST_F(Input, ThatNoWindowTakesIsTheQtHosts)
{
    struct Host : QWidget
    {
        int presses = 0;
        int keys = 0;
        void mousePressEvent(QMouseEvent*) override { ++presses; }
        void keyPressEvent(QKeyEvent*) override { ++keys; }
    } host;
    CStatic label;
    Listening window;
    ASSERT_TRUE(label.CreateEx(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 50, 50, nullptr, nullptr));
    ASSERT_TRUE(window.CreateTop());
    framework::NativeWidget(label)->setParent(&host);
    framework::NativeWidget(window)->setParent(&host);
    label.ShowWindow(SW_SHOW);
    framework::NativeWidget(window)->show();
    host.show();

    Press(label, {1, 1});
    EXPECT_EQ(host.presses, 1);
    Press(window, {1, 1});
    EXPECT_EQ(host.presses, 1);
    Key(window, QEvent::KeyPress, Qt::Key_Escape);
    EXPECT_EQ(host.keys, 1) << "left open";
    window.answersKeys = true;
    Key(window, QEvent::KeyPress, Qt::Key_Escape);
    EXPECT_EQ(host.keys, 1);
}

TEST_F(Input, OfKeysTellsTheirNumbersAndCharacters)
{
    struct Case
    {
        int key;
        const char* text;
        Qt::KeyboardModifiers modifiers;
        Messages told;
    };
    constexpr LPARAM kBeside = 0x01000001; // once, an extended key
    const Case cases[] = {
        {Qt::Key_A,          "a",        {},                  {{WM_KEYDOWN, 'A', 1}, {WM_CHAR, 'a', 1}}           },
        {Qt::Key_A,          "A",        Qt::ShiftModifier,   {{WM_KEYDOWN, 'A', 1}, {WM_CHAR, 'A', 1}}           },
        {Qt::Key_C,          "\x03",     Qt::ControlModifier, {{WM_KEYDOWN, 'C', 1}, {WM_CHAR, 3, 1}}             },
        {Qt::Key_7,          "7",        {},                  {{WM_KEYDOWN, '7', 1}, {WM_CHAR, '7', 1}}           },
        {Qt::Key_7,          "7",        Qt::KeypadModifier,  {{WM_KEYDOWN, VK_NUMPAD0 + 7, 1}, {WM_CHAR, '7', 1}}},
        {Qt::Key_Plus,       "+",        Qt::KeypadModifier,  {{WM_KEYDOWN, VK_ADD, 1}, {WM_CHAR, '+', 1}}        },
        {Qt::Key_Plus,       "+",        {},                  {{WM_KEYDOWN, VK_OEM_PLUS, 1}, {WM_CHAR, '+', 1}}   },
        {Qt::Key_Space,      " ",        {},                  {{WM_KEYDOWN, VK_SPACE, 1}, {WM_CHAR, ' ', 1}}      },
        {Qt::Key_Return,     "\r",       {},                  {{WM_KEYDOWN, VK_RETURN, 1}, {WM_CHAR, '\r', 1}}    },
        {Qt::Key_Enter,
         "\r",                           Qt::KeypadModifier,
         {{WM_KEYDOWN, VK_RETURN, kBeside}, {WM_CHAR, '\r', kBeside}}                                             },
        {Qt::Key_Escape,     "\x1b",     {},                  {{WM_KEYDOWN, VK_ESCAPE, 1}, {WM_CHAR, 27, 1}}      },
        {Qt::Key_Delete,     "\x7f",     {},                  {{WM_KEYDOWN, VK_DELETE, kBeside}}                  },
        {Qt::Key_Left,       "",         {},                  {{WM_KEYDOWN, VK_LEFT, kBeside}}                    },
        {Qt::Key_PageDown,   "",         {},                  {{WM_KEYDOWN, VK_NEXT, kBeside}}                    },
        {Qt::Key_Home,       "",         Qt::KeypadModifier,  {{WM_KEYDOWN, VK_HOME, 1}}                          },
        {Qt::Key_Slash,
         "/",                            Qt::KeypadModifier,
         {{WM_KEYDOWN, VK_DIVIDE, kBeside}, {WM_CHAR, '/', kBeside}}                                              },
        {Qt::Key_F5,         "",         {},                  {{WM_KEYDOWN, VK_F1 + 4, 1}}                        },
        {Qt::Key_X,
         "x",                            Qt::AltModifier,
         {{WM_SYSKEYDOWN, 'X', 0x20000001}, {WM_SYSCHAR, 'x', 0x20000001}}                                        },
        {Qt::Key_Udiaeresis, "\xc3\xbc", {},                  {{WM_CHAR, 0xFC, 1}}                                },
    };
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    for (const Case& c : cases) {
        Key(window, QEvent::KeyPress, c.key, QString::fromUtf8(c.text), c.modifiers);
        EXPECT_EQ(window.Take(), c.told) << "key " << c.key;
    }
}

// Bit 24 tells the keys beside the number pad from those on it.
TEST_F(Input, OfAKeyThatHasNoNumberIsNotTold)
{
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    Key(window, QEvent::KeyPress, Qt::Key_F24);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_KEYDOWN, VK_F1 + 23, 1}
    }));
    Key(window, QEvent::KeyPress, Qt::Key_F25);
    EXPECT_EQ(window.Take(), Messages{});
}

TEST_F(Input, OfCharactersEndsWithTheWindow)
{
    class Ending : public Listening
    {
    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            const LRESULT result = Listening::WindowProc(message, wParam, lParam);
            if (message == WM_CHAR) DestroyWindow();
            return result;
        }
    } window;
    ASSERT_TRUE(window.CreateTop());
    window.Take();
    Key(window, QEvent::KeyPress, Qt::Key_A, QStringLiteral("ab"));
    ASSERT_GE(window.told.size(), 2U);
    EXPECT_EQ(window.told[0], (Told{WM_KEYDOWN, 'A', 1}));
    EXPECT_EQ(window.told[1], (Told{WM_CHAR, 'a', 1}));
    for (const Told& told : window.told)
        EXPECT_FALSE(told.message == WM_CHAR && told.wParam == 'b');
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
}

TEST_F(Input, OfKeysTellsThoseBesideTheNumberPad)
{
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    const auto isExtended = [&](int key, Qt::KeyboardModifiers modifiers) {
        Key(window, QEvent::KeyPress, key, {}, modifiers);
        const Messages told = window.Take();
        return !told.empty() && (HIWORD(static_cast<WPARAM>(told.front().lParam)) & 0x100) != 0;
    };
    for (const int key :
         {Qt::Key_Insert, Qt::Key_Delete, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp,
          Qt::Key_PageDown, Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down}) {
        EXPECT_TRUE(isExtended(key, {})) << key;
        EXPECT_FALSE(isExtended(key, Qt::KeypadModifier)) << key;
    }
    for (const int key : {Qt::Key_Enter, Qt::Key_Slash})
        EXPECT_TRUE(isExtended(key, Qt::KeypadModifier)) << key;
    for (const int key : {Qt::Key_Return, Qt::Key_Slash, Qt::Key_A, Qt::Key_Space})
        EXPECT_FALSE(isExtended(key, {})) << key;
}

TEST_F(Input, OfAKeyThatIsHeldGoesDownAgainAndUpOnce)
{
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    Key(window, QEvent::KeyPress, Qt::Key_Left);
    Key(window, QEvent::KeyRelease, Qt::Key_Left, {}, {}, true);
    Key(window, QEvent::KeyPress, Qt::Key_Left, {}, {}, true);
    Key(window, QEvent::KeyRelease, Qt::Key_Left);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_KEYDOWN, VK_LEFT, 0x01000001                        },
                                 {WM_KEYDOWN, VK_LEFT, 0x41000001                        },
                                 {WM_KEYUP,   VK_LEFT, static_cast<LPARAM>(0xC1000001ULL)},
    }));
}

TEST_F(Input, OfAKeyThatMovesTheWindowIsAnswered)
{
    class Moving : public Listening
    {
    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message != WM_KEYDOWN) return Listening::WindowProc(message, wParam, lParam);
            MoveWindow(1, 2, 30, 40);
            return 0;
        }
    } window;
    QWidget host;
    ASSERT_TRUE(window.CreateTop());
    framework::NativeWidget(window)->setParent(&host);
    EXPECT_TRUE(Key(window, QEvent::KeyPress, Qt::Key_Left));
    EXPECT_FALSE(Key(window, QEvent::KeyRelease, Qt::Key_Left)) << "left open";
}

WPARAM HandleOf(const CWnd& window)
{
    return reinterpret_cast<WPARAM>(window.GetSafeHwnd());
}

TEST_F(Input, FocusMovesWithMessagesToBoth)
{
    Listening window;
    Listening left;
    Listening right;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(left.CreateChild(window, nullptr, 0, CRect(0, 0, 50, 50), 1));
    ASSERT_TRUE(right.CreateChild(window, nullptr, 0, CRect(50, 0, 100, 50), 2));
    window.SetFocus();
    QCoreApplication::processEvents();
    window.Take();
    EXPECT_EQ(left.SetFocus(), &window);
    EXPECT_EQ(CWnd::GetFocus(), &left);
    EXPECT_EQ(right.SetFocus(), &left);
    QCoreApplication::processEvents();
    EXPECT_EQ(CWnd::GetFocus(), &right);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_KILLFOCUS, HandleOf(left), 0}
    }));
    EXPECT_EQ(left.Take(), (Messages{
                               {WM_SETFOCUS,  HandleOf(window), 0},
                               {WM_KILLFOCUS, HandleOf(right),  0},
    }));
    EXPECT_EQ(right.Take(), (Messages{
                                {WM_SETFOCUS, HandleOf(left), 0}
    }));
    EXPECT_EQ(QApplication::focusWidget(), framework::NativeWidget(right));
    right.EnableWindow(FALSE);
    EXPECT_EQ(right.SetFocus(), nullptr) << "disabled";
    window.DestroyWindow();
    EXPECT_EQ(CWnd::GetFocus(), nullptr);
}

TEST_F(Input, FocusOfAChildThatIsHiddenOrEndsGoesToItsParent)
{
    Listening window;
    Listening child;
    Listening inner;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(child.CreateChild(window, nullptr, 0, CRect(0, 0, 50, 50), 1));
    ASSERT_TRUE(inner.CreateChild(child, nullptr, 0, CRect(0, 0, 20, 20), 2));
    const WPARAM handle = HandleOf(inner);
    const Messages expected{
        {WM_SETFOCUS, handle, 0}
    };
    const auto useInner = [&] {
        inner.SetFocus();
        QCoreApplication::processEvents();
        window.Take();
        inner.Take();
    };
    useInner();
    child.ShowWindow(SW_HIDE);
    EXPECT_EQ(CWnd::GetFocus(), &window);
    EXPECT_EQ(window.Take(), expected) << "hidden";
    EXPECT_EQ(inner.Take(), (Messages{
                                {WM_KILLFOCUS, HandleOf(window), 0}
    }));
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::focusWidget(), framework::NativeWidget(window));

    child.ShowWindow(SW_SHOW);
    useInner();
    child.DestroyWindow();
    EXPECT_EQ(CWnd::GetFocus(), &window);
    EXPECT_EQ(window.Take(), expected) << "ended";
    EXPECT_EQ(child.Take(), Messages{}) << "it ends itself";
}

TEST_F(Input, FocusThatAHandlerMovesOnSkipsTheWindowInBetween)
{
    struct Giving : Listening
    {
        CWnd* next = nullptr;
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message == WM_KILLFOCUS && next) std::exchange(next, nullptr)->SetFocus();
            return Listening::WindowProc(message, wParam, lParam);
        }
    };
    Listening window;
    Giving first;
    Listening second;
    Listening third;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(first.CreateChild(window, nullptr, 0, CRect(0, 0, 20, 20), 1));
    ASSERT_TRUE(second.CreateChild(window, nullptr, 0, CRect(20, 0, 40, 20), 2));
    ASSERT_TRUE(third.CreateChild(window, nullptr, 0, CRect(40, 0, 60, 20), 3));
    first.SetFocus();
    first.next = &third;
    second.SetFocus();
    EXPECT_EQ(CWnd::GetFocus(), &third);
    const Messages told = second.Take();
    EXPECT_EQ(std::count_if(told.begin(), told.end(),
                            [](const Told& t) { return t.message == WM_SETFOCUS; }),
              0);
}

// A widget that moves into another parent loses the focus meanwhile.
TEST_F(Input, FocusThatAMoveTakesAwayMayEndAnyWindow)
{
    struct Ending : Listening
    {
        CWnd* ended = nullptr;
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            CWnd* const window = message == WM_KILLFOCUS ? std::exchange(ended, nullptr) : nullptr;
            if (window) window->DestroyWindow();
            return Listening::WindowProc(message, wParam, lParam);
        }
    };
    for (const char* which : {"itself", "the parent before", "the parent after"}) {
        Listening before;
        Listening after;
        Ending child;
        ASSERT_TRUE(before.CreateTop());
        ASSERT_TRUE(after.CreateTop());
        ASSERT_TRUE(child.CreateChild(before, nullptr, 0, CRect(0, 0, 50, 50), 1));
        before.ShowWindow(SW_SHOW);
        child.SetFocus();
        QCoreApplication::processEvents();
        ASSERT_EQ(CWnd::GetFocus(), &child);
        const std::string_view name = which;
        child.ended = name == "itself" ? &child : name == "the parent before" ? &before : &after;
        CWnd* const previous = child.SetParent(&after);
        EXPECT_EQ(child.ended, nullptr) << which << ": the handler ran";
        EXPECT_EQ(previous, name == "the parent before" ? nullptr : &before) << which;
        EXPECT_EQ(child.GetSafeHwnd() != nullptr, name == "the parent before") << which;
        QCoreApplication::processEvents();
    }
}

TEST_F(Input, FocusComesToAWindowThatIsUsed)
{
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    framework::NativeWidget(window)->activateWindow();
    QCoreApplication::processEvents();
    EXPECT_EQ(CWnd::GetFocus(), &window);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_SETFOCUS, 0, 0}
    }));
}

TEST_F(Input, FocusThatQtMovesIsToldToo)
{
    QWidget host;
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    QWidget* const widget = framework::NativeWidget(window);
    widget->setParent(&host);
    widget->show();
    QWidget other(&host);
    host.show();
    host.activateWindow();
    other.setFocus();
    QCoreApplication::processEvents();
    window.Take();
    widget->setFocus();
    EXPECT_EQ(CWnd::GetFocus(), &window);
    other.setFocus();
    EXPECT_EQ(CWnd::GetFocus(), nullptr);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_SETFOCUS,  0, 0},
                                 {WM_KILLFOCUS, 0, 0},
    }));
}

// The same as members of a message map.
class Mapped : public Listening
{
public:
    std::vector<CPoint> points;
    std::vector<UINT> keys;

protected:
    afx_msg void OnMouseMove(UINT flags, CPoint point)
    {
        points.push_back(point);
        CWnd::OnMouseMove(flags, point);
    }
    afx_msg void OnRButtonDown(UINT, CPoint point) { points.push_back(point); }
    afx_msg void OnLButtonDblClk(UINT, CPoint point) { points.push_back(point); }
    afx_msg BOOL OnMouseWheel(UINT flags, short delta, CPoint point)
    {
        keys.push_back(flags);
        keys.push_back(static_cast<UINT>(delta));
        ScreenToClient(&point);
        points.push_back(point);
        return TRUE;
    }
    afx_msg void OnKeyDown(UINT key, UINT count, UINT flags) { Note(key, count, flags); }
    afx_msg void OnKeyUp(UINT key, UINT count, UINT flags) { Note(key, count, flags); }
    afx_msg void OnChar(UINT key, UINT count, UINT flags) { Note(key, count, flags); }
    DECLARE_MESSAGE_MAP()

private:
    void Note(UINT key, UINT count, UINT flags)
    {
        keys.push_back(key);
        keys.push_back(count);
        keys.push_back(flags);
    }
};

BEGIN_MESSAGE_MAP(Mapped, Listening)
ON_WM_MOUSEMOVE()
ON_WM_RBUTTONDOWN()
ON_WM_LBUTTONDBLCLK()
ON_WM_MOUSEWHEEL()
ON_WM_KEYDOWN()
ON_WM_KEYUP()
ON_WM_CHAR()
END_MESSAGE_MAP()

TEST_F(Input, ReachesTheMembersOfAMessageMap)
{
    Mapped window;
    ASSERT_TRUE(window.CreateTop(CS_DBLCLKS));
    Move(window, {1, 2});
    Press(window, {3, 4}, Qt::RightButton);
    Release(window, {3, 4}, Qt::RightButton);
    Mouse(window, QEvent::MouseButtonDblClick, {5, 6}, Qt::LeftButton, {});
    Wheel(window, {7, 8}, -240, {Qt::LeftButton, {}});
    EXPECT_EQ(window.points, (std::vector<CPoint>{
                                 {1, 2},
                                 {3, 4},
                                 {5, 6},
                                 {7, 8}
    }));
    EXPECT_TRUE(Key(window, QEvent::KeyPress, Qt::Key_A, QStringLiteral("a")));
    Key(window, QEvent::KeyRelease, Qt::Key_A);
    EXPECT_EQ(window.keys, (std::vector<UINT>{MK_LBUTTON, static_cast<UINT>(-240), 'A', 1, 0, 'a',
                                              1, 0, 'A', 1, 0xC000}));
}

} // namespace
} // namespace framework::test
