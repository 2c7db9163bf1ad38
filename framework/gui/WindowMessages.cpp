// SPDX-License-Identifier: MIT
//
// How a message finds the member that handles it, and what happens by default.
#include "framework/gui/MessageMap.h"
#include "framework/gui/Wnd.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <utility>

namespace framework {

WindowRecord::~WindowRecord()
{
    for (CWnd* wrapper : attached)
        wrapper->m_hWnd = nullptr;
    if (temporary) temporary->m_hWnd = nullptr;
}

LRESULT WindowRecord::Send(UINT message, WPARAM wParam, LPARAM lParam)
{
    CWnd* window = CWnd::FromHandle(this);
    const CWnd::Message outer = std::exchange(window->m_current, {message, wParam, lParam});
    const LRESULT result = window->WindowProc(message, wParam, lParam);
    // The handler may have destroyed the window, or the object it belongs to.
    if (Windows().Holds(this) && CWnd::FromHandle(this) == window) window->m_current = outer;
    return result;
}

void WindowRecord::ReportGone(CWnd& window)
{
    window.PostNcDestroy();
}

CWnd* WindowRecord::Window()
{
    return CWnd::FromHandle(this);
}

} // namespace framework

const AFX_MSGMAP* CWnd::GetThisMessageMap()
{
    static const AFX_MSGMAP_ENTRY none[] = {
        {0, nullptr}
    };
    static const AFX_MSGMAP map = {nullptr, none};
    return &map;
}

const AFX_MSGMAP* CWnd::GetMessageMap() const
{
    return GetThisMessageMap();
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    for (const AFX_MSGMAP* map = GetMessageMap(); map;
         map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* entry = map->lpEntries; entry->pfn; ++entry)
            if (entry->nMessage == message) return entry->pfn(*this, wParam, lParam);
    }
    return DefWindowProc(message, wParam, lParam);
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
        PAINTSTRUCT paint;
        BeginPaint(&paint);
        EndPaint(&paint);
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
    default:
        return 0;
    }
}

void CWnd::PostNcDestroy() {}

int CWnd::OnCreate(LPCREATESTRUCT)
{
    return static_cast<int>(Default());
}
void CWnd::OnPaint()
{
    Default();
}
BOOL CWnd::OnEraseBkgnd(CDC*)
{
    return static_cast<BOOL>(Default());
}
void CWnd::OnSize(UINT, int, int)
{
    Default();
}
void CWnd::OnClose()
{
    Default();
}
void CWnd::OnDestroy()
{
    Default();
}
void CWnd::OnTimer(UINT_PTR)
{
    Default();
}
void CWnd::OnShowWindow(BOOL, UINT)
{
    Default();
}
void CWnd::OnLButtonDown(UINT, CPoint)
{
    Default();
}
void CWnd::OnLButtonUp(UINT, CPoint)
{
    Default();
}
void CWnd::OnMouseMove(UINT, CPoint)
{
    Default();
}
