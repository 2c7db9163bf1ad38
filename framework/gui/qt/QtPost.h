// SPDX-License-Identifier: MIT
//
// Messages posted to windows: from any thread into Qt's queue of events.
#pragma once

#include "framework/gui/detail/Toolkit.h"

#include <QEvent>

#include <map>
#include <mutex>

class QObject;

namespace framework {

class PostedEvent : public QEvent
{
public:
    PostedEvent(unsigned givenMessage, std::uintptr_t givenWParam, std::intptr_t givenLParam)
        : QEvent(Kind()), message(givenMessage), wParam(givenWParam), lParam(givenLParam)
    {}

    static Type Kind();

    unsigned message;
    std::uintptr_t wParam;
    std::intptr_t lParam;
};

// Knows the widgets of the windows that exist. Every call may come from any thread.
class PostOffice
{
public:
    void Add(const WindowEvents& window, QObject& widget);
    void Remove(const QObject& widget);
    bool Post(const WindowEvents* window, unsigned message, std::uintptr_t wParam,
              std::intptr_t lParam);

private:
    std::mutex m_mutex;
    std::map<const WindowEvents*, QObject*> m_widgets;
};

PostOffice& Post();

} // namespace framework
