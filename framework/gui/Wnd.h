// SPDX-License-Identifier: MIT
//
// CWnd: a window on the screen, and the messages it answers.
//
// A CWnd makes its window with Create or CreateEx, or takes over one that is there (SubclassWindow,
// SubclassDlgItem). The window goes with DestroyWindow, with its parent, or with the CWnd. What is
// drawn on it stays until the next paint. Sizes are device pixels; the rectangle of a window
// includes its edges, its client rectangle begins at (0, 0) inside them.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/MessageMap.h"
#include "framework/gui/Types.h"

struct CCreateContext;

/// What a window class is made of; see AfxRegisterWndClass for the short way.
struct WNDCLASSW
{
    UINT style = 0;
    HBRUSH hbrBackground = nullptr;
    LPCWSTR lpszClassName = nullptr;
};
using WNDCLASS = WNDCLASSW;

/// FALSE for a class without a name or with one that is taken.
TILTPOLE_API BOOL AfxRegisterClass(const WNDCLASS* windowClass);

/// Registers a class of that style and background (null: windows are not erased) and returns its
/// name, which lives as long as the program. The same arguments give the same class. Cursor and
/// icon are not used.
TILTPOLE_API LPCTSTR AfxRegisterWndClass(UINT style, void* cursor = nullptr,
                                         HBRUSH background = nullptr, void* icon = nullptr);

/// A window that no CWnd has made, for SubclassWindow and SubclassDlgItem: null where CreateEx
/// would answer FALSE.
TILTPOLE_API HWND CreateWindowExW(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                                  int x, int y, int width, int height, HWND parent, UINT_PTR id);

class TILTPOLE_API CWnd : public CObject
{
    DECLARE_DYNCREATE(CWnd)

public:
    CWnd() = default;
    ~CWnd() override;

    HWND GetSafeHwnd() const { return m_hWnd; }
    operator HWND() const { return m_hWnd; }

    /// The CWnd of a window: the host's own where there is one, else one that the framework lends
    /// for as long as the window lives. Null for a null handle.
    static CWnd* FromHandle(HWND window);
    /// As FromHandle, but null where only a lent one would be found.
    static CWnd* FromHandlePermanent(HWND window);
    BOOL Attach(HWND window);
    HWND Detach();

    /// A child window. FALSE without a parent, or where CreateEx answers FALSE.
    virtual BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect,
                        CWnd* parent, UINT id, CCreateContext* context = nullptr);

    /// @{ Makes the window. FALSE when this CWnd has one, the class is not registered, a child has
    /// no parent, OnCreate answers -1, or there is no connection to a windowing system.
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x, int y,
                  int width, int height, HWND parent, UINT_PTR id, LPVOID parameter = nullptr);
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                  const RECT& rect, CWnd* parent, UINT id, LPVOID parameter = nullptr);
    /// @}

    /// FALSE without a window. Its children go first.
    virtual BOOL DestroyWindow();

    /// Takes over a window: from now on this CWnd answers its messages. FALSE when this CWnd has a
    /// window or `window` is none.
    BOOL SubclassWindow(HWND window);
    /// The same for the child of `parent` with that id.
    BOOL SubclassDlgItem(UINT id, CWnd* parent);
    /// Gives the window back; null without one.
    HWND UnsubclassWindow();
    /// Called before the first message of a window that is made or taken over.
    virtual void PreSubclassWindow();

    DWORD GetStyle() const;
    DWORD GetExStyle() const;
    /// @{ FALSE when nothing changes. `flags` are those of SetWindowPos, 0 for none.
    BOOL ModifyStyle(DWORD remove, DWORD add, UINT flags = 0);
    BOOL ModifyStyleEx(DWORD remove, DWORD add, UINT flags = 0);
    /// @}
    int GetDlgCtrlID() const;
    int SetDlgCtrlID(int id);

    CWnd* GetDlgItem(int id) const;
    CWnd* GetParent() const;

    void GetClientRect(LPRECT rect) const;
    void GetWindowRect(LPRECT rect) const; ///< screen coordinates
    void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
    void MoveWindow(LPCRECT rect, BOOL repaint = TRUE);
    /// Moves and sizes as the flags allow; the order of windows stays as it is.
    BOOL SetWindowPos(const CWnd* after, int x, int y, int width, int height, UINT flags);
    BOOL ShowWindow(int command); ///< whether it was shown before
    BOOL IsWindowVisible() const;

    void SetWindowText(LPCTSTR text);
    int GetWindowText(LPTSTR buffer, int size) const;
    void GetWindowText(CString& text) const;
    int GetWindowTextLength() const;
    void SetFont(CFont* font, BOOL redraw = TRUE);
    CFont* GetFont() const;

    /// A context of the client area, to be given back with ReleaseDC. A window lends sixteen at a
    /// time: the next one asked for takes the oldest back, and all go with the window.
    CDC* GetDC();
    int ReleaseDC(CDC* dc); ///< 0 for a context that is not this window's

    void Invalidate(BOOL erase = TRUE);
    void InvalidateRect(LPCRECT rect, BOOL erase = TRUE);
    void ValidateRect(LPCRECT rect);
    BOOL GetUpdateRect(LPRECT rect, BOOL erase = FALSE);
    /// Paints what is invalid before it returns; a window that is not shown waits until it is.
    void UpdateWindow();
    CDC* BeginPaint(PAINTSTRUCT* paint);
    void EndPaint(PAINTSTRUCT* paint);

    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// Asks for OnTimer at intervals; `id` is not 0, one that is there begins anew. `callback` is
    /// not used. Returns `id`, or 0 without a window.
    UINT_PTR SetTimer(UINT_PTR id, UINT milliseconds, void* callback);
    /// FALSE where there is no such timer.
    BOOL KillTimer(UINT_PTR id);

    HWND m_hWnd = nullptr;

protected:
    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;

    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Called when the window is gone; the handle is null by then.
    virtual void PostNcDestroy();
    /// The framework's own answer to the message being answered.
    LRESULT Default();

    afx_msg int OnCreate(LPCREATESTRUCT created);
    afx_msg void OnPaint();
    afx_msg BOOL OnEraseBkgnd(CDC* dc);
    afx_msg void OnSize(UINT type, int width, int height);
    afx_msg void OnClose();
    afx_msg void OnDestroy();
    afx_msg void OnTimer(UINT_PTR id);
    afx_msg void OnShowWindow(BOOL shown, UINT status);
    afx_msg void OnLButtonDown(UINT flags, CPoint point);
    afx_msg void OnLButtonUp(UINT flags, CPoint point);
    afx_msg void OnMouseMove(UINT flags, CPoint point);

private:
    friend struct framework::WindowRecord;

    struct Message
    {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
    };
    Message m_current{};
};
