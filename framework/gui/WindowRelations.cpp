// SPDX-License-Identifier: MIT
//
// A window beside others: parent and owner, focus and capture, places on the screen, children by
// id.
#include "framework/gui/WindowCalls.h"
#include "framework/gui/Wnd.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

using framework::WindowRecord;
using framework::Windows;

CWnd* CWnd::SetParent(CWnd* parent)
{
    WindowRecord* const next = parent ? parent->m_hWnd : nullptr;
    if (!m_hWnd || (parent && !next) || (next && next->IsInside(*m_hWnd))) return nullptr;
    const std::shared_ptr<WindowRecord> window = m_hWnd->shared_from_this();
    WindowRecord* const previous = window->parent;
    // What takes memory comes first.
    CWnd* const wrapped = FromHandle(previous);
    if (previous == next) return wrapped;
    if (next) {
        next->children.push_back(window.get());
        window->ownedBy = nullptr;
    }
    if (previous) std::erase(previous->children, window.get());
    window->parent = next;
    const std::shared_ptr<WindowRecord> before = previous ? previous->shared_from_this() : nullptr;
    // A widget that changes its parent loses the focus for a moment: each step may end the window.
    if (window->native) window->native->SetParent(next ? next->native.get() : nullptr);
    if (window->native)
        window->native->Place(window->origin.x, window->origin.y, window->width, window->height);
    if (window->native) window->native->Show((window->style & WS_VISIBLE) != 0);
    return before && !before->isGone ? FromHandle(before.get()) : nullptr;
}

CWnd* CWnd::GetOwner() const
{
    if (!m_hWnd) return nullptr;
    for (WindowRecord* const owner : {m_hWnd->owner, m_hWnd->parent})
        if (owner) return FromHandle(owner);
    return FromHandle(m_hWnd->ownedBy);
}

void CWnd::SetOwner(CWnd* owner)
{
    if (m_hWnd) m_hWnd->owner = owner ? owner->m_hWnd : nullptr;
}

void CWnd::SetDlgItemText(int id, LPCTSTR text)
{
    if (CWnd* const item = GetDlgItem(id)) item->SetWindowText(text);
}

int CWnd::GetDlgItemText(int id, CString& text) const
{
    text = L"";
    if (const CWnd* const item = GetDlgItem(id)) item->GetWindowText(text);
    return text.GetLength();
}

int CWnd::GetDlgItemText(int id, LPTSTR buffer, int size) const
{
    if (buffer && size > 0) *buffer = L'\0';
    const CWnd* const item = GetDlgItem(id);
    return item ? item->GetWindowText(buffer, size) : 0;
}

void CWnd::ClientToScreen(LPPOINT point) const
{
    if (!m_hWnd || !point) return;
    const POINT corner = m_hWnd->ClientOnScreen();
    *point = {point->x + corner.x, point->y + corner.y};
}

void CWnd::ClientToScreen(LPRECT rect) const
{
    if (!m_hWnd || !rect) return;
    const POINT corner = m_hWnd->ClientOnScreen();
    *rect = CRect(*rect) + corner;
}

void CWnd::ScreenToClient(LPPOINT point) const
{
    if (!m_hWnd || !point) return;
    const POINT corner = m_hWnd->ClientOnScreen();
    *point = {point->x - corner.x, point->y - corner.y};
}

void CWnd::ScreenToClient(LPRECT rect) const
{
    if (!m_hWnd || !rect) return;
    const POINT corner = m_hWnd->ClientOnScreen();
    *rect = CRect(*rect) - corner;
}

BOOL CWnd::EnableWindow(BOOL enable)
{
    if (!m_hWnd) return FALSE;
    const std::shared_ptr<WindowRecord> window = m_hWnd->shared_from_this();
    const BOOL wasDisabled = !IsWindowEnabled();
    if (wasDisabled == !enable) return wasDisabled;
    if (enable)
        window->style &= ~WS_DISABLED;
    else
        window->style |= WS_DISABLED;
    if (!enable && Windows().capture == window.get()) framework::MoveCapture(nullptr);
    if (!window->isGone) window->Send(WM_ENABLE, enable ? TRUE : FALSE, 0);
    return wasDisabled;
}

BOOL CWnd::IsWindowEnabled() const
{
    return m_hWnd && !(m_hWnd->style & WS_DISABLED);
}

CWnd* CWnd::SetFocus()
{
    CWnd* const previous = GetFocus();
    if (!m_hWnd || !IsWindowEnabled()) return nullptr;
    const std::shared_ptr<WindowRecord> before =
        previous ? previous->m_hWnd->shared_from_this() : nullptr;
    framework::GiveFocus(*m_hWnd);
    return before && !before->isGone ? FromHandle(before.get()) : nullptr;
}

CWnd* CWnd::GetFocus()
{
    return FromHandle(Windows().focus);
}

CWnd* CWnd::SetCapture()
{
    if (!m_hWnd) return nullptr;
    WindowRecord* const previous = Windows().capture;
    framework::MoveCapture(m_hWnd);
    return Windows().Holds(previous) ? FromHandle(previous) : nullptr;
}

CWnd* CWnd::GetCapture()
{
    return FromHandle(Windows().capture);
}

BOOL CWnd::RedrawWindow(LPCRECT rect, CRgn*, UINT flags)
{
    if (!m_hWnd) return FALSE;
    const std::shared_ptr<WindowRecord> window = m_hWnd->shared_from_this();
    if (flags & RDW_INVALIDATE) InvalidateRect(rect, (flags & RDW_ERASE) != 0);
    if (flags & RDW_VALIDATE) ValidateRect(rect);
    if (flags & (RDW_UPDATENOW | RDW_ERASENOW)) UpdateWindow();
    if (!(flags & RDW_ALLCHILDREN) || window->isGone) return TRUE;
    std::vector<std::shared_ptr<WindowRecord>> children;
    for (WindowRecord* child : window->children)
        children.push_back(child->shared_from_this());
    for (const std::shared_ptr<WindowRecord>& child : children)
        if (!child->isGone) FromHandle(child.get())->RedrawWindow(nullptr, nullptr, flags);
    return TRUE;
}

void CWnd::SetRedraw(BOOL redraw)
{
    SendMessage(WM_SETREDRAW, redraw ? TRUE : FALSE, 0);
}

BOOL CWnd::PostMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    return ::PostMessage(m_hWnd, message, wParam, lParam);
}

int CWnd::MessageBox(LPCTSTR text, LPCTSTR title, UINT style)
{
    return MessageBoxW(m_hWnd, text, title, style);
}
