// SPDX-License-Identifier: MIT
//
// Calls GetDC, and ReleaseDC at the end of the scope.
//
//   const Borrowed dc(window);
//   if (dc) dc->SetPixel(3, 4, RGB(255, 0, 0));
#pragma once

#include "framework/gui/Wnd.h"

namespace framework {

class Borrowed
{
public:
    explicit Borrowed(CWnd& window) : Borrowed(&window) {}
    /// Holds no context for a null window.
    explicit Borrowed(CWnd* window) : m_window(window), m_dc(window ? window->GetDC() : nullptr) {}
    ~Borrowed()
    {
        if (m_dc) m_window->ReleaseDC(m_dc);
    }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    CDC* Get() const { return m_dc; }
    CDC& operator*() const { return *m_dc; }
    CDC* operator->() const { return m_dc; }
    explicit operator bool() const { return m_dc != nullptr; }

private:
    CWnd* m_window;
    CDC* m_dc;
};

} // namespace framework
