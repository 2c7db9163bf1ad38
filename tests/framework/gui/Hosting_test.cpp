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
#include <QWidget>

#include <ostream>
#include <string>
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
