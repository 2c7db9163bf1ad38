// SPDX-License-Identifier: MIT
#include "framework/gui/qt/QtPost.h"

#include <QCoreApplication>

namespace framework {

QEvent::Type PostedEvent::Kind()
{
    static const int kind = QEvent::registerEventType();
    return static_cast<Type>(kind);
}

void PostOffice::Add(const WindowEvents& window, QObject& widget)
{
    const std::scoped_lock lock(m_mutex);
    m_widgets[&window] = &widget;
}

void PostOffice::Remove(const QObject& widget)
{
    const std::scoped_lock lock(m_mutex);
    std::erase_if(m_widgets, [&](const auto& known) { return known.second == &widget; });
}

bool PostOffice::Post(const WindowEvents* window, unsigned message, std::uintptr_t wParam,
                      std::intptr_t lParam)
{
    const std::scoped_lock lock(m_mutex);
    const auto known = m_widgets.find(window);
    if (known == m_widgets.end()) return false;
    QCoreApplication::postEvent(known->second, new PostedEvent(message, wParam, lParam));
    return true;
}

PostOffice& Post()
{
    static PostOffice& office = *new PostOffice; // as the windows that it knows
    return office;
}

bool PostTo(const WindowEvents* window, unsigned message, std::uintptr_t wParam,
            std::intptr_t lParam)
{
    return Post().Post(window, message, wParam, lParam);
}

} // namespace framework
