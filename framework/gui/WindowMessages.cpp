// SPDX-License-Identifier: MIT
//
// How a message finds the member that handles it, and what happens by default.
#include "framework/gui/MessageMap.h"
#include "framework/gui/Wnd.h"
#include "framework/gui/detail/PaintStatic.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <memory>
#include <utility>

namespace framework {

WindowRecord::~WindowRecord() = default;

LRESULT WindowRecord::Send(UINT message, WPARAM wParam, LPARAM lParam)
{
    const std::shared_ptr<WindowRecord> kept = shared_from_this();
    if (message == WM_MOUSEWHEEL) isLeftOpen = false;
    CWnd* window = CWnd::FromHandle(this);
    const CWnd::Message outer = std::exchange(window->m_current, {message, wParam, lParam});
    const auto end = [&] {
        // The handler may have destroyed the window, or the object it belongs to.
        const bool isThere = CWnd::FromHandlePermanent(this) == window
                             || (attached.empty() && temporary.get() == window);
        if (!isGone && isThere) window->m_current = outer;
    };
    try {
        const LRESULT result = window->WindowProc(message, wParam, lParam);
        end();
        return result;
    } catch (...) {
        end();
        throw;
    }
}

void WindowRecord::LetGo()
{
    CWnd* const handler = CWnd::FromHandlePermanent(this);
    DetachAll();
    if (temporary) temporary->m_hWnd = nullptr;
    lent.clear();
    if (handler) handler->PostNcDestroy();
}

void WindowRecord::DetachAll()
{
    for (CWnd* wrapper : attached)
        wrapper->m_hWnd = nullptr;
    attached.clear();
}

CWnd* WindowRecord::Window()
{
    return CWnd::FromHandle(this);
}

} // namespace framework

using framework::WindowRecord;

const AFX_MSGMAP* CWnd::GetThisMessageMap()
{
    static const AFX_MSGMAP_ENTRY none{};
    static const AFX_MSGMAP map = {
        nullptr, [](CWnd&, UINT, WPARAM, LPARAM, LRESULT&) -> BOOL { return FALSE; }, &none};
    return &map;
}

const AFX_MSGMAP* CWnd::GetMessageMap() const
{
    return GetThisMessageMap();
}

BOOL CWnd::HandleByMap(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result)
{
    if (message == framework::EntryList::kRequest) return FALSE;
    for (const AFX_MSGMAP* map = GetMessageMap(); map;
         map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr)
        if (const BOOL isHandled = map->pfnHandle(*this, message, wParam, lParam, result))
            return isHandled;
    return FALSE;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_COMMAND)
        return OnCommand(wParam, lParam) ? 1 : DefWindowProc(message, wParam, lParam);
    const std::shared_ptr<WindowRecord> window = m_hWnd ? m_hWnd->shared_from_this() : nullptr;
    LRESULT result = 0;
    const BOOL isHandled = HandleByMap(message, wParam, lParam, result);
    if (!isHandled) return DefWindowProc(message, wParam, lParam);
    if (isHandled != framework::kLeftOpen) return result;
    // The member may have destroyed the window, or the object it belongs to.
    const bool isStillOurs = window && !window->isGone && FromHandle(window.get()) == this;
    return isStillOurs ? DefWindowProc(message, wParam, lParam) : result;
}

BOOL CWnd::OnCommand(WPARAM wParam, LPARAM lParam)
{
    // Without a control it is the command of a menu or an accelerator, whatever its high word.
    const WPARAM command = lParam == 0 ? LOWORD(wParam) : wParam;
    LRESULT ignored = 0;
    return HandleByMap(WM_COMMAND, command, lParam, ignored);
}

LRESULT CWnd::Default()
{
    return DefWindowProc(m_current.message, m_current.wParam, m_current.lParam);
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (!m_hWnd) return 0;
    switch (message) {
    case WM_PAINT: {
        if (m_hWnd->IsStatic()) {
            framework::PaintStatic(*this);
            return 0;
        }
        const CPaintDC paint(this);
        return 0;
    }
    case WM_ERASEBKGND: {
        if (!m_hWnd->windowClass->hasBackground) return 0;
        const auto* context = framework::PointerIn<HDC>(wParam);
        if (!context) return 0;
        framework::raster::FillBox(context->Target(), context->Target().clip,
                                   m_hWnd->windowClass->background);
        return 1;
    }
    case WM_CLOSE:
        DestroyWindow();
        return 0;
    case WM_SETTEXT: {
        const auto* text = framework::PointerIn<LPCTSTR>(lParam);
        m_hWnd->text = text ? text : L"";
        if (m_hWnd->native) m_hWnd->native->SetTitle(m_hWnd->text);
        if (m_hWnd->IsStatic()) Invalidate();
        return TRUE;
    }
    case WM_GETTEXT:
        return GetWindowText(framework::PointerIn<LPTSTR>(lParam), static_cast<int>(wParam));
    case WM_GETTEXTLENGTH:
        return GetWindowTextLength();
    case WM_SETFONT:
        m_hWnd->font = framework::GdiReference(framework::PointerIn<HFONT>(wParam));
        if (lParam) Invalidate();
        return 0;
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(m_hWnd->font.Get());
    case WM_SETREDRAW:
        m_hWnd->redraws = wParam != 0;
        if (m_hWnd->redraws && m_hWnd->native) m_hWnd->native->RequestPaint();
        return 0;
    default:
        return m_hWnd->AnswerInput(message, wParam, lParam);
    }
}
