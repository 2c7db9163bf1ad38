// SPDX-License-Identifier: MIT
/// @file
/// The numbers of messages and notifications, of keys and mouse buttons.
#pragma once

#include "framework/gui/Types.h"

#include <cstdint>
#include <type_traits>

// Messages
inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_ENABLE = 0x000A;
inline constexpr UINT WM_SETREDRAW = 0x000B;
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
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_CHAR = 0x0102;
inline constexpr UINT WM_SYSKEYDOWN = 0x0104; ///< with Alt
inline constexpr UINT WM_SYSKEYUP = 0x0105;
inline constexpr UINT WM_SYSCHAR = 0x0106;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
inline constexpr UINT WM_RBUTTONDOWN = 0x0204;
inline constexpr UINT WM_RBUTTONUP = 0x0205;
inline constexpr UINT WM_RBUTTONDBLCLK = 0x0206;
inline constexpr UINT WM_MBUTTONDOWN = 0x0207;
inline constexpr UINT WM_MBUTTONUP = 0x0208;
inline constexpr UINT WM_MBUTTONDBLCLK = 0x0209;
inline constexpr UINT WM_MOUSEWHEEL = 0x020A;
inline constexpr UINT WM_CAPTURECHANGED = 0x0215;
inline constexpr UINT WM_MOUSELEAVE = 0x02A3;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;

// The kind of WM_SIZE; windows of the framework tell SIZE_RESTORED
inline constexpr WPARAM SIZE_RESTORED = 0;
inline constexpr WPARAM SIZE_MINIMIZED = 1;
inline constexpr WPARAM SIZE_MAXIMIZED = 2;

// Notifications of a static control with SS_NOTIFY, in the high word of WM_COMMAND's WPARAM
inline constexpr UINT STN_CLICKED = 0;
inline constexpr UINT STN_DBLCLK = 1;
inline constexpr UINT STN_ENABLE = 2;
inline constexpr UINT STN_DISABLE = 3;

// Buttons and keys that are held down, in a mouse message
inline constexpr UINT MK_LBUTTON = 0x0001;
inline constexpr UINT MK_RBUTTON = 0x0002;
inline constexpr UINT MK_SHIFT = 0x0004;
inline constexpr UINT MK_CONTROL = 0x0008;
inline constexpr UINT MK_MBUTTON = 0x0010;

inline constexpr int WHEEL_DELTA = 120; ///< one notch of the wheel, away from the user

// Keys. Letters and digits are their upper case characters.
inline constexpr UINT VK_BACK = 0x08;
inline constexpr UINT VK_TAB = 0x09;
inline constexpr UINT VK_RETURN = 0x0D;
inline constexpr UINT VK_SHIFT = 0x10;
inline constexpr UINT VK_CONTROL = 0x11;
inline constexpr UINT VK_MENU = 0x12; ///< Alt
inline constexpr UINT VK_PAUSE = 0x13;
inline constexpr UINT VK_CAPITAL = 0x14;
inline constexpr UINT VK_ESCAPE = 0x1B;
inline constexpr UINT VK_SPACE = 0x20;
inline constexpr UINT VK_PRIOR = 0x21; ///< page up
inline constexpr UINT VK_NEXT = 0x22;  ///< page down
inline constexpr UINT VK_END = 0x23;
inline constexpr UINT VK_HOME = 0x24;
inline constexpr UINT VK_LEFT = 0x25;
inline constexpr UINT VK_UP = 0x26;
inline constexpr UINT VK_RIGHT = 0x27;
inline constexpr UINT VK_DOWN = 0x28;
inline constexpr UINT VK_INSERT = 0x2D;
inline constexpr UINT VK_DELETE = 0x2E;
inline constexpr UINT VK_NUMPAD0 = 0x60; ///< the other digits follow
inline constexpr UINT VK_NUMPAD9 = 0x69;
inline constexpr UINT VK_MULTIPLY = 0x6A;
inline constexpr UINT VK_ADD = 0x6B;
inline constexpr UINT VK_SUBTRACT = 0x6D;
inline constexpr UINT VK_DECIMAL = 0x6E;
inline constexpr UINT VK_DIVIDE = 0x6F;
inline constexpr UINT VK_F1 = 0x70; ///< the other function keys follow
inline constexpr UINT VK_F12 = 0x7B;
inline constexpr UINT VK_OEM_PLUS = 0xBB;
inline constexpr UINT VK_OEM_COMMA = 0xBC;
inline constexpr UINT VK_OEM_MINUS = 0xBD;
inline constexpr UINT VK_OEM_PERIOD = 0xBE;

// Words of a message parameter. They take every integer, enumeration and pointer, as hosts know it
// from macros. The parentheses around the names keep macros of a host apart.
namespace framework {

template <class Packed>
constexpr std::uintptr_t BitsOf(Packed packed)
{
    if constexpr (std::is_pointer_v<Packed>)
        return reinterpret_cast<std::uintptr_t>(packed);
    else
        return static_cast<std::uintptr_t>(packed);
}

template <class Low, class High>
constexpr DWORD PackedBits(Low low, High high)
{
    return static_cast<DWORD>((BitsOf(low) & 0xFFFF) | (BitsOf(high) & 0xFFFF) << 16);
}

} // namespace framework

template <class Packed>
constexpr WORD(LOWORD)(Packed packed)
{
    return static_cast<WORD>(framework::BitsOf(packed) & 0xFFFF);
}
template <class Packed>
constexpr WORD(HIWORD)(Packed packed)
{
    return static_cast<WORD>(framework::BitsOf(packed) >> 16 & 0xFFFF);
}
template <class Low, class High>
constexpr LONG(MAKELONG)(Low low, High high)
{
    return static_cast<LONG>(framework::PackedBits(low, high));
}
template <class Low, class High>
constexpr WPARAM(MAKEWPARAM)(Low low, High high)
{
    return framework::PackedBits(low, high);
}
template <class Low, class High>
constexpr LPARAM(MAKELPARAM)(Low low, High high)
{
    return static_cast<LPARAM>(framework::PackedBits(low, high));
}
