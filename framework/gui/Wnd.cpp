// SPDX-License-Identifier: MIT
#include "framework/gui/Wnd.h"

#include "framework/gui/detail/Image.h"
#include "framework/gui/detail/WindowRegistry.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

IMPLEMENT_DYNCREATE(CWnd, CObject)

namespace raster = framework::raster;
using framework::ToBox;
using framework::WindowRecord;
using framework::Windows;

namespace {

constexpr UINT kShortestPeriod = 10; // of a timer [milliseconds]

// Returns whether it was shown before.
BOOL Show(WindowRecord& window, bool visible, bool redraws)
{
    const bool before = (window.style & WS_VISIBLE) != 0;
    if (before == visible) return before;
    window.SetShown(visible, redraws);
    if (window.native) window.native->Show(visible);
    return before;
}

} // namespace

CWnd::~CWnd()
{
    CWnd::DestroyWindow();
    Detach(); // a handler of the window's last messages may delete this
}

CWnd* CWnd::FromHandlePermanent(HWND window)
{
    return window && !window->attached.empty() ? window->attached.back() : nullptr;
}

CWnd* CWnd::FromHandle(HWND window)
{
    if (!window) return nullptr;
    if (CWnd* const own = FromHandlePermanent(window)) return own;
    if (!window->temporary) {
        window->temporary = std::make_unique<CWnd>();
        window->temporary->m_hWnd = window;
    }
    return window->temporary.get();
}

BOOL CWnd::Attach(HWND window)
{
    if (!window || m_hWnd) return FALSE;
    window->attached.push_back(this);
    m_hWnd = window;
    return TRUE;
}

HWND CWnd::Detach()
{
    WindowRecord* const window = std::exchange(m_hWnd, nullptr);
    if (window) std::erase(window->attached, this);
    return window;
}

BOOL CWnd::Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect,
                  CWnd* parent, UINT id, CCreateContext*)
{
    if (!parent) {
        if (!m_hWnd) PostNcDestroy();
        return FALSE;
    }
    return CreateEx(0, className, windowName, style | WS_CHILD, rect, parent, id);
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                    const RECT& rect, CWnd* parent, UINT id, LPVOID parameter)
{
    return CreateEx(exStyle, className, windowName, style, rect.left, rect.top,
                    rect.right - rect.left, rect.bottom - rect.top,
                    parent ? parent->m_hWnd : nullptr, id, parameter);
}

BOOL CWnd::DestroyWindow()
{
    if (!m_hWnd) return FALSE;
    // A temporary object does not own its window but may still destroy it.
    if (!Windows().Holds(m_hWnd)) return FALSE;
    if (m_hWnd->temporary.get() == this && !m_hWnd->attached.empty()) return FALSE;
    framework::Destroy(m_hWnd);
    return TRUE;
}

BOOL CWnd::SubclassWindow(HWND window)
{
    if (!Windows().Holds(window) || !Attach(window)) return FALSE;
    PreSubclassWindow();
    return TRUE;
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd* parent)
{
    const CWnd* item = parent ? parent->GetDlgItem(static_cast<int>(id)) : nullptr;
    return item ? SubclassWindow(item->m_hWnd) : FALSE;
}

HWND CWnd::UnsubclassWindow()
{
    return Detach();
}

void CWnd::PreSubclassWindow() {}

DWORD CWnd::GetStyle() const
{
    return m_hWnd ? m_hWnd->style : 0;
}

DWORD CWnd::GetExStyle() const
{
    return m_hWnd ? m_hWnd->exStyle : 0;
}

BOOL CWnd::ModifyStyle(DWORD remove, DWORD add, UINT flags)
{
    if (!m_hWnd) return FALSE;
    const DWORD style = (m_hWnd->style & ~remove) | add;
    if (style == m_hWnd->style) return FALSE;
    m_hWnd->style = style;
    if (flags) SetWindowPos(nullptr, 0, 0, 0, 0, flags | SWP_NOSIZE | SWP_NOMOVE);
    return TRUE;
}

BOOL CWnd::ModifyStyleEx(DWORD remove, DWORD add, UINT flags)
{
    if (!m_hWnd) return FALSE;
    const DWORD style = (m_hWnd->exStyle & ~remove) | add;
    if (style == m_hWnd->exStyle) return FALSE;
    m_hWnd->exStyle = style;
    if (flags) SetWindowPos(nullptr, 0, 0, 0, 0, flags | SWP_NOSIZE | SWP_NOMOVE);
    return TRUE;
}

int CWnd::GetDlgCtrlID() const
{
    return m_hWnd ? static_cast<int>(m_hWnd->id) : 0;
}

int CWnd::SetDlgCtrlID(int id)
{
    return m_hWnd ? static_cast<int>(std::exchange(m_hWnd->id, static_cast<UINT_PTR>(id))) : 0;
}

CWnd* CWnd::GetDlgItem(int id) const
{
    if (!m_hWnd) return nullptr;
    for (WindowRecord* child : m_hWnd->children)
        if (static_cast<int>(child->id) == id) return FromHandle(child);
    return nullptr;
}

CWnd* CWnd::GetParent() const
{
    if (!m_hWnd) return nullptr;
    const bool isOwned = !m_hWnd->parent && (m_hWnd->style & WS_POPUP);
    return FromHandle(isOwned ? m_hWnd->ownedBy : m_hWnd->parent);
}

void CWnd::GetClientRect(LPRECT rect) const
{
    if (!rect) return;
    *rect = m_hWnd ? RECT{0, 0, m_hWnd->ClientWidth(), m_hWnd->ClientHeight()} : RECT{};
}

void CWnd::GetWindowRect(LPRECT rect) const
{
    if (!rect) return;
    *rect = {};
    if (!m_hWnd) return;
    const POINT corner = m_hWnd->CornerOnScreen();
    *rect = {corner.x, corner.y, corner.x + m_hWnd->width, corner.y + m_hWnd->height};
}

void CWnd::MoveWindow(int x, int y, int width, int height, BOOL repaint)
{
    SetWindowPos(nullptr, x, y, width, height, SWP_NOZORDER | (repaint ? 0 : SWP_NOREDRAW));
}

void CWnd::MoveWindow(LPCRECT rect, BOOL repaint)
{
    if (rect)
        MoveWindow(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top,
                   repaint);
}

BOOL CWnd::SetWindowPos(const CWnd*, int x, int y, int width, int height, UINT flags)
{
    if (!m_hWnd) return FALSE;
    const std::shared_ptr<WindowRecord> window = m_hWnd->shared_from_this();
    const bool moves = !(flags & SWP_NOMOVE);
    const bool sizes = !(flags & SWP_NOSIZE);
    const bool redraws = !(flags & SWP_NOREDRAW);
    const WindowRecord::Sized sized =
        window->SetSize(sizes ? width : window->width, sizes ? height : window->height, redraws);
    if (sized == WindowRecord::Sized::NoMemory) return FALSE;
    const bool moved = moves && (window->origin.x != x || window->origin.y != y);
    if (moves) window->origin = {x, y};
    if (window->native && moves)
        window->native->Place(x, y, window->width, window->height);
    else if (window->native && sizes)
        window->native->Resize(window->width, window->height);
    if (flags & SWP_FRAMECHANGED && window->native) window->native->RequestPaint();

    if (moved) window->ReportMove();
    if (!window->isGone && sized == WindowRecord::Sized::Changed) window->ReportSize();
    if (!window->isGone && flags & SWP_SHOWWINDOW) Show(*window, true, redraws);
    if (!window->isGone && flags & SWP_HIDEWINDOW) Show(*window, false, redraws);
    return TRUE;
}

BOOL CWnd::ShowWindow(int command)
{
    if (!m_hWnd) return FALSE;
    const std::shared_ptr<WindowRecord> window = m_hWnd->shared_from_this();
    return Show(*window, command != SW_HIDE, true);
}

BOOL CWnd::IsWindowVisible() const
{
    return m_hWnd && m_hWnd->IsShown();
}

void CWnd::SetWindowText(LPCTSTR text)
{
    SendMessage(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text ? text : L""));
}

int CWnd::GetWindowText(LPTSTR buffer, int size) const
{
    if (!buffer || size < 1) return 0;
    const std::wstring_view text = m_hWnd ? std::wstring_view(m_hWnd->text) : std::wstring_view();
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size - 1));
    std::copy_n(text.begin(), length, buffer);
    buffer[length] = L'\0';
    return static_cast<int>(length);
}

void CWnd::GetWindowText(CString& text) const
{
    text = m_hWnd ? m_hWnd->text.c_str() : L"";
}

int CWnd::GetWindowTextLength() const
{
    return m_hWnd ? static_cast<int>(m_hWnd->text.size()) : 0;
}

void CWnd::SetFont(CFont* font, BOOL redraw)
{
    SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font ? font->m_hObject : nullptr), redraw);
}

CFont* CWnd::GetFont() const
{
    return m_hWnd ? CFont::FromHandle(m_hWnd->font.Get()) : nullptr;
}

CDC* CWnd::GetDC()
{
    if (!m_hWnd) return nullptr;
    framework::DcRecord* const context = m_hWnd->LendContext();
    try {
        return CDC::FromHandle(context);
    } catch (...) {
        m_hWnd->TakeBack(context);
        throw;
    }
}

int CWnd::ReleaseDC(CDC* dc)
{
    return m_hWnd && dc && m_hWnd->TakeBack(dc->m_hDC) ? 1 : 0;
}

void CWnd::Invalidate(BOOL erase)
{
    if (m_hWnd)
        m_hWnd->Invalidate({0, 0, m_hWnd->ClientWidth(), m_hWnd->ClientHeight()}, erase != FALSE);
}

void CWnd::InvalidateRect(LPCRECT rect, BOOL erase)
{
    if (!rect)
        Invalidate(erase);
    else if (m_hWnd)
        m_hWnd->Invalidate(ToBox(*rect), erase != FALSE);
}

void CWnd::ValidateRect(LPCRECT rect)
{
    if (!m_hWnd) return;
    const raster::Box& invalid = m_hWnd->invalid;
    const bool covered = !rect
                         || (rect->left <= invalid.left && rect->top <= invalid.top
                             && rect->right >= invalid.right && rect->bottom >= invalid.bottom);
    if (!covered) return;
    m_hWnd->invalid = {};
    m_hWnd->erase = false;
}

BOOL CWnd::GetUpdateRect(LPRECT rect, BOOL)
{
    const raster::Box invalid = m_hWnd ? m_hWnd->invalid : raster::Box{};
    if (rect) *rect = {invalid.left, invalid.top, invalid.right, invalid.bottom};
    return invalid.left < invalid.right;
}

void CWnd::UpdateWindow()
{
    if (!m_hWnd) return;
    const std::shared_ptr<WindowRecord> window = m_hWnd->shared_from_this();
    window->Paint();
    if (window->native && window->IsShown()) window->native->RequestPaint();
}

CDC* CWnd::BeginPaint(PAINTSTRUCT* paint)
{
    if (!m_hWnd || !paint) return nullptr;
    const std::shared_ptr<WindowRecord> window = m_hWnd->shared_from_this();
    CDC* const dc = GetDC();
    framework::DcRecord* const context = dc->m_hDC;
    const raster::Box box = std::exchange(window->invalid, {});
    const bool erase = std::exchange(window->erase, false);
    context->clip = box;
    window->isPainting = true;
    *paint = {
        context, FALSE, {box.left, box.top, box.right, box.bottom}
    };
    try {
        if (erase)
            paint->fErase = !window->Send(WM_ERASEBKGND, reinterpret_cast<WPARAM>(context), 0);
    } catch (...) {
        window->TakeBack(context);
        window->isPainting = false;
        window->StayInvalid(box, erase);
        throw;
    }
    if (window->isGone) *paint = {};
    return window->isGone ? nullptr : dc;
}

void CWnd::EndPaint(PAINTSTRUCT* paint)
{
    if (!m_hWnd || !paint) return;
    m_hWnd->TakeBack(std::exchange(paint->hdc, nullptr));
    m_hWnd->isPainting = false;
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    return m_hWnd ? m_hWnd->Send(message, wParam, lParam) : 0;
}

UINT_PTR CWnd::SetTimer(UINT_PTR id, UINT milliseconds, void*)
{
    if (!m_hWnd || !m_hWnd->native) return 0;
    m_hWnd->native->StartTimer(id, std::max(milliseconds, kShortestPeriod));
    return id;
}

BOOL CWnd::KillTimer(UINT_PTR id)
{
    return m_hWnd && m_hWnd->native && m_hWnd->native->StopTimer(id);
}

CClientDC::CClientDC(CWnd* window) : m_hWnd(window ? window->m_hWnd : nullptr)
{
    if (m_hWnd) Attach(m_hWnd->LendContext());
}

CClientDC::~CClientDC()
{
    framework::DcRecord* const handle = Detach();
    if (Windows().Holds(m_hWnd)) m_hWnd->TakeBack(handle);
}

CPaintDC::CPaintDC(CWnd* window) : m_hWnd(window ? window->m_hWnd : nullptr)
{
    if (!m_hWnd) return;
    window->BeginPaint(&m_ps);
    Attach(m_ps.hdc);
}

CPaintDC::~CPaintDC()
{
    Detach();
    if (Windows().Holds(m_hWnd)) CWnd::FromHandle(m_hWnd)->EndPaint(&m_ps);
}
