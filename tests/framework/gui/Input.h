// SPDX-License-Identifier: MIT
//
// Windows that record the messages of mouse, keyboard and focus, and the events that Qt sends them.
#pragma once

#include "framework/gui/QtInterop.h"
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

#include <memory>
#include <ostream>
#include <utility>
#include <vector>

namespace framework::test {

struct Told
{
    UINT message;
    WPARAM wParam;
    LPARAM lParam;

    bool operator==(const Told&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Told& told)
    {
        return out << std::hex << '{' << told.message << ' ' << told.wParam << ' ' << told.lParam
                   << '}' << std::dec;
    }
};
using Messages = std::vector<Told>;

inline bool IsInput(UINT message)
{
    return (message >= WM_KEYDOWN && message <= WM_SYSCHAR)
           || (message >= WM_MOUSEMOVE && message <= WM_MOUSEWHEEL) || message == WM_SETFOCUS
           || message == WM_KILLFOCUS || message == WM_COMMAND || message == WM_CAPTURECHANGED
           || message == WM_MOUSELEAVE;
}

// Records the messages of input.
class Listening : public CWnd
{
public:
    Messages told;
    bool answersKeys = false;
    bool answersWheel = false;

    Messages Take() { return std::exchange(told, {}); }

    BOOL CreateTop(UINT classStyle = 0)
    {
        return CreateEx(0, AfxRegisterWndClass(classStyle), L"", WS_POPUP | WS_VISIBLE, 50, 60, 200,
                        100, nullptr, nullptr);
    }
    BOOL CreateChild(CWnd& parent, LPCTSTR className, DWORD style, const CRect& rect, UINT id)
    {
        return Create(className, L"", WS_CHILD | WS_VISIBLE | style, rect, &parent, id);
    }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (IsInput(message)) told.push_back({message, wParam, lParam});
        if (answersKeys && message == WM_KEYDOWN) return 0;
        if (answersWheel && message == WM_MOUSEWHEEL) return 0;
        return CWnd::WindowProc(message, wParam, lParam);
    }
};

constexpr LPARAM At(int x, int y)
{
    return MAKELPARAM(x, y);
}

struct Keys
{
    Qt::MouseButtons buttons;
    Qt::KeyboardModifiers modifiers;
};

// Sends the events that Qt sends to the widget of a window, at a point of the widget.
class Input : public testing::Test
{
protected:
    Input()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_application = std::make_unique<QApplication>(m_count, m_values);
    }

    static void Mouse(CWnd& window, QEvent::Type type, QPoint at, Qt::MouseButton button,
                      const Keys& held)
    {
        QWidget* const widget = framework::NativeWidget(window);
        QMouseEvent event(type, at, widget->mapToGlobal(at), button, held.buttons, held.modifiers);
        QCoreApplication::sendEvent(widget, &event);
    }
    static void Move(CWnd& window, QPoint at, const Keys& held = {})
    {
        Mouse(window, QEvent::MouseMove, at, Qt::NoButton, held);
    }
    static void Press(CWnd& window, QPoint at, Qt::MouseButton button = Qt::LeftButton)
    {
        Mouse(window, QEvent::MouseButtonPress, at, button, {button, {}});
    }
    static void Release(CWnd& window, QPoint at, Qt::MouseButton button = Qt::LeftButton)
    {
        Mouse(window, QEvent::MouseButtonRelease, at, button, {});
    }
    static bool Wheel(CWnd& window, QPoint at, int turned, const Keys& held = {})
    {
        QWidget* const widget = framework::NativeWidget(window);
        QWheelEvent event(at, widget->mapToGlobal(at), {}, {0, turned}, held.buttons,
                          held.modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(widget, &event);
        return event.isAccepted();
    }
    static void Leave(CWnd& window)
    {
        QEvent event(QEvent::Leave);
        QCoreApplication::sendEvent(framework::NativeWidget(window), &event);
    }
    static bool Key(CWnd& window, QEvent::Type type, int key, const QString& text = {},
                    Qt::KeyboardModifiers modifiers = {}, bool isRepeat = false)
    {
        QKeyEvent event(type, key, modifiers, text, isRepeat);
        QCoreApplication::sendEvent(framework::NativeWidget(window), &event);
        return event.isAccepted();
    }

    int m_count = 1;
    char m_name[5] = "test";
    char* m_values[2] = {m_name, nullptr};
    std::unique_ptr<QApplication> m_application;
};

} // namespace framework::test
