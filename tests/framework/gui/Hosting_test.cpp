// SPDX-License-Identifier: MIT
//
// What host programs do to windows: they destroy them in the middle of a message, have applications
// of several kinds, and show message boxes. Every test has an application of its own.
#include "framework/gui/QtInterop.h"
#include "framework/gui/gui.h"
#include "tests/framework/gui/HostProgram.h"

#include "framework/core/MessageBox.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QWidget>

#include <chrono>
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <utility>

namespace framework::test {
namespace {

struct FatalMessage
{
    const char* name;
    UINT message;

    friend std::ostream& operator<<(std::ostream& out, const FatalMessage& m)
    {
        return out << m.name;
    }
};

class DestroyedIn : public testing::TestWithParam<FatalMessage>
{};

TEST_P(DestroyedIn, AMessageTheWindowIsGoneAndCanBeMadeAgain)
{
    const HostApplication host;
    Recorded window;
    window.fatal = GetParam().message;
    if (window.CreateTop(WS_OVERLAPPED | WS_VISIBLE)) {
        Dispatch();
        window.Invalidate();
        window.UpdateWindow();
        window.SetTimer(1, 1, nullptr);
        while (window.fatal == WM_TIMER)
            Dispatch();
        window.EnableWindow(FALSE);
        window.MoveWindow(5, 6, 70, 80);
        window.SendMessage(WM_CLOSE);
    }
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    EXPECT_EQ(window.Count(WM_DESTROY), 1);
    EXPECT_EQ(window.Count(WM_NCDESTROY), 1);
    Dispatch();

    EXPECT_TRUE(window.CreateTop(WS_OVERLAPPED | WS_VISIBLE));
    Dispatch();
    EXPECT_GE(window.Count(WM_PAINT), 1);
}

TEST_P(DestroyedIn, AMessageOfItsChildTheParentIsGoneToo)
{
    const HostApplication host;
    Recorded parent;
    ASSERT_TRUE(parent.CreateTop(WS_OVERLAPPED | WS_VISIBLE));
    class Child : public CWnd
    {
    public:
        CWnd* parent = nullptr;
        UINT fatal = 0;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message == fatal && parent) std::exchange(parent, nullptr)->DestroyWindow();
            return CWnd::WindowProc(message, wParam, lParam);
        }
    } child;
    child.parent = &parent;
    child.fatal = GetParam().message;
    if (child.Create(L"STATIC", L"", WS_CHILD | WS_VISIBLE, CRect(1, 2, 20, 20), &parent, 7)) {
        Dispatch();
        child.Invalidate();
        child.UpdateWindow();
        child.SetTimer(1, 1, nullptr);
        while (child.parent && child.fatal == WM_TIMER)
            Dispatch();
        child.EnableWindow(FALSE);
        child.MoveWindow(2, 2, 30, 30);
        child.SendMessage(WM_CLOSE);
    }
    EXPECT_EQ(child.GetSafeHwnd(), nullptr);
    EXPECT_EQ(parent.GetSafeHwnd(), nullptr);
    EXPECT_EQ(parent.Count(WM_NCDESTROY), 1);
}

// A frame made with new, which destroys its window, and itself with it, at the first message of one
// kind.
class FatalFrame : public CFrameWnd
{
public:
    FatalFrame(UINT fatal, int& deleted) : m_fatal(fatal), m_deleted(&deleted) {}
    ~FatalFrame() override { ++*m_deleted; }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message != m_fatal) return CFrameWnd::WindowProc(message, wParam, lParam);
        m_fatal = 0;
        DestroyWindow();
        return 0;
    }

private:
    UINT m_fatal;
    int* m_deleted;
};

TEST_P(DestroyedIn, AMessageAFrameMadeWithNewDeletesItselfOnce)
{
    const HostApplication host;
    int deleted = 0;
    auto* const frame = new FatalFrame(GetParam().message, deleted);
    const auto next = [&](auto action) {
        if (deleted == 0) action();
    };
    next([&] { frame->Create(nullptr, L"", WS_OVERLAPPED, CRect(10, 20, 50, 50)); });
    next([&] { framework::NativeWidget(*frame)->show(); });
    next([] { Dispatch(); });
    next([&] { frame->Invalidate(); });
    next([&] { frame->UpdateWindow(); });
    next([&] { frame->SetTimer(1, 1, nullptr); });
    while (deleted == 0 && GetParam().message == WM_TIMER)
        Dispatch();
    next([&] { frame->EnableWindow(FALSE); });
    next([&] { frame->MoveWindow(5, 6, 70, 80); });
    next([&] { frame->SendMessage(WM_CLOSE); });
    EXPECT_EQ(deleted, 1);
    Dispatch();
}

INSTANTIATE_TEST_SUITE_P(
    Messages, DestroyedIn,
    testing::Values(FatalMessage{"Create", WM_CREATE}, FatalMessage{"Size", WM_SIZE},
                    FatalMessage{"Move", WM_MOVE}, FatalMessage{"ShowWindow", WM_SHOWWINDOW},
                    FatalMessage{"EraseBackground", WM_ERASEBKGND}, FatalMessage{"Paint", WM_PAINT},
                    FatalMessage{"Timer", WM_TIMER}, FatalMessage{"Enable", WM_ENABLE},
                    FatalMessage{"Close", WM_CLOSE}, FatalMessage{"Destroy", WM_DESTROY},
                    FatalMessage{"NcDestroy", WM_NCDESTROY}),
    [](const auto& message) { return std::string(message.param.name); });

// Runs a call at the first message of a kind, or before there is anything on the screen.
class Calling : public Recorded
{
public:
    UINT at = 0;
    std::function<void()> call;
    std::function<void()> early;

protected:
    void PreSubclassWindow() override
    {
        if (early) early();
    }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == at && call) std::exchange(call, nullptr)();
        return Recorded::WindowProc(message, wParam, lParam);
    }
};

TEST(WindowBeforeItIsShown, IsPlacedSizedAndDrawnOn)
{
    const HostApplication host;
    Calling window;
    int looked = 0;
    window.early = [&] {
        ++looked;
        EXPECT_EQ(framework::NativeWidget(window), nullptr);
        window.Invalidate();
        EXPECT_FALSE(window.GetUpdateRect(nullptr)) << "nothing is there";
        POINT corner{0, 0};
        window.ClientToScreen(&corner);
        EXPECT_EQ(CPoint(corner), CPoint(10, 20));
        EXPECT_EQ(window.SetTimer(3, 1000, nullptr), 0U);
        EXPECT_FALSE(window.KillTimer(3));
        window.SetRedraw(TRUE);
        EXPECT_TRUE(window.SetWindowPos(nullptr, 5, 6, 30, 25, SWP_NOREDRAW | SWP_FRAMECHANGED));
        EXPECT_TRUE(window.SetWindowPos(nullptr, 0, 0, 50, 45, SWP_NOMOVE | SWP_NOREDRAW));
        CRect place;
        window.GetWindowRect(&place);
        EXPECT_EQ(place, CRect(5, 6, 55, 51));
        CClientDC dc(&window);
        EXPECT_EQ(dc.SetPixel(49, 44, RGB(9, 8, 7)), RGB(9, 8, 7));
        window.SetFocus();
        EXPECT_EQ(CWnd::GetFocus(), &window);
    };
    ASSERT_TRUE(window.CreateTop());
    EXPECT_EQ(looked, 1);
    CRect place;
    window.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(10, 20, 50, 50)) << "as it was asked for";
    EXPECT_EQ(framework::NativeWidget(window)->pos(), QPoint(10, 20));
}

TEST(WindowWhoseWidgetEnds, AnswersCallsUntilItHasEnded)
{
    const HostApplication host;
    Recorded other;
    ASSERT_TRUE(other.CreateTop());
    Calling window;
    ASSERT_TRUE(window.CreateTop(WS_POPUP | WS_VISIBLE));
    window.at = WM_DESTROY;
    bool called = false;
    window.call = [&] {
        called = true;
        EXPECT_EQ(framework::NativeWidget(window), nullptr);
        window.MoveWindow(1, 2, 30, 20);
        EXPECT_TRUE(window.SetWindowPos(nullptr, 0, 0, 50, 40, SWP_NOMOVE));
        window.ShowWindow(SW_HIDE);
        window.ShowWindow(SW_SHOW);
        window.Invalidate();
        POINT corner{0, 0};
        window.ClientToScreen(&corner);
        EXPECT_EQ(CPoint(corner), CPoint(1, 2));
        window.SetWindowText(L"late");
        EXPECT_EQ(window.GetWindowTextLength(), 4);
        window.SetTimer(3, 1000, nullptr);
        EXPECT_FALSE(window.KillTimer(3));
        CRect client;
        window.GetClientRect(&client);
        EXPECT_EQ(client, CRect(0, 0, 50, 40));
        window.SetParent(&other);
        EXPECT_EQ(window.GetParent(), &other);
    };
    delete framework::NativeWidget(window);
    EXPECT_TRUE(called);
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    EXPECT_NE(other.GetSafeHwnd(), nullptr);
}

TEST(WindowThatEndsInAMessage, GetsNoMoreOfTheCall)
{
    const HostApplication host;
    Recorded captured;
    ASSERT_TRUE(captured.CreateTop(WS_POPUP | WS_VISIBLE));
    captured.SetCapture();
    captured.SetCapture();
    EXPECT_EQ(captured.Count(WM_CAPTURECHANGED), 0) << "it has it already";
    captured.fatal = WM_CAPTURECHANGED;
    EXPECT_FALSE(captured.EnableWindow(FALSE)) << "it was not disabled before";
    EXPECT_EQ(captured.GetSafeHwnd(), nullptr);
    EXPECT_EQ(captured.Count(WM_ENABLE), 0);

    Recorded painted;
    ASSERT_TRUE(painted.CreateTop(WS_POPUP | WS_VISIBLE));
    painted.fatal = WM_PAINT;
    EXPECT_TRUE(
        painted.RedrawWindow(nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN));
    EXPECT_EQ(painted.GetSafeHwnd(), nullptr);
}

TEST(WindowThatEndsInAMessage, IsNotPaintedAfterTheSiblingThatEndsIt)
{
    const HostApplication host;
    Recorded parent;
    ASSERT_TRUE(parent.CreateTop(WS_POPUP | WS_VISIBLE));
    Calling first;
    Recorded second;
    const CRect box(0, 0, 9, 9);
    ASSERT_TRUE(first.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, box, &parent, 1));
    ASSERT_TRUE(second.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, box, &parent, 2));
    first.at = WM_PAINT;
    first.call = [&second] { second.DestroyWindow(); };
    parent.RedrawWindow(nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    EXPECT_EQ(first.Count(WM_PAINT), 1);
    EXPECT_EQ(second.Count(WM_PAINT), 0);
    EXPECT_EQ(second.GetSafeHwnd(), nullptr);
}

TEST(WindowThatEndsInAMessage, LeavesTheFocusToTheNextOrToNobody)
{
    const HostApplication host;
    Calling before;
    Recorded next;
    ASSERT_TRUE(before.CreateTop(WS_POPUP | WS_VISIBLE));
    ASSERT_TRUE(next.CreateTop(WS_POPUP | WS_VISIBLE));
    before.SetFocus();
    before.fatal = WM_KILLFOCUS;
    EXPECT_EQ(next.SetFocus(), nullptr) << "the one before is gone";
    EXPECT_EQ(CWnd::GetFocus(), &next);
    EXPECT_EQ(next.Count(WM_SETFOCUS), 1);

    ASSERT_TRUE(before.CreateTop(WS_POPUP | WS_VISIBLE));
    before.SetFocus();
    before.at = WM_KILLFOCUS;
    before.call = [&next] { next.DestroyWindow(); };
    next.SetFocus();
    EXPECT_EQ(next.Count(WM_SETFOCUS), 1) << "it is gone";
    EXPECT_NE(CWnd::GetFocus(), &next);
}

TEST(Window, MovedUpOrDownOnlyIsTold)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop());
    const int before = window.Count(WM_MOVE);
    window.MoveWindow(10, 50, 40, 30);
    EXPECT_EQ(window.Count(WM_MOVE), before + 1);
    window.MoveWindow(10, 50, 40, 30);
    EXPECT_EQ(window.Count(WM_MOVE), before + 1);
    QWidget* const widget = framework::NativeWidget(window);
    widget->show();
    Dispatch();
    CRect place;
    window.GetWindowRect(&place);
    const int shown = window.Count(WM_MOVE);
    widget->move(widget->pos() + QPoint(0, 20));
    Dispatch();
    CRect moved;
    window.GetWindowRect(&moved);
    EXPECT_EQ(moved, place + CPoint(0, 20));
    EXPECT_EQ(window.Count(WM_MOVE), shown + 1);
}

TEST(Window, HasOneTimerOfANumber)
{
    const HostApplication host;
    Recorded window;
    ASSERT_TRUE(window.CreateTop());
    EXPECT_EQ(window.SetTimer(3, 60000, nullptr), 3U);
    EXPECT_EQ(window.SetTimer(3, 10, nullptr), 3U);
    for (int i = 0; i < 10000 && window.Count(WM_TIMER) == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        Dispatch();
    }
    EXPECT_GT(window.Count(WM_TIMER), 0) << "the shorter period";
    EXPECT_TRUE(window.KillTimer(3));
    EXPECT_FALSE(window.KillTimer(3));
}

TEST(Window, ThatHidesWhenItIsClosedIsClosedForQt)
{
    const HostApplication host;
    class Hiding : public Recorded
    {
    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message != WM_CLOSE) return Recorded::WindowProc(message, wParam, lParam);
            ShowWindow(SW_HIDE);
            return 0;
        }
    } hiding;
    ASSERT_TRUE(hiding.CreateTop(WS_POPUP | WS_VISIBLE));
    EXPECT_TRUE(framework::NativeWidget(hiding)->close());
    EXPECT_NE(hiding.GetSafeHwnd(), nullptr);
    EXPECT_FALSE(hiding.IsWindowVisible());
}

// A variable of the environment that has another value meanwhile, or none.
class Variable
{
public:
    Variable(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~Variable()
    {
        if (m_wasSet)
            qputenv(m_name, m_before);
        else
            qunsetenv(m_name);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_before;
};

TEST(Screen, OfWaylandIsWhereItsSocketIs)
{
    const QTemporaryDir folder;
    const QByteArray path = folder.path().toUtf8();
    QFile socket(folder.filePath(QStringLiteral("wayland-7")));
    ASSERT_TRUE(socket.open(QIODevice::WriteOnly));
    const Variable display("DISPLAY", ":64999"); // nobody answers there
    const Variable runtime("XDG_RUNTIME_DIR", path);
    for (const char* const platform : {"", "wayland", "wayland-egl"}) {
        const Variable wanted("QT_QPA_PLATFORM", platform);
        const auto answers = [](const QByteArray& name) {
            const Variable wayland("WAYLAND_DISPLAY", name);
            return framework::ScreenAnswers();
        };
        EXPECT_TRUE(answers("wayland-7")) << platform;
        EXPECT_TRUE(answers(path + "/wayland-7")) << platform;
        EXPECT_FALSE(answers("wayland-8")) << platform;
        EXPECT_FALSE(answers(path + "/wayland-8")) << platform;
        EXPECT_FALSE(answers("")) << platform;
    }
}

TEST(Application, LeavesTheWindowsOfTheOneAroundIt)
{
    Arguments outerArguments;
    const framework::Application outer(outerArguments.count, outerArguments.values,
                                       framework::Display::Memory);
    Recorded before;
    ASSERT_TRUE(before.CreateTop());
    Recorded within;
    {
        Arguments arguments;
        const framework::Application inner(arguments.count, arguments.values);
        ASSERT_TRUE(within.CreateTop());
    }
    EXPECT_NE(before.GetSafeHwnd(), nullptr);
    EXPECT_EQ(within.GetSafeHwnd(), nullptr) << "made while the inner one existed";
}

TEST(Application, LeavesTheEnvironmentAsItWas)
{
    const auto chosenWithin = [] {
        Arguments arguments;
        const framework::Application application(arguments.count, arguments.values,
                                                 framework::Display::Memory);
        EXPECT_EQ(QGuiApplication::platformName(), QStringLiteral("offscreen"));
        return qgetenv("QT_QPA_PLATFORM");
    };
    qunsetenv("QT_QPA_PLATFORM");
    chosenWithin();
    EXPECT_FALSE(qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
    qputenv("QT_QPA_PLATFORM", "xcb");
    EXPECT_EQ(chosenWithin(), "xcb");
    qputenv("QT_QPA_PLATFORM", "offscreen");
}

std::string ErrorOutputOf(void (*show)())
{
    testing::internal::CaptureStderr();
    show();
    return testing::internal::GetCapturedStderr();
}

void ShowMessage()
{
    EXPECT_EQ(MessageBoxW(nullptr, L"The turn was too short.", L"Calibration", MB_ICONSTOP), IDOK);
}

TEST(MessageBox, GoesToStandardErrorInAProgramWithoutWindows)
{
    Arguments arguments;
    const QCoreApplication core(arguments.count, arguments.values);
    const framework::Application application(arguments.count, arguments.values);
    EXPECT_EQ(ErrorOutputOf(ShowMessage), "Calibration: The turn was too short.\n");
    Recorded window;
    EXPECT_FALSE(window.CreateTop());
}

TEST(MessageBox, GoesToStandardErrorInAProgramWithoutWidgets)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Arguments arguments;
    const QGuiApplication gui(arguments.count, arguments.values);
    const framework::Application application(arguments.count, arguments.values);
    EXPECT_EQ(ErrorOutputOf(ShowMessage), "Calibration: The turn was too short.\n");
}

TEST(MessageBox, GoesToStandardErrorWhereNobodySeesIt)
{
    Arguments arguments;
    const framework::Application application(arguments.count, arguments.values,
                                             framework::Display::Memory);
    EXPECT_EQ(ErrorOutputOf(ShowMessage), "Calibration: The turn was too short.\n");
}

TEST(Application, DrawsIntoMemoryWhereTheDisplayDoesNotAnswer)
{
    qunsetenv("QT_QPA_PLATFORM");
    qunsetenv("WAYLAND_DISPLAY");
    const QByteArray before = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":64999");
    {
        Arguments arguments;
        const framework::Application application(arguments.count, arguments.values);
        EXPECT_EQ(QGuiApplication::platformName(), QStringLiteral("offscreen"));
        EXPECT_EQ(ErrorOutputOf(ShowMessage), "Calibration: The turn was too short.\n");
    }
    if (before.isEmpty())
        qunsetenv("DISPLAY");
    else
        qputenv("DISPLAY", before);
}

} // namespace
} // namespace framework::test
