// SPDX-License-Identifier: MIT
//
// Text, message boxes, pictures as files, and the connection to the windowing system.
#include "framework/core/MessageBox.h"
#include "framework/gui/Application.h"
#include "framework/gui/Diagnostics.h"
#include "framework/gui/QtInterop.h"
#include "framework/gui/WindowCalls.h"
#include "tests/ScratchFolder.h"
#include "tests/memory/Drawn.h"
#include "tests/memory/Rows.h"

#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace sweep {

namespace {

constexpr const wchar_t* kLine = L"The tip of the pole && a word that is &long, 12.345 m away";

Row Written(const char* covers, std::function<void(Paper&)> run)
{
    // A line that was drawn before memory ran out stays.
    const AfterFailure<Paper> half{[](const Paper& p) { return p.result == 0; }, {}};
    return Operation<Paper>(
        covers, Shortage::Throws, std::move(run), [](const Paper& p) { return Describe(p); }, half);
}

void AddTextRows(std::vector<Row>& rows)
{
    rows.push_back(Written("CDC::DrawText", [](Paper& p) {
        CRect box(2, 2, 40, 30);
        p.result = p.dc.DrawText(CString(kLine), &box, DT_WORDBREAK);
    }));
    rows.push_back(Written("CDC::DrawText", [](Paper& p) {
        CRect box(2, 2, 40, 30);
        p.result = p.dc.DrawText(kLine, 40, &box, DT_CALCRECT);
        p.told = Text(box);
    }));
    rows.push_back(Operation<Paper>(
        "CDC::TextOut CDC::ExtTextOut", Shortage::Throws,
        [](Paper& p) { p.result = p.dc.TextOut(3, 4, CString(kLine)); },
        [](const Paper& p) { return Describe(p); }));
    rows.push_back(Operation<Paper>(
        "CDC::ExtTextOut", Shortage::Never,
        [](Paper& p) { p.result = p.dc.ExtTextOut(3, 4, 0, nullptr, kLine, 20, nullptr); },
        [](const Paper& p) { return Describe(p); }));
    rows.push_back(Operation<Paper>(
        "CDC::GetTextMetrics CDC::GetTextExtent", Shortage::Never,
        [](Paper& p) {
            TEXTMETRIC metrics;
            p.result = p.dc.GetTextMetrics(&metrics) + metrics.tmHeight;
            p.result += p.dc.GetTextExtent(L"tip").cx;
        },
        [](const Paper& p) { return Describe(p); }));
}

int Answer(const wchar_t*, const wchar_t*, unsigned)
{
    return IDRETRY;
}

// A host that answers message boxes itself, by something that has to be copied.
struct Asked
{
    std::shared_ptr<int> kept = std::make_shared<int>(IDRETRY);
    framework::MessageBoxHandler previous;
    CWnd window;
    int result = 0;

    Asked()
    {
        previous = framework::SetMessageBoxHandler(
            [answer = kept](const wchar_t*, const wchar_t*, unsigned) { return *answer; });
    }
    Asked(const Asked&) = delete;
    Asked& operator=(const Asked&) = delete;
    ~Asked() { framework::SetMessageBoxHandler(previous); }
};

Row Asking(const char* covers, std::function<void(Asked&)> run)
{
    return Operation<Asked>(covers, Shortage::Throws, std::move(run),
                            [](const Asked& a) { return std::to_string(a.result); });
}

// Standard error goes nowhere.
struct Silenced
{
    int kept = ::dup(2);
    int result = 0;

    Silenced()
    {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        ::dup2(nowhere, 2);
        ::close(nowhere);
    }
    Silenced(const Silenced&) = delete;
    Silenced& operator=(const Silenced&) = delete;
    ~Silenced()
    {
        ::dup2(kept, 2);
        ::close(kept);
    }
};

// A second application on the connection of the first: it is that of this program.
struct Connected
{
    int count = 1;
    char name[5] = "test";
    char* values[2] = {name, nullptr};
    framework::MessageBoxHandler before = framework::SetMessageBoxHandler(Answer);
    std::unique_ptr<framework::Application> application;

    Connected() = default;
    Connected(const Connected&) = delete;
    Connected& operator=(const Connected&) = delete;
    ~Connected()
    {
        application.reset();
        framework::SetMessageBoxHandler(before);
    }
};

std::string DescribeConnected(const Connected& c)
{
    // Without a screen a box goes on to the handler of the host.
    return std::string(c.application ? "connected " : "not connected ")
           + std::to_string(MessageBoxW(nullptr, L"", L"", MB_OK));
}

// A window that ends the program when it is told to.
struct Quitting : CWnd
{
    framework::Application* application = nullptr;
    int result = 0;

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message != WM_APP) return CWnd::WindowProc(message, wParam, lParam);
        ++result;
        application->Quit(7);
        return 0;
    }
};

struct Posted : Connected
{
    Quitting window;

    Posted()
    {
        application = std::make_unique<framework::Application>(count, values);
        window.application = application.get();
        window.CreateEx(0, PlainClass(), L"", WS_OVERLAPPED, 0, 0, 9, 9, nullptr, 0);
        window.PostMessage(WM_APP);
    }
};

struct Saved : Pair
{
    ScratchFolder folder;
    CString path{folder.Path("picture.png").c_str()};
};

std::string DescribeSaved(const Saved& s)
{
    const std::string bytes = s.folder.Read("picture.png");
    return std::to_string(s.result) + ' ' + std::to_string(bytes.size());
}

// What looks for a screen that the environment names allocates, and is not ours.
struct NoScreen
{
    bool answers = true;

    NoScreen()
    {
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            ::unsetenv(name);
    }
};

} // namespace

std::vector<Row> TextRows()
{
    std::vector<Row> rows;
    AddTextRows(rows);
    rows.push_back(Asking("CWnd::MessageBox", [](Asked& a) {
        a.result = a.window.MessageBox(L"The pole is not calibrated.", L"Pole");
    }));
    rows.push_back(Asking("AfxMessageBox AfxGetInstanceHandle",
                          [](Asked& a) { a.result = AfxMessageBox(L"Not calibrated."); }));
    rows.push_back(Operation<Silenced>(
        "framework::WriteTrace", Shortage::Throws,
        [](Silenced& s) {
            framework::WriteTrace(L"too long for a short text: 12345678901234567890\n");
            s.result = 1;
        },
        [](const Silenced& s) { return std::to_string(s.result); }));
    rows.push_back(Operation<Connected>(
        "framework::Application::Application framework::Application::~Application",
        Shortage::Throws,
        [](Connected& c) {
            if (!c.application)
                c.application = std::make_unique<framework::Application>(c.count, c.values);
        },
        DescribeConnected));
    rows.push_back(Operation<Saved>(
        "framework::SaveWindowImage", Shortage::Reports,
        [](Saved& s) { s.result = framework::SaveWindowImage(s.top, s.path); }, DescribeSaved));
    rows.push_back(WithoutMemory<Pair>("framework::NativeWidget", [](Pair& p) {
        EXPECT_NE(framework::NativeWidget(p.top), nullptr);
    }));
    const auto tell = [](const Posted& p) { return std::to_string(p.window.result); };
    rows.push_back(Operation<Posted>(
        "framework::Application::DispatchPending", Shortage::Never,
        [](Posted& p) { p.application->DispatchPending(); }, tell));
    rows.push_back(Operation<Posted>(
        "framework::Application::Run framework::Application::Quit", Shortage::Never,
        [](Posted& p) {
            if (p.window.result == 0) p.window.result += p.application->Run();
        },
        tell));
    rows.push_back(Operation<NoScreen>(
        "framework::ScreenAnswers", Shortage::Never,
        [](NoScreen& none) { none.answers = framework::ScreenAnswers(); },
        [](const NoScreen& none) { return std::to_string(none.answers); }));
    return rows;
}

} // namespace sweep
