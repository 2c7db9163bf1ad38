// SPDX-License-Identifier: MIT
/// @file
/// Handles, colors and constants of the windowed framework, with the values hosts rely on.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Rect.h"
#include "framework/core/Types.h"

#include <climits>
#include <concepts>
#include <cstddef>
#include <cstdint>

namespace framework {
struct GdiRecord;
struct DcRecord;
struct MenuRecord;
} // namespace framework

using HGDIOBJ = framework::GdiRecord*;
using HPEN = HGDIOBJ;
using HBRUSH = HGDIOBJ;
using HFONT = HGDIOBJ;
using HBITMAP = HGDIOBJ;
using HDC = framework::DcRecord*;

/// Menus are not drawn; a child window's id is passed as one.
using HMENU = framework::MenuRecord*;

using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using LPVOID = void*;

/// A color, 0x00BBGGRR.
using COLORREF = DWORD;

// The parentheses around the names keep macros of a host apart.
constexpr COLORREF(RGB)(int red, int green, int blue)
{
    return static_cast<COLORREF>((red & 0xFF) | (green & 0xFF) << 8 | (blue & 0xFF) << 16);
}
constexpr BYTE(GetRValue)(COLORREF color)
{
    return static_cast<BYTE>(color);
}
constexpr BYTE(GetGValue)(COLORREF color)
{
    return static_cast<BYTE>(color >> 8);
}
constexpr BYTE(GetBValue)(COLORREF color)
{
    return static_cast<BYTE>(color >> 16);
}

namespace framework {

/// The id of a child window where a window is created: a number, or the same cast to HMENU.
class WindowId
{
public:
    // NOLINTBEGIN(google-explicit-constructor): hosts write either
    template <std::integral Number>
    constexpr WindowId(Number id) : m_id(static_cast<std::uintptr_t>(id))
    {}
    WindowId(HMENU id) : m_id(reinterpret_cast<std::uintptr_t>(id)) {}
    constexpr WindowId(std::nullptr_t) {}
    // NOLINTEND(google-explicit-constructor)

    constexpr std::uintptr_t Value() const { return m_id; }

private:
    std::uintptr_t m_id = 0;
};

} // namespace framework

inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;

// Pens
inline constexpr int PS_SOLID = 0;
inline constexpr int PS_NULL = 5;

// Predefined objects that any context can select
inline constexpr int WHITE_BRUSH = 0;
inline constexpr int LTGRAY_BRUSH = 1;
inline constexpr int GRAY_BRUSH = 2;
inline constexpr int DKGRAY_BRUSH = 3;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int HOLLOW_BRUSH = NULL_BRUSH;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int SYSTEM_FONT = 13;
inline constexpr int DEFAULT_GUI_FONT = 17;

// Raster operations of BitBlt
inline constexpr DWORD SRCCOPY = 0x00CC0020;  ///< target = source
inline constexpr DWORD SRCPAINT = 0x00EE0086; ///< target = target OR source

// Raster operations of PatBlt
inline constexpr DWORD PATCOPY = 0x00F00021;   ///< target = brush
inline constexpr DWORD PATINVERT = 0x005A0049; ///< target = target XOR brush
inline constexpr DWORD DSTINVERT = 0x00550009; ///< target = NOT target
inline constexpr DWORD BLACKNESS = 0x00000042;
inline constexpr DWORD WHITENESS = 0x00FF0062;

// What IntersectClipRect and GetClipBox leave; 0 without a context
inline constexpr int NULLREGION = 1;
inline constexpr int SIMPLEREGION = 2;

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
inline constexpr UINT DT_WORDBREAK = 0x0010;
inline constexpr UINT DT_SINGLELINE = 0x0020;
inline constexpr UINT DT_NOCLIP = 0x0100;
inline constexpr UINT DT_CALCRECT = 0x0400;
inline constexpr UINT DT_NOPREFIX = 0x0800;
inline constexpr UINT ETO_OPAQUE = 2;
inline constexpr UINT ETO_CLIPPED = 4;
inline constexpr UINT TA_LEFT = 0;
inline constexpr UINT TA_RIGHT = 2;
inline constexpr UINT TA_CENTER = 6;
inline constexpr UINT TA_TOP = 0;
inline constexpr UINT TA_BOTTOM = 8;
inline constexpr UINT TA_BASELINE = 24;
inline constexpr UINT GDI_ERROR = 0xFFFFFFFF;
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
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_MINIMIZEBOX = 0x00020000;
inline constexpr DWORD WS_MAXIMIZEBOX = 0x00010000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW =
    WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
inline constexpr DWORD WS_POPUPWINDOW = WS_POPUP | WS_BORDER | WS_SYSMENU;
inline constexpr DWORD AFX_WS_DEFAULT_VIEW = WS_CHILD | WS_VISIBLE;
inline constexpr UINT AFX_IDW_PANE_FIRST = 0xE900; ///< the child that fills a frame
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x00000200;
inline constexpr DWORD WS_EX_STATICEDGE = 0x00020000;
inline constexpr DWORD SS_LEFT = 0x0000;
inline constexpr DWORD SS_CENTER = 0x0001;
inline constexpr DWORD SS_RIGHT = 0x0002;
inline constexpr DWORD SS_LEFTNOWORDWRAP = 0x000C;
inline constexpr DWORD SS_TYPEMASK = 0x001F;
inline constexpr DWORD SS_NOPREFIX = 0x0080;
inline constexpr DWORD SS_NOTIFY = 0x0100;
inline constexpr DWORD SS_CENTERIMAGE = 0x0200; ///< one line, centered vertically

// Window classes
inline constexpr UINT CS_VREDRAW = 0x0001;
inline constexpr UINT CS_HREDRAW = 0x0002;
inline constexpr UINT CS_DBLCLKS = 0x0008;

// The place or size of a window that the framework chooses
inline constexpr int CW_USEDEFAULT = INT_MIN;

// RedrawWindow
inline constexpr UINT RDW_INVALIDATE = 0x0001;
inline constexpr UINT RDW_ERASE = 0x0004;
inline constexpr UINT RDW_VALIDATE = 0x0008;
inline constexpr UINT RDW_NOERASE = 0x0020;
inline constexpr UINT RDW_NOCHILDREN = 0x0040;
inline constexpr UINT RDW_ALLCHILDREN = 0x0080;
inline constexpr UINT RDW_UPDATENOW = 0x0100;
inline constexpr UINT RDW_ERASENOW = 0x0200;

// ShowWindow: all but SW_HIDE show
inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOWNOACTIVATE = 4;
inline constexpr int SW_SHOW = 5;

// SetWindowPos
inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_NOREDRAW = 0x0008;
inline constexpr UINT SWP_NOACTIVATE = 0x0010;
inline constexpr UINT SWP_FRAMECHANGED = 0x0020;
inline constexpr UINT SWP_SHOWWINDOW = 0x0040;
inline constexpr UINT SWP_HIDEWINDOW = 0x0080;

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

/// The measures of a font, in pixels.
struct TEXTMETRICW
{
    LONG tmHeight = 0; ///< of the character cell
    LONG tmAscent = 0; ///< above the baseline
    LONG tmDescent = 0;
    LONG tmInternalLeading = 0;
    LONG tmExternalLeading = 0;
    LONG tmAveCharWidth = 0; ///< of "x"
    LONG tmMaxCharWidth = 0; ///< of "W"
    LONG tmWeight = 0;
    BYTE tmItalic = 0;
};
using TEXTMETRIC = TEXTMETRICW;
using LPTEXTMETRIC = TEXTMETRICW*;

/// The parameters a window is created with.
struct CREATESTRUCTW
{
    LPVOID lpCreateParams = nullptr;
    HINSTANCE hInstance = nullptr;
    HMENU hMenu = nullptr; ///< the id of a child window
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

/// What BeginPaint reports: the context to draw with, and the part of the window to draw.
struct PAINTSTRUCT
{
    HDC hdc = nullptr;
    BOOL fErase = 0;
    RECT rcPaint{};
};

/// A color of the system's scheme. SYS_COLOR_INDEX_FLAG in the index is ignored; an unknown index
/// gives black.
TILTPOLE_API COLORREF GetSysColor(int index);

#include "framework/gui/Messages.h" // IWYU pragma: export
