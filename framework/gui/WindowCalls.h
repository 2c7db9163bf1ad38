// SPDX-License-Identifier: MIT
/// @file
/// Calls on handles of windows, and calls of the program that belong to no window.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/MessageBox.h"
#include "framework/gui/Types.h"

/// Whether the handle is that of an existing window. In the thread of the windows.
TILTPOLE_API BOOL IsWindow(HWND window);

/// Sends a message and returns its result; 0 without such a window. In the thread of the windows.
TILTPOLE_API LRESULT SendMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// As CWnd::PostMessage, from any thread. FALSE without such a window.
TILTPOLE_API BOOL PostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Ends SetCapture; the window that had the mouse gets WM_CAPTURECHANGED. FALSE if none had.
TILTPOLE_API BOOL ReleaseCapture();

inline constexpr DWORD TME_LEAVE = 0x00000002;
inline constexpr DWORD TME_CANCEL = 0x80000000;

/// Asks for WM_MOUSELEAVE; set `cbSize` to the size of the record.
struct TRACKMOUSEEVENT
{
    DWORD cbSize = 0;
    DWORD dwFlags = 0;
    HWND hwndTrack = nullptr;
    DWORD dwHoverTime = 0; ///< ignored
};

/// Sends WM_MOUSELEAVE once, when the pointer leaves the client area of the window. FALSE without
/// such a window or for other flags than TME_LEAVE and TME_CANCEL.
TILTPOLE_API BOOL TrackMouseEvent(TRACKMOUSEEVENT* request);

/// Shows a message under the name of the program, as MessageBoxW does.
TILTPOLE_API int AfxMessageBox(LPCTSTR text, UINT style = MB_OK, UINT helpId = 0);

/// The program; GetModuleFileNameW tells its name.
TILTPOLE_API HINSTANCE AfxGetInstanceHandle();
