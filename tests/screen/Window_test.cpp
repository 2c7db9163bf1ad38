// SPDX-License-Identifier: MIT
#include "tests/screen/Screenshot.h"

#include "controls/GraphCompass.h"
#include "controls/GraphMagnetic_XY.h"
#include "framework/gui/QtInterop.h"

#include <QWidget>

namespace screen::test {
namespace {

constexpr DWORD kChild = WS_CHILD | WS_VISIBLE;

// A top-level window with a dial and a plot at odd places, so that a child begins between two units
// of a scaled screen.
struct Screen : testing::Test
{
    CWnd host;
    CGraphCompass dial;
    CGraphMagnetic_XY plot;

    Screen()
    {
        EXPECT_TRUE(host.CreateEx(0, AfxRegisterWndClass(0, nullptr, CBrush(RGB(9, 80, 200))),
                                  L"screen", WS_OVERLAPPED, 51, 33, 577, 301, nullptr, 0));
        EXPECT_TRUE(dial.Create(L"", kChild, CRect(11, 13, 252, 254), &host, 1));
        EXPECT_TRUE(plot.Create(nullptr, nullptr, kChild, CRect(265, 17, 530, 280), &host, 2));
    }

    void Show()
    {
        host.ShowWindow(SW_SHOW);
        ASSERT_EQ(SettleOnScreen(host), 0) << "pixels differ from the window's picture";
    }
};

TEST_F(Screen, IsARealOne)
{
    EXPECT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb"));
    EXPECT_EQ(framework::NativeWidget(host)->devicePixelRatioF(),
              qEnvironmentVariable("QT_SCALE_FACTOR", "1").toDouble());
}

TEST_F(Screen, ShowsControlsPixelForPixel)
{
    Show();
    const QImage shown = ScreenAt(host);
    EXPECT_EQ(shown.pixel(11 + 120, 13 + 90), ToRgb(RGB(255, 0, 0))) << "the needle";
    EXPECT_EQ(shown.pixel(11 + 60, 13 + 120), ToRgb(RGB(204, 255, 102))) << "the dial beside it";
    EXPECT_EQ(shown.pixel(268 + 130, 20 + 100), ToRgb(RGB(0, 0, 0))) << "the plot";
    EXPECT_EQ(shown.pixel(268 + 40, 20 + 257 - 20), ToRgb(RGB(0, 255, 255))) << "its axis";
    EXPECT_EQ(shown.pixel(265, 17), ToRgb(RGB(128, 128, 128))) << "its edge";
    EXPECT_EQ(shown.pixel(260, 100), ToRgb(RGB(9, 80, 200))) << "the host between them";
}

TEST_F(Screen, FollowsWhatIsDrawnOutsideAPaint)
{
    Show();
    dial.SetValue(90);
    ASSERT_EQ(SettleOnScreen(host), 0);
    EXPECT_EQ(ScreenAt(host).pixel(11 + 150, 13 + 120), ToRgb(RGB(255, 0, 0)));
    dial.SetFix(90);
    ASSERT_EQ(SettleOnScreen(host), 0);
    EXPECT_EQ(ScreenAt(host).pixel(11 + 228, 13 + 120), ToRgb(RGB(0, 255, 0)));
}

TEST_F(Screen, LeavesClientSizesAsAsked)
{
    Show();
    CRect client;
    host.GetClientRect(&client);
    EXPECT_EQ(client.Size(), CSize(577, 301));
    dial.GetClientRect(&client);
    EXPECT_EQ(client.Size(), CSize(241, 241));
    plot.GetClientRect(&client);
    EXPECT_EQ(client.Size(), CSize(265 - 6, 263 - 6));
    dial.MoveWindow(7, 9, 133, 135);
    dial.ReconstructControl();
    ASSERT_EQ(SettleOnScreen(host), 0);
    dial.GetClientRect(&client);
    EXPECT_EQ(client.Size(), CSize(133, 135));
}

TEST_F(Screen, ShowsNothingOfAHiddenControl)
{
    Show();
    dial.ShowWindow(SW_HIDE);
    dial.SetValue(200);
    ASSERT_EQ(SettleOnScreen(host), 0);
    EXPECT_EQ(ScreenAt(host).pixel(11 + 120, 13 + 90), ToRgb(RGB(9, 80, 200)));
    dial.ShowWindow(SW_SHOW);
    ASSERT_EQ(SettleOnScreen(host), 0);
    EXPECT_EQ(ScreenAt(host).pixel(11 + 120, 13 + 120), ToRgb(RGB(0, 0, 0))) << "the hub is back";
}

TEST_F(Screen, PutsChildrenInsideTheFrameOfTheirParent)
{
    CWnd framed;
    ASSERT_TRUE(framed.CreateEx(WS_EX_CLIENTEDGE | WS_EX_STATICEDGE, L"STATIC", L"", kChild,
                                CRect(535, 21, 575, 70), &host, 3));
    CGraphCompass inner;
    ASSERT_TRUE(inner.Create(L"", kChild, CRect(4, 5, 25, 26), &framed, 1));
    Show();
    EXPECT_EQ(ScreenAt(host).pixel(535 + 3 + 4, 21 + 3 + 5), ToRgb(RGB(102, 255, 255)));
    EXPECT_NE(ScreenAt(host).pixel(535 + 3 + 3, 21 + 3 + 5), ToRgb(RGB(102, 255, 255)));
}

TEST_F(Screen, EndsAWindowThatTheUserCloses)
{
    Show();
    framework::NativeWidget(host)->close();
    EXPECT_EQ(host.GetSafeHwnd(), nullptr);
    EXPECT_EQ(dial.GetSafeHwnd(), nullptr);
}

} // namespace
} // namespace screen::test
