// SPDX-License-Identifier: MIT
//
// Windows in the layouts and among the widgets of a Qt program, which may end either of them first. Every test has an application of its own.
#include "framework/gui/QtInterop.h"
#include "framework/gui/gui.h"
#include "tests/framework/gui/HostProgram.h"

#include <gtest/gtest.h>

#include <QCloseEvent>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPixmap>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QWidget>

#include <cstdlib>
#include <memory>
#include <utility>

namespace framework::test {
namespace {

// What the widget of a window of one color shows, with edges of its own.
QImage ShownWithEdges(DWORD style, DWORD exStyle, int width, int height)
{
    CWnd parent;
    CWnd window;
    EXPECT_TRUE(
        parent.CreateEx(0, AfxRegisterWndClass(0), L"", WS_POPUP, 0, 0, 50, 50, nullptr, 0));
    EXPECT_TRUE(window.CreateEx(exStyle, AfxRegisterWndClass(0, nullptr, CBrush(RGB(1, 200, 3))),
                                L"", WS_CHILD | WS_VISIBLE | style, CRect(0, 0, width, height),
                                &parent, 1));
    parent.ShowWindow(SW_SHOW);
    Dispatch();
    return framework::NativeWidget(window)->grab().toImage();
}

TEST(QtHost, SeesTheEdgesOfAWindowAroundItsPicture)
{
    const HostApplication host;
    const QRgb face = qRgb(1, 200, 3);
    const QRgb dark = qRgb(128, 128, 128);
    const QRgb light = qRgb(255, 255, 255);
    const QImage border = ShownWithEdges(WS_BORDER, 0, 9, 8);
    EXPECT_EQ(border.pixel(0, 4), qRgb(0, 0, 0));
    EXPECT_EQ(border.pixel(8, 7), qRgb(0, 0, 0));
    EXPECT_EQ(border.pixel(1, 1), face);
    EXPECT_EQ(border.pixel(7, 6), face);
    const QImage edge = ShownWithEdges(0, WS_EX_STATICEDGE, 9, 8);
    EXPECT_EQ(edge.pixel(0, 0), dark);
    EXPECT_EQ(edge.pixel(8, 0), light);
    EXPECT_EQ(edge.pixel(0, 7), light);
    EXPECT_EQ(edge.pixel(1, 1), face);
    const QImage sunken = ShownWithEdges(0, WS_EX_CLIENTEDGE, 9, 8);
    EXPECT_EQ(sunken.pixel(0, 0), dark);
    EXPECT_EQ(sunken.pixel(1, 1), qRgb(0, 0, 0));
    EXPECT_EQ(sunken.pixel(8, 7), light);
    EXPECT_EQ(sunken.pixel(2, 2), face);
    const QImage plain = ShownWithEdges(0, 0, 9, 8);
    EXPECT_EQ(plain.pixel(0, 0), face);
}

// The pictures that the framework saves are made of the windows' own.
TEST(QtHost, SavesWhatItSees)
{
    const HostApplication host;
    Recorded parent;
    ASSERT_TRUE(parent.CreateTop(WS_POPUP | WS_VISIBLE, 60, 50));
    Recorded child;
    Recorded inner;
    const LPCTSTR white = AfxRegisterWndClass(0, nullptr, CBrush(RGB(255, 255, 255)));
    ASSERT_TRUE(child.CreateEx(WS_EX_CLIENTEDGE | WS_EX_STATICEDGE, white, L"",
                               WS_CHILD | WS_VISIBLE | WS_BORDER, CRect(7, 9, 45, 60), &parent, 1));
    ASSERT_TRUE(inner.CreateEx(WS_EX_STATICEDGE, nullptr, L"", WS_CHILD | WS_VISIBLE,
                               CRect(3, 5, 20, 15), &child, 1));
    Dispatch();
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("window.png"));
    ASSERT_TRUE(SaveWindowImage(parent, CString(path.toStdWString().c_str())));
    const QImage shown = framework::NativeWidget(parent)->grab().toImage();
    EXPECT_EQ(QImage(path).convertToFormat(QImage::Format_RGB32),
              shown.convertToFormat(QImage::Format_RGB32));
}

TEST(QtHost, SeesAWindowOfOneRowOrColumn)
{
    const HostApplication host;
    EXPECT_EQ(ShownWithEdges(0, 0, 9, 1).pixel(4, 0), qRgb(1, 200, 3));
    EXPECT_EQ(ShownWithEdges(0, 0, 1, 9).pixel(0, 4), qRgb(1, 200, 3));
}

TEST(QtHost, TakesTheWindowAlongWhenItEnds)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop());
    {
        QWidget page;
        QVBoxLayout layout(&page);
        layout.addWidget(framework::NativeWidget(window));
        page.show();
        Dispatch();
    }
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    EXPECT_EQ(window.Count(WM_DESTROY), 1);
    EXPECT_EQ(framework::NativeWidget(window), nullptr);
    window.MoveWindow(0, 0, 9, 9);
    window.Invalidate();
    EXPECT_TRUE(window.CreateTop()) << "and the window can be made again";
}

// A click or a key on a control that closes the panel around it.
TEST(QtHost, MayDeleteTheWidgetInTheMiddleOfItsEvent)
{
    class Panel : public Recorded
    {
    public:
        QWidget* around = nullptr;
        UINT closing = 0;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message != closing) return Recorded::WindowProc(message, wParam, lParam);
            delete std::exchange(around, nullptr);
            return 0;
        }
    };
    const HostApplication host;
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(5, 5), QPointF(5, 5), Qt::LeftButton,
                      Qt::LeftButton, {});
    QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), {}, {0, 120}, {}, {}, Qt::NoScrollPhase, false);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Escape, {});
    QCloseEvent close;
    const std::pair<UINT, QEvent*> cases[] = {
        {WM_LBUTTONDOWN, &press},
        {WM_MOUSEWHEEL,  &wheel},
        {WM_KEYDOWN,     &key  },
        {WM_CLOSE,       &close},
    };
    for (const auto& [message, event] : cases) {
        Panel window;
        ASSERT_TRUE(window.CreateTop());
        window.around = new QWidget;
        auto* const layout = new QVBoxLayout(window.around);
        layout->addWidget(framework::NativeWidget(window));
        window.around->show();
        Dispatch();
        window.closing = message;
        QCoreApplication::sendEvent(framework::NativeWidget(window), event);
        EXPECT_EQ(window.around, nullptr) << message << ": the handler ran";
        EXPECT_EQ(window.GetSafeHwnd(), nullptr) << message;
        EXPECT_EQ(window.Count(WM_DESTROY), 1) << message;
    }
}

TEST(QtHost, LosesTheWidgetWhenTheWindowEnds)
{
    const HostApplication host;
    QWidget page;
    QVBoxLayout layout(&page);
    Recorded window;
    ASSERT_TRUE(window.CreateTop());
    const QPointer<QWidget> widget = framework::NativeWidget(window);
    layout.addWidget(widget);
    window.DestroyWindow();
    EXPECT_TRUE(widget.isNull());
    EXPECT_EQ(layout.count(), 0);
}

TEST(QtHost, GivesTheWindowItsOwnSizeInALayout)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop(WS_OVERLAPPED, 123, 45));
    QWidget page;
    QVBoxLayout layout(&page);
    layout.setContentsMargins(0, 0, 0, 0);
    layout.addWidget(framework::NativeWidget(window));
    EXPECT_EQ(framework::NativeWidget(window)->sizeHint(), QSize(123, 45));
    EXPECT_EQ(page.sizeHint(), QSize(123, 45));
}

TEST(QtHost, DecidesWhereAWindowInItsLayoutIs)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop());
    QWidget page;
    QVBoxLayout layout(&page);
    layout.setContentsMargins(7, 9, 0, 0);
    layout.addWidget(framework::NativeWidget(window));
    page.setGeometry(100, 200, 300, 200);
    page.show();
    Dispatch();
    CRect place;
    window.GetWindowRect(&place);
    const QPoint corner = page.mapToGlobal(QPoint(7, 9));
    EXPECT_EQ(place, CRect(corner.x(), corner.y(), corner.x() + 293, corner.y() + 191));

    window.SetWindowPos(nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_FRAMECHANGED);
    EXPECT_EQ(framework::NativeWidget(window)->pos(), QPoint(7, 9));
    CRect again;
    window.GetWindowRect(&again);
    EXPECT_EQ(again, place);
}

TEST(QtHost, ShowsAndHidesTheWindowByItsWidget)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop());
    framework::NativeWidget(window)->show();
    EXPECT_TRUE(window.IsWindowVisible());
    framework::NativeWidget(window)->hide();
    EXPECT_FALSE(window.IsWindowVisible());
    EXPECT_EQ(window.Count(WM_SHOWWINDOW), 2);
    window.ShowWindow(SW_SHOW);
    EXPECT_TRUE(framework::NativeWidget(window)->isVisible());
}

TEST(QtHost, MovesTheWindowByItsWidget)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop(WS_OVERLAPPED | WS_VISIBLE));
    Dispatch();
    window.messages.clear();
    framework::NativeWidget(window)->setGeometry(60, 70, 40, 30);
    Dispatch();
    EXPECT_EQ(window.Count(WM_MOVE), 1);
    CRect place;
    window.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(60, 70, 100, 100));
    window.SetWindowPos(nullptr, 0, 0, 50, 60, SWP_NOMOVE);
    window.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(60, 70, 110, 130)) << "not where it was made";
    EXPECT_EQ(framework::NativeWidget(window)->geometry(), QRect(60, 70, 50, 60));
}

TEST(QtHost, QuitsWithAControlAsATopLevelWindow)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop(WS_OVERLAPPED | WS_VISIBLE));
    bool quit = false;
    QTimer::singleShot(0, [&] {
        QCoreApplication::quit();
        quit = true;
    });
    QTimer::singleShot(5000, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(quit);
    EXPECT_EQ(window.GetSafeHwnd(), nullptr) << "it was closed";
}

TEST(QtHost, IsNotQuitByAWindowThatDoesNotClose)
{
    const HostApplication host;
    class Stubborn : public CWnd
    {
    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            return message == WM_CLOSE ? 0 : CWnd::WindowProc(message, wParam, lParam);
        }
    } window;
    ASSERT_TRUE(
        window.CreateEx(0, L"STATIC", L"", WS_OVERLAPPED | WS_VISIBLE, 0, 0, 9, 9, nullptr, 0));
    QTimer::singleShot(0, [] { QCoreApplication::quit(); });
    QTimer::singleShot(200, [] { QCoreApplication::exit(3); });
    EXPECT_EQ(QApplication::exec(), 3);
    EXPECT_NE(window.GetSafeHwnd(), nullptr);
}

TEST(QtHost, EndsTheWindowsThatOutliveItsApplication)
{
    Recorded window;
    Recorded child;
    {
        const HostApplication host;
        ASSERT_TRUE(window.CreateTop(WS_OVERLAPPED | WS_VISIBLE));
        ASSERT_TRUE(
            child.Create(L"STATIC", L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 9, 9), &window, 1));
        Dispatch();
    }
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    EXPECT_EQ(child.GetSafeHwnd(), nullptr);
    EXPECT_FALSE(window.CreateTop()) << "nothing to show it on";
    const HostApplication next;
    EXPECT_TRUE(window.CreateTop());
}

TEST(QtHost, LeavesNoWidgetThatWasInUseWhenItsWindowEnded)
{
    QPointer<QWidget> widget;
    Recorded window;
    {
        const HostApplication host;
        ASSERT_TRUE(window.CreateTop(WS_OVERLAPPED | WS_VISIBLE));
        widget = framework::NativeWidget(window);
        window.fatal = WM_CLOSE;
        widget->close();
        EXPECT_EQ(window.GetSafeHwnd(), nullptr);
        EXPECT_FALSE(widget.isNull()) << "Qt was using it";
    }
    EXPECT_TRUE(widget.isNull());
}

// A picture of widgets that are not on the screen yet, as for a report.
TEST(QtHost, TakesPicturesOfWindowsThatAreNotShown)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop());
    const auto color = [](QWidget& widget) {
        return widget.grab().toImage().pixelColor(20, 15).name();
    };
    EXPECT_EQ(color(*framework::NativeWidget(window)), QStringLiteral("#010203"));
    EXPECT_EQ(window.Count(WM_PAINT), 1);
    EXPECT_FALSE(window.IsWindowVisible());

    QWidget page;
    QVBoxLayout layout(&page);
    layout.setContentsMargins(0, 0, 0, 0);
    layout.addWidget(framework::NativeWidget(window));
    window.Invalidate();
    EXPECT_EQ(color(page), QStringLiteral("#010203"));
    EXPECT_EQ(window.Count(WM_PAINT), 2);
    window.Invalidate();
    window.UpdateWindow();
    EXPECT_EQ(window.Count(WM_PAINT), 2) << "not shown: painted only for a picture";
}

// The program starts anew for this test: the window is older than all that the framework keeps.
TEST(QtHostDeathTest, MayEndWhileAWindowOfAStaticObjectExists)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [] {
        static Recorded window;
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static Arguments arguments;
        new QApplication(arguments.count, arguments.values); // nobody ends it
        const bool isMade = window.CreateTop(WS_OVERLAPPED | WS_VISIBLE);
        Dispatch();
        std::exit(isMade ? 7 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace framework::test
