// SPDX-License-Identifier: MIT
//
// Which messages a window gets from the mouse. Every event comes from Qt.
#include "tests/framework/gui/Input.h"

namespace framework::test {
namespace {

TEST_F(Input, OfTheMouseTellsButtonsKeysAndPlace)
{
    struct Case
    {
        QEvent::Type type;
        Qt::MouseButton button;
        Keys held;
        Told told;
    };
    constexpr LPARAM place = At(7, 9);
    const Case cases[] = {
        {QEvent::MouseMove,          Qt::NoButton,     {},                   {WM_MOUSEMOVE, 0, place}         },
        {QEvent::MouseMove,          Qt::NoButton,     {Qt::LeftButton, {}}, {WM_MOUSEMOVE, MK_LBUTTON, place}},
        {QEvent::MouseMove,
         Qt::NoButton,
         {{}, Qt::ShiftModifier | Qt::ControlModifier},
         {WM_MOUSEMOVE, MK_SHIFT | MK_CONTROL, place}                                                         },
        {QEvent::MouseButtonPress,
         Qt::LeftButton,
         {Qt::LeftButton, {}},
         {WM_LBUTTONDOWN, MK_LBUTTON, place}                                                                  },
        {QEvent::MouseButtonPress,
         Qt::RightButton,
         {Qt::LeftButton | Qt::RightButton, Qt::ShiftModifier},
         {WM_RBUTTONDOWN, MK_LBUTTON | MK_RBUTTON | MK_SHIFT, place}                                          },
        {QEvent::MouseButtonPress,
         Qt::MiddleButton,
         {Qt::MiddleButton, {}},
         {WM_MBUTTONDOWN, MK_MBUTTON, place}                                                                  },
        {QEvent::MouseButtonRelease, Qt::LeftButton,   {},                   {WM_LBUTTONUP, 0, place}         },
        {QEvent::MouseButtonRelease,
         Qt::RightButton,
         {Qt::LeftButton, {}},
         {WM_RBUTTONUP, MK_LBUTTON, place}                                                                    },
        {QEvent::MouseButtonRelease, Qt::MiddleButton, {},                   {WM_MBUTTONUP, 0, place}         },
    };
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    for (const Case& c : cases) {
        Mouse(window, c.type, {7, 9}, c.button, c.held);
        EXPECT_EQ(window.Take(), Messages{c.told});
    }
    Press(window, {7, 9}, Qt::BackButton);
    EXPECT_EQ(window.Take(), Messages{}) << "a button without a message";
}

TEST_F(Input, OfASecondClickIsDoubleOnlyWhereTheClassSaysSo)
{
    struct Case
    {
        UINT classStyle;
        Qt::MouseButton button;
        UINT message;
    };
    const Case cases[] = {
        {0,          Qt::LeftButton,   WM_LBUTTONDOWN  },
        {CS_DBLCLKS, Qt::LeftButton,   WM_LBUTTONDBLCLK},
        {0,          Qt::RightButton,  WM_RBUTTONDOWN  },
        {CS_DBLCLKS, Qt::RightButton,  WM_RBUTTONDBLCLK},
        {CS_DBLCLKS, Qt::MiddleButton, WM_MBUTTONDBLCLK},
    };
    for (const Case& c : cases) {
        Listening window;
        ASSERT_TRUE(window.CreateTop(c.classStyle));
        Press(window, {1, 2}, c.button);
        Release(window, {1, 2}, c.button);
        window.Take();
        Mouse(window, QEvent::MouseButtonDblClick, {1, 2}, c.button, {});
        EXPECT_EQ(window.Take(), (Messages{
                                     {c.message, 0, At(1, 2)}
        }));
    }
}

TEST_F(Input, OfTheWheelComesWithThePlaceOnTheScreenAndGoesOnToTheParent)
{
    Listening window;
    Listening child;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(child.CreateChild(window, nullptr, 0, CRect(10, 20, 60, 60), 1));
    Wheel(child, {1, 2}, -120, {Qt::NoButton, Qt::ControlModifier});
    const Messages expected{
        {WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, -120), At(50 + 10 + 1, 60 + 20 + 2)}
    };
    EXPECT_EQ(child.Take(), expected);
    EXPECT_EQ(window.Take(), expected);
    Wheel(child, {1, 2}, 0);
    EXPECT_EQ(child.Take(), Messages{}) << "turned sideways";
}

// Leaves the wheel open, in either of the ways of hosts.
class Leaving : public Listening
{
public:
    bool callsBase = false;
    bool endsFirst = false;

protected:
    afx_msg BOOL OnMouseWheel(UINT flags, short delta, CPoint point)
    {
        if (endsFirst) DestroyWindow();
        return callsBase ? CWnd::OnMouseWheel(flags, delta, point) : FALSE;
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Leaving, Listening)
ON_WM_MOUSEWHEEL()
END_MESSAGE_MAP()

TEST_F(Input, OfTheWheelThatAMemberLeavesOpenGoesOnOnce)
{
    Listening window;
    Leaving child;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(child.CreateChild(window, nullptr, 0, CRect(10, 20, 60, 60), 1));
    const Messages expected{
        {WM_MOUSEWHEEL, MAKEWPARAM(0, 120), At(50 + 10 + 1, 60 + 20 + 2)}
    };
    for (const bool callsBase : {false, true}) {
        child.callsBase = callsBase;
        Wheel(child, {1, 2}, 120);
        EXPECT_EQ(window.Take(), expected) << callsBase;
    }
    child.endsFirst = true;
    Wheel(child, {1, 2}, 120);
    EXPECT_EQ(window.Take(), Messages{}) << "its window has ended";
}

TEST_F(Input, OfTheWheelThatNoWindowTakesIsTheQtHosts)
{
    QWidget host;
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    framework::NativeWidget(window)->setParent(&host);
    framework::NativeWidget(window)->show();
    host.show();
    EXPECT_FALSE(Wheel(window, {60, 1}, 120));
    EXPECT_EQ(window.Take().size(), 1U) << "it was asked";
    window.answersWheel = true;
    EXPECT_TRUE(Wheel(window, {60, 1}, 120));
}

TEST_F(Input, OfTheMouseGoesThroughStaticsThatDoNotNotify)
{
    Listening window;
    Listening silent;
    Listening notifying;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(silent.CreateChild(window, L"STATIC", 0, CRect(10, 10, 50, 50), 7));
    ASSERT_TRUE(notifying.CreateChild(window, L"STATIC", SS_NOTIFY, CRect(60, 10, 100, 50), 8));

    Press(silent, {1, 2});
    EXPECT_EQ(silent.Take(), Messages{});
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_LBUTTONDOWN, MK_LBUTTON, At(11, 12)}
    }));
    Release(silent, {1, 2});
    window.Take();

    const auto handle = reinterpret_cast<LPARAM>(notifying.GetSafeHwnd());
    Press(notifying, {1, 2});
    Release(notifying, {1, 2});
    EXPECT_EQ(notifying.Take(), (Messages{
                                    {WM_LBUTTONDOWN, MK_LBUTTON, At(1, 2)},
                                    {WM_LBUTTONUP,   0,          At(1, 2)},
    }));
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_COMMAND, MAKEWPARAM(8, STN_CLICKED), handle}
    }));
    Mouse(notifying, QEvent::MouseButtonDblClick, {1, 2}, Qt::LeftButton, {});
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_COMMAND, MAKEWPARAM(8, STN_DBLCLK), handle}
    }));
    Release(notifying, {1, 2});
}

TEST_F(Input, OnlyStaticsThatNotifyTellOfClicks)
{
    Listening window;
    Listening silent;
    Listening plain;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(silent.CreateChild(window, L"STATIC", 0, CRect(10, 10, 50, 50), 7));
    ASSERT_TRUE(plain.CreateChild(window, nullptr, SS_NOTIFY, CRect(60, 10, 100, 50), 8));
    for (Listening* const child : {&silent, &plain})
        child->SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, At(1, 2));
    EXPECT_EQ(window.Take(), Messages{});
}

TEST_F(Input, OfTheMouseOnADisabledWindowIsItsParents)
{
    Listening window;
    Listening child;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(child.CreateChild(window, nullptr, 0, CRect(10, 10, 50, 50), 1));
    child.EnableWindow(FALSE);
    Move(child, {1, 1});
    EXPECT_EQ(child.Take(), Messages{});
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_MOUSEMOVE, 0, At(11, 11)}
    }));
    window.EnableWindow(FALSE);
    Move(child, {1, 1});
    Key(window, QEvent::KeyPress, Qt::Key_A, QStringLiteral("a"));
    EXPECT_EQ(window.Take(), Messages{});
}

TEST_F(Input, OfTheMouseBelongsToTheWindowUnderThePointer)
{
    Listening window;
    Listening left;
    Listening right;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(left.CreateChild(window, nullptr, WS_BORDER, CRect(0, 0, 50, 50), 1));
    ASSERT_TRUE(right.CreateChild(window, nullptr, 0, CRect(50, 0, 100, 50), 2));
    // Qt sends all events to the widget that was pressed until the button is released.
    Press(left, {5, 5});
    Move(left, {60, 5}, {Qt::LeftButton, {}});
    Release(left, {500, 5});
    EXPECT_EQ(left.Take(), (Messages{
                               {WM_LBUTTONDOWN, MK_LBUTTON, At(4, 4)}
    }))
        << "the border is no part of the client area";
    EXPECT_EQ(right.Take(), (Messages{
                                {WM_MOUSEMOVE, MK_LBUTTON, At(10, 5)}
    }));
    EXPECT_EQ(window.Take(), Messages{}) << "outside";
    Press(left, {0, 5});
    EXPECT_EQ(left.Take(), Messages{}) << "on the border";
    Release(left, {0, 5});
}

// Children begin inside the border of their parent.
TEST_F(Input, OfTheMouseFindsTheChildrenInsideABorder)
{
    Listening window;
    Listening framed;
    Listening child;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(framed.CreateChild(window, nullptr, WS_BORDER, CRect(10, 20, 60, 60), 1));
    ASSERT_TRUE(child.CreateChild(framed, nullptr, 0, CRect(5, 6, 15, 16), 2));
    EXPECT_EQ(framework::NativeWidget(child)->geometry(), QRect(6, 7, 10, 10));
    const auto movedTo = [&](QPoint at) {
        Move(framed, at);
        return std::pair(framed.Take(), child.Take());
    };
    const auto at = [](int x, int y) {
        return Messages{
            {WM_MOUSEMOVE, 0, At(x, y)}
        };
    };
    EXPECT_EQ(movedTo({6, 7}), std::pair(Messages{}, at(0, 0))) << "its first pixel";
    EXPECT_EQ(movedTo({15, 16}), std::pair(Messages{}, at(9, 9))) << "its last one";
    EXPECT_EQ(movedTo({5, 7}), std::pair(at(4, 6), Messages{}));
    EXPECT_EQ(movedTo({6, 6}), std::pair(at(5, 5), Messages{}));
    EXPECT_EQ(movedTo({16, 16}), std::pair(at(15, 15), Messages{}));
    EXPECT_EQ(movedTo({15, 17}), std::pair(at(14, 16), Messages{}));
}

TEST_F(Input, OfTheMouseIsCaptured)
{
    Listening window;
    Listening left;
    Listening right;
    ASSERT_TRUE(window.CreateTop());
    ASSERT_TRUE(left.CreateChild(window, nullptr, 0, CRect(0, 0, 50, 50), 1));
    ASSERT_TRUE(right.CreateChild(window, nullptr, 0, CRect(50, 0, 100, 50), 2));
    EXPECT_EQ(left.SetCapture(), nullptr);
    EXPECT_EQ(CWnd::GetCapture(), &left);
    Move(right, {1, 2});
    Move(left, {-70, 300}, {Qt::LeftButton, {}});
    EXPECT_EQ(right.Take(), Messages{});
    EXPECT_EQ(left.Take(), (Messages{
                               {WM_MOUSEMOVE, 0,          At(51,  2)  },
                               {WM_MOUSEMOVE, MK_LBUTTON, At(-70, 300)},
    }));
    EXPECT_EQ(right.SetCapture(), &left);
    EXPECT_EQ(left.Take(),
              (Messages{
                  {WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(right.GetSafeHwnd())}
    }));
    EXPECT_TRUE(ReleaseCapture());
    EXPECT_FALSE(ReleaseCapture());
    EXPECT_EQ(right.Take(), (Messages{
                                {WM_CAPTURECHANGED, 0, 0}
    }));
    Move(left, {1, 1});
    EXPECT_EQ(left.Take().size(), 1U);
    left.SetCapture();
    left.DestroyWindow();
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
    Move(right, {1, 1});
    EXPECT_EQ(right.Take().size(), 1U);
}

TEST_F(Input, OfTheMouseTellsOnceThatItLeaves)
{
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    TRACKMOUSEEVENT request{sizeof(TRACKMOUSEEVENT), TME_LEAVE, window.GetSafeHwnd(), 0};
    EXPECT_TRUE(TrackMouseEvent(&request));
    Leave(window);
    Leave(window);
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_MOUSELEAVE, 0, 0}
    }));

    Listening child;
    ASSERT_TRUE(child.CreateChild(window, nullptr, 0, CRect(0, 0, 50, 50), 1));
    EXPECT_TRUE(TrackMouseEvent(&request));
    Move(child, {1, 1});
    EXPECT_EQ(window.Take(), (Messages{
                                 {WM_MOUSELEAVE, 0, 0}
    }))
        << "onto a child";
    EXPECT_TRUE(TrackMouseEvent(&request));
    request.dwFlags |= TME_CANCEL;
    EXPECT_TRUE(TrackMouseEvent(&request));
    Leave(window);
    EXPECT_EQ(window.Take(), Messages{});
}

// The border of a window is not its client area.
TEST_F(Input, OfTheMouseLeavesAWindowAtItsBorder)
{
    Listening window;
    ASSERT_TRUE(window.CreateTop());
    Listening framed;
    ASSERT_TRUE(framed.CreateChild(window, nullptr, WS_BORDER, CRect(10, 10, 60, 60), 1));
    TRACKMOUSEEVENT request{sizeof(TRACKMOUSEEVENT), TME_LEAVE, framed.GetSafeHwnd(), 0};
    Move(framed, {1, 1});
    framed.Take();
    ASSERT_TRUE(TrackMouseEvent(&request));
    Move(framed, {48, 48});
    EXPECT_EQ(framed.Take(), (Messages{
                                 {WM_MOUSEMOVE, 0, At(47, 47)}
    }))
        << "the last pixel of the client area";
    Move(framed, {48, 49});
    Move(framed, {49, 49});
    EXPECT_EQ(framed.Take(), (Messages{
                                 {WM_MOUSELEAVE, 0, 0}
    }))
        << "once";
    ASSERT_TRUE(TrackMouseEvent(&request));
    Move(framed, {49, 10});
    EXPECT_EQ(framed.Take(), (Messages{
                                 {WM_MOUSELEAVE, 0, 0}
    }))
        << "on the right";
    EXPECT_EQ(window.Take(), Messages{}) << "the border is not its parent's";
}

} // namespace
} // namespace framework::test
