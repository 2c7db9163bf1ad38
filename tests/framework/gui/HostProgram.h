// SPDX-License-Identifier: MIT
//
// A host program of a test: Qt's application, and a window that records its messages.
#pragma once

#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <QApplication>

#include <algorithm>
#include <memory>
#include <vector>

namespace framework::test {

// The arguments of a program.
struct Arguments
{
    int count = 1;
    char name[5] = "test";
    char* values[2] = {name, nullptr};
};

// Qt's application as a host has it, without a screen.
struct HostApplication
{
    Arguments arguments;
    std::unique_ptr<QApplication> application;

    HostApplication()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QApplication>(arguments.count, arguments.values);
    }
};

// Records its messages, and destroys its window at the first of one kind.
class Recorded : public CWnd
{
public:
    std::vector<UINT> messages;
    UINT fatal = 0;

    BOOL CreateTop(DWORD style = WS_OVERLAPPED, int width = 40, int height = 30)
    {
        return CreateEx(0, AfxRegisterWndClass(0, nullptr, CBrush(RGB(1, 2, 3))), L"host", style,
                        10, 20, width, height, nullptr, 0);
    }
    int Count(UINT message) const
    {
        return static_cast<int>(std::count(messages.begin(), messages.end(), message));
    }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        messages.push_back(message);
        if (message == fatal) {
            fatal = 0;
            DestroyWindow();
            return 0;
        }
        return CWnd::WindowProc(message, wParam, lParam);
    }
};

inline void Dispatch()
{
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
}

} // namespace framework::test
