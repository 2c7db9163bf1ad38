// SPDX-License-Identifier: MIT
/// @class CWnd
/// CWnd: a window on the screen, and the messages it handles.
///
/// A CWnd creates its window with Create or CreateEx, or takes over an existing one
/// (SubclassWindow, SubclassDlgItem). DestroyWindow destroys the window, and so does destroying its
/// parent or the CWnd. Drawing persists until the next paint. Sizes are device pixels; a window's
/// rectangle includes its edges, its client rectangle starts at (0, 0) inside them.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/MessageBox.h"
#include "framework/core/Object.h"
#include "framework/core/String.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/MessageMap.h"
#include "framework/gui/Types.h"

#include <cstddef>
#include <new>

class CRgn;
struct CCreateContext;

/// The properties of a window class; AfxRegisterWndClass is the convenient alternative. Windows are
/// erased with the background: a brush, or a system color plus 1 cast to HBRUSH; they are not
/// erased where it is null or the null brush.
struct WNDCLASSW
{
    UINT style = 0;
    HBRUSH hbrBackground = nullptr;
    LPCWSTR lpszClassName = nullptr;
};
using WNDCLASS = WNDCLASSW;

/// FALSE if the class has no name or the name is already registered.
TILTPOLE_API BOOL AfxRegisterClass(const WNDCLASS* windowClass);

/// Registers a class with that style and background (see WNDCLASSW) and returns its name, which
/// stays valid until the program ends. The same arguments give the same class. Cursor and icon are
/// ignored.
TILTPOLE_API LPCTSTR AfxRegisterWndClass(UINT style, void* cursor = nullptr,
                                         HBRUSH background = nullptr, void* icon = nullptr);

/// Creates a window without a CWnd, for SubclassWindow and SubclassDlgItem. Returns null where
/// CreateEx would return FALSE.
TILTPOLE_API HWND CreateWindowExW(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                                  int x, int y, int width, int height, HWND parent,
                                  framework::WindowId id);

class TILTPOLE_API CWnd : public CObject
{
    DECLARE_DYNCREATE(CWnd)

public:
    CWnd();
    ~CWnd() override;

    /// @{ Remembers what was made with new, see IsMadeWithNew.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void* operator new(std::size_t, void* where) noexcept { return where; }
    static void* operator new(std::size_t size, std::align_val_t alignment);
    static void operator delete(void* object);
    static void operator delete(void* object, std::align_val_t alignment);
    static void operator delete(void* object, const std::nothrow_t&) noexcept;
    static void operator delete(void*, void*) noexcept {}
    /// @}

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
    /// has no parent, OnCreate returns -1 or destroys the window, memory runs out, or there is no
    /// connection to a windowing system. The window gets WM_CREATE, WM_SIZE and WM_MOVE in this
    /// order, then WM_SHOWWINDOW with WS_VISIBLE.
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x, int y,
                  int width, int height, HWND parent, framework::WindowId id,
                  LPVOID parameter = nullptr);
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                  const RECT& rect, CWnd* parent, UINT id, LPVOID parameter = nullptr);
    /// @}

    /// Destroys the window after those that were created with it as their owner, and after its
    /// children. FALSE without a window.
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
    /// Of a top-level window with WS_POPUP the one it was created with.
    CWnd* GetParent() const;
    /// Moves a child window into another parent, or onto the screen where that is null; it keeps
    /// its coordinates. Returns the previous parent; null, with nothing changed, without a window
    /// or where the new parent is the window itself or inside it.
    CWnd* SetParent(CWnd* parent);
    /// The window that this one notifies: that of SetOwner, for a top-level window the one it was
    /// created with, otherwise the parent.
    CWnd* GetOwner() const;
    void SetOwner(CWnd* owner);

    /// @{ The text of the child with that id. Getting returns the number of characters.
    void SetDlgItemText(int id, LPCTSTR text);
    int GetDlgItemText(int id, CString& text) const;
    int GetDlgItemText(int id, LPTSTR buffer, int size) const;
    /// @}

    /// @{ Between coordinates of the client area and of the screen.
    void ClientToScreen(LPPOINT point) const;
    void ClientToScreen(LPRECT rect) const;
    void ScreenToClient(LPPOINT point) const;
    void ScreenToClient(LPRECT rect) const;
    /// @}

    void GetClientRect(LPRECT rect) const;
    void GetWindowRect(LPRECT rect) const; ///< screen coordinates
    void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
    void MoveWindow(LPCRECT rect, BOOL repaint = TRUE);
    /// Moves and resizes as the flags allow, never in the stacking order. With SWP_NOREDRAW, as with
    /// `repaint` FALSE, nothing becomes invalid. FALSE, nothing changed: no window or memory.
    BOOL SetWindowPos(const CWnd* after, int x, int y, int width, int height, UINT flags);
    BOOL ShowWindow(int command); ///< returns whether it was shown before
    BOOL IsWindowVisible() const;
    /// A disabled window gets no mouse and keyboard messages; those of the mouse go to its parent.
    /// Returns whether it was disabled before.
    BOOL EnableWindow(BOOL enable = TRUE);
    BOOL IsWindowEnabled() const;

    /// @{ The window that gets the keyboard messages; null if it is none of ours. SetFocus sends
    /// WM_KILLFOCUS and WM_SETFOCUS before it returns the previous one. Where a child ends or is
    /// hidden, its focus goes to the parent.
    CWnd* SetFocus();
    static CWnd* GetFocus();
    /// @}

    /// @{ The window that gets all mouse messages until ReleaseCapture, with its own coordinates:
    /// wherever the pointer is while a button is down, otherwise over windows of the program.
    /// SetCapture returns the previous one, which gets WM_CAPTURECHANGED.
    CWnd* SetCapture();
    static CWnd* GetCapture();
    /// @}

    void SetWindowText(LPCTSTR text);
    int GetWindowText(LPTSTR buffer, int size) const;
    void GetWindowText(CString& text) const;
    int GetWindowTextLength() const;
    void SetFont(CFont* font, BOOL redraw = TRUE);
    CFont* GetFont() const;

    /// A context for the client area, valid until it is returned with ReleaseDC or the window is
    /// destroyed.
    CDC* GetDC();
    int ReleaseDC(CDC* dc); ///< 0 if the context is not this window's

    void Invalidate(BOOL erase = TRUE);
    void InvalidateRect(LPCRECT rect, BOOL erase = TRUE);
    void ValidateRect(LPCRECT rect);
    BOOL GetUpdateRect(LPRECT rect, BOOL erase = FALSE);
    /// Invalidates or validates `rect`, null for all, and repaints at once with RDW_UPDATENOW; with
    /// RDW_ALLCHILDREN also the children, completely. `region` must be null.
    BOOL RedrawWindow(LPCRECT rect = nullptr, CRgn* region = nullptr,
                      UINT flags = RDW_INVALIDATE | RDW_UPDATENOW | RDW_ERASE);
    /// FALSE: the window is not painted until TRUE.
    void SetRedraw(BOOL redraw = TRUE);
    /// Repaints the invalid area at once; a hidden window is painted when it is shown.
    void UpdateWindow();
    CDC* BeginPaint(PAINTSTRUCT* paint);
    void EndPaint(PAINTSTRUCT* paint);

    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// Appends a message to the queue of the window's thread and returns at once; it is sent unless
    /// the window has gone by then. May be called from any thread. FALSE without a window.
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// Shows a message as MessageBoxW does.
    int MessageBox(LPCTSTR text, LPCTSTR title = nullptr, UINT style = MB_OK);
    /// Starts calling OnTimer periodically, at most every 10 milliseconds; an existing timer with
    /// that id restarts. `id` must not be 0; `callback` is ignored. Returns `id`, or 0 without a
    /// window.
    UINT_PTR SetTimer(UINT_PTR id, UINT milliseconds, void* callback);
    /// Returns FALSE if there is no such timer.
    BOOL KillTimer(UINT_PTR id);

    HWND m_hWnd = nullptr;

protected:
    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;

    /// Called before the window is created and may change how. FALSE: it is not created.
    virtual BOOL PreCreateWindow(CREATESTRUCT& created);
    /// Handles WM_COMMAND: looks in the message map for the command, or with the handle of a
    /// control in `lParam` for its notification. FALSE if it is not there.
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);

    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Called after the window has been destroyed, or could not be created; the handle is null.
    virtual void PostNcDestroy();
    /// Whether the object was made by a new expression of its own: not a variable, a member, an
    /// element of an array or an object behind a std::shared_ptr from std::make_shared.
    bool IsMadeWithNew() const { return m_isMadeWithNew; }
    /// The default handling of the message that is being processed.
    LRESULT Default();

    /// @{ Handlers of messages; each does what happens by default. Key handlers get the key or
    /// character, how often it is repeated (1), and the high word of LPARAM: 0x0100 for a key
    /// beside the number pad or Enter and "/" on it, 0x4000 if the key was down before, 0x8000 if
    /// it is released. The wheel's point is on the screen; it goes on to the parent where
    /// OnMouseWheel returns FALSE.
    afx_msg int OnCreate(LPCREATESTRUCT created);
    afx_msg void OnDestroy();
    afx_msg void OnNcDestroy();
    afx_msg void OnClose();
    afx_msg void OnPaint();
    afx_msg BOOL OnEraseBkgnd(CDC* dc);
    afx_msg void OnShowWindow(BOOL shown, UINT status);
    afx_msg void OnEnable(BOOL enabled);
    afx_msg void OnMove(int x, int y);
    afx_msg void OnSize(UINT type, int width, int height);
    afx_msg void OnTimer(UINT_PTR id);
    afx_msg void OnSetFocus(CWnd* previous);
    afx_msg void OnKillFocus(CWnd* next);
    afx_msg void OnKeyDown(UINT key, UINT count, UINT flags);
    afx_msg void OnKeyUp(UINT key, UINT count, UINT flags);
    afx_msg void OnChar(UINT character, UINT count, UINT flags);
    afx_msg void OnSysKeyDown(UINT key, UINT count, UINT flags);
    afx_msg void OnSysKeyUp(UINT key, UINT count, UINT flags);
    afx_msg void OnSysChar(UINT character, UINT count, UINT flags);
    afx_msg void OnMouseMove(UINT flags, CPoint point);
    afx_msg void OnLButtonDown(UINT flags, CPoint point);
    afx_msg void OnLButtonUp(UINT flags, CPoint point);
    afx_msg void OnLButtonDblClk(UINT flags, CPoint point);
    afx_msg void OnRButtonDown(UINT flags, CPoint point);
    afx_msg void OnRButtonUp(UINT flags, CPoint point);
    afx_msg void OnRButtonDblClk(UINT flags, CPoint point);
    afx_msg void OnMButtonDown(UINT flags, CPoint point);
    afx_msg void OnMButtonUp(UINT flags, CPoint point);
    afx_msg void OnMButtonDblClk(UINT flags, CPoint point);
    afx_msg BOOL OnMouseWheel(UINT flags, short delta, CPoint point);
    afx_msg void OnMouseLeave();
    afx_msg void OnCaptureChanged(CWnd* next);
    /// @}

private:
    friend struct framework::WindowRecord;

    BOOL HandleByMap(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

    struct Message
    {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
    };
    Message m_current{};
    bool m_isMadeWithNew;
};
