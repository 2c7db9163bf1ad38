// SPDX-License-Identifier: MIT
//
// CWnd: a window on the screen, and the messages it handles.
//
// A CWnd creates its window with Create or CreateEx, or takes over an existing one (SubclassWindow,
// SubclassDlgItem). DestroyWindow destroys the window, and so does destroying its parent or the
// CWnd. Drawing persists until the next paint. Sizes are device pixels; a window's rectangle
// includes its edges, its client rectangle starts at (0, 0) inside them.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/MessageMap.h"
#include "framework/gui/Types.h"

struct CCreateContext;

/// The properties of a window class; AfxRegisterWndClass is the convenient alternative.
struct WNDCLASSW
{
    UINT style = 0;
    HBRUSH hbrBackground = nullptr;
    LPCWSTR lpszClassName = nullptr;
};
using WNDCLASS = WNDCLASSW;

/// FALSE if the class has no name or the name is already registered.
TILTPOLE_API BOOL AfxRegisterClass(const WNDCLASS* windowClass);

/// Registers a class with that style and background (null: windows are not erased) and returns its
/// name, which stays valid until the program ends. The same arguments give the same class. Cursor
/// and icon are ignored.
TILTPOLE_API LPCTSTR AfxRegisterWndClass(UINT style, void* cursor = nullptr,
                                         HBRUSH background = nullptr, void* icon = nullptr);

/// Creates a window without a CWnd, for SubclassWindow and SubclassDlgItem. Returns null where
/// CreateEx would return FALSE.
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

    /// The host's own CWnd for the window if there is one, otherwise a temporary CWnd that the
    /// framework owns and that lives as long as the window. Null for a null handle.
    static CWnd* FromHandle(HWND window);
    /// Like FromHandle, but null instead of a temporary CWnd.
    static CWnd* FromHandlePermanent(HWND window);
    BOOL Attach(HWND window);
    HWND Detach();

    /// Creates a child window. FALSE without a parent, or where CreateEx returns FALSE.
    virtual BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect,
                        CWnd* parent, UINT id, CCreateContext* context = nullptr);

    /// @{ Creates the window. FALSE when this CWnd has one, the class is not registered, a child
    /// has no parent, OnCreate returns -1, or there is no connection to a windowing system.
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x, int y,
                  int width, int height, HWND parent, UINT_PTR id, LPVOID parameter = nullptr);
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                  const RECT& rect, CWnd* parent, UINT id, LPVOID parameter = nullptr);
    /// @}

    /// Destroys the window after its children. FALSE without a window.
    virtual BOOL DestroyWindow();

    /// Takes over a window: from now on this CWnd handles its messages. FALSE when this CWnd has a
    /// window already or `window` does not exist.
    BOOL SubclassWindow(HWND window);
    /// The same for the child of `parent` with that id.
    BOOL SubclassDlgItem(UINT id, CWnd* parent);
    /// Detaches from the window and returns its handle; null without one.
    HWND UnsubclassWindow();
    /// Called before the first message of a window that is created or taken over.
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
    /// Moves and resizes as the flags allow; the stacking order does not change.
    BOOL SetWindowPos(const CWnd* after, int x, int y, int width, int height, UINT flags);
    BOOL ShowWindow(int command); ///< returns whether it was shown before
    BOOL IsWindowVisible() const;

    void SetWindowText(LPCTSTR text);
    int GetWindowText(LPTSTR buffer, int size) const;
    void GetWindowText(CString& text) const;
    int GetWindowTextLength() const;
    void SetFont(CFont* font, BOOL redraw = TRUE);
    CFont* GetFont() const;

    /// A context for the client area, to be returned with ReleaseDC. A window has at most sixteen
    /// outstanding: a further call releases the oldest. Destroying the window releases them all.
    CDC* GetDC();
    int ReleaseDC(CDC* dc); ///< 0 if the context is not this window's

    void Invalidate(BOOL erase = TRUE);
    void InvalidateRect(LPCRECT rect, BOOL erase = TRUE);
    void ValidateRect(LPCRECT rect);
    BOOL GetUpdateRect(LPRECT rect, BOOL erase = FALSE);
    /// Repaints the invalid area at once; a hidden window is painted when it is shown.
    void UpdateWindow();
    CDC* BeginPaint(PAINTSTRUCT* paint);
    void EndPaint(PAINTSTRUCT* paint);

    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// Starts calling OnTimer periodically; an existing timer with that id restarts. `id` must not
    /// be 0; `callback` is ignored. Returns `id`, or 0 without a window.
    UINT_PTR SetTimer(UINT_PTR id, UINT milliseconds, void* callback);
    /// Returns FALSE if there is no such timer.
    BOOL KillTimer(UINT_PTR id);

    HWND m_hWnd = nullptr;

protected:
    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;

    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Called after the window has been destroyed; the handle is already null.
    virtual void PostNcDestroy();
    /// The default handling of the message that is being processed.
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
