// SPDX-License-Identifier: MIT
//
// Handles, colors and constants of the windowed framework, with the values hosts rely on.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Rect.h"
#include "framework/core/Types.h"

#include <cstdint>

namespace framework {
struct GdiRecord;
struct DcRecord;
} // namespace framework

using HGDIOBJ = framework::GdiRecord*;
using HPEN = HGDIOBJ;
using HBRUSH = HGDIOBJ;
using HFONT = HGDIOBJ;
using HBITMAP = HGDIOBJ;
using HDC = framework::DcRecord*;

using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using LPVOID = void*;

/// A color, 0x00BBGGRR.
using COLORREF = DWORD;

constexpr COLORREF RGB(int red, int green, int blue)
{
    return static_cast<COLORREF>((red & 0xFF) | (green & 0xFF) << 8 | (blue & 0xFF) << 16);
}
constexpr BYTE GetRValue(COLORREF color)
{
    return static_cast<BYTE>(color);
}
constexpr BYTE GetGValue(COLORREF color)
{
    return static_cast<BYTE>(color >> 8);
}
constexpr BYTE GetBValue(COLORREF color)
{
    return static_cast<BYTE>(color >> 16);
}

inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;

// Pens
inline constexpr int PS_SOLID = 0;
inline constexpr int PS_NULL = 5;

// Predefined objects that any context can select
inline constexpr int WHITE_BRUSH = 0;
inline constexpr int GRAY_BRUSH = 2;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int HOLLOW_BRUSH = NULL_BRUSH;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int SYSTEM_FONT = 13;

// Raster operations of BitBlt
inline constexpr DWORD SRCCOPY = 0x00CC0020;  ///< target = source
inline constexpr DWORD SRCPAINT = 0x00EE0086; ///< target = target OR source

// Background modes
inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;

// Text
inline constexpr UINT DT_TOP = 0x0000;
inline constexpr UINT DT_LEFT = 0x0000;
inline constexpr UINT DT_CENTER = 0x0001;
inline constexpr UINT DT_RIGHT = 0x0002;
inline constexpr UINT DT_VCENTER = 0x0004;
inline constexpr UINT DT_BOTTOM = 0x0008;
inline constexpr UINT DT_SINGLELINE = 0x0020;
inline constexpr UINT DT_NOCLIP = 0x0100;
inline constexpr UINT DT_CALCRECT = 0x0400;
inline constexpr UINT ETO_OPAQUE = 2;
inline constexpr UINT ETO_CLIPPED = 4;
inline constexpr int FW_NORMAL = 400;
inline constexpr int FW_BOLD = 700;
inline constexpr int LF_FACESIZE = 32;

// System colors
inline constexpr int COLOR_WINDOW = 5;
inline constexpr int COLOR_WINDOWTEXT = 8;
inline constexpr int COLOR_BTNFACE = 15;
inline constexpr int COLOR_BTNSHADOW = 16;
inline constexpr int COLOR_BTNTEXT = 18;
inline constexpr int COLOR_BTNHIGHLIGHT = 20;
inline constexpr int COLOR_3DDKSHADOW = 21;
inline constexpr int COLOR_3DLIGHT = 22;
inline constexpr int SYS_COLOR_INDEX_FLAG = 0x40000000;

// Window styles
inline constexpr DWORD WS_OVERLAPPED = 0x00000000;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
inline constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
inline constexpr DWORD WS_CAPTION = 0x00C00000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_THICKFRAME = 0x00040000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME;
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x00000200;
inline constexpr DWORD WS_EX_STATICEDGE = 0x00020000;
inline constexpr DWORD SS_LEFT = 0x0000;
inline constexpr DWORD SS_CENTER = 0x0001;
inline constexpr DWORD SS_RIGHT = 0x0002;
inline constexpr DWORD SS_NOTIFY = 0x0100;

// Window classes
inline constexpr UINT CS_VREDRAW = 0x0001;
inline constexpr UINT CS_HREDRAW = 0x0002;
inline constexpr UINT CS_DBLCLKS = 0x0008;

// ShowWindow
inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOW = 5;

// SetWindowPos
inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_NOREDRAW = 0x0008;
inline constexpr UINT SWP_FRAMECHANGED = 0x0020;
inline constexpr UINT SWP_SHOWWINDOW = 0x0040;
inline constexpr UINT SWP_HIDEWINDOW = 0x0080;

// Messages
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_GETTEXT = 0x000D;
inline constexpr UINT WM_GETTEXTLENGTH = 0x000E;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_ERASEBKGND = 0x0014;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;
inline constexpr UINT WM_SETFONT = 0x0030;
inline constexpr UINT WM_GETFONT = 0x0031;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr WPARAM SIZE_RESTORED = 0;

/// A requested font. A positive height is that of the character cell in pixels, a negative one that
/// of the characters themselves.
struct LOGFONTW
{
    LONG lfHeight = 0;
    LONG lfWidth = 0;
    LONG lfEscapement = 0;
    LONG lfOrientation = 0;
    LONG lfWeight = 0;
    BYTE lfItalic = 0;
    BYTE lfUnderline = 0;
    BYTE lfStrikeOut = 0;
    BYTE lfCharSet = 0;
    BYTE lfOutPrecision = 0;
    BYTE lfClipPrecision = 0;
    BYTE lfQuality = 0;
    BYTE lfPitchAndFamily = 0;
    wchar_t lfFaceName[LF_FACESIZE] = {};
};
using LOGFONT = LOGFONTW;

/// The parameters a window is created with.
struct CREATESTRUCTW
{
    LPVOID lpCreateParams = nullptr;
    HWND hwndParent = nullptr;
    int cy = 0;
    int cx = 0;
    int y = 0;
    int x = 0;
    DWORD style = 0;
    LPCTSTR lpszName = nullptr;
    LPCTSTR lpszClass = nullptr;
    DWORD dwExStyle = 0;
};
using CREATESTRUCT = CREATESTRUCTW;
using LPCREATESTRUCT = CREATESTRUCTW*;

struct PAINTSTRUCT
{
    HDC hdc = nullptr;
    BOOL fErase = 0;
    RECT rcPaint{};
};

/// A color of the system's scheme. SYS_COLOR_INDEX_FLAG in the index is ignored; an unknown index
/// gives black.
TILTPOLE_API COLORREF GetSysColor(int index);
