// SPDX-License-Identifier: MIT
/// @file
/// Messages to the operator. The host decides how they are shown by setting a handler.
///
///     framework::SetMessageBoxHandler([](const wchar_t* text, const wchar_t* title, UINT style) {
///         ShowOnStatusLine(title, text, style == MB_ICONSTOP);
///         return IDOK;
///     });
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Types.h"

#include <functional>

inline constexpr UINT MB_OK = 0x00;
inline constexpr UINT MB_OKCANCEL = 0x01;
inline constexpr UINT MB_YESNOCANCEL = 0x03;
inline constexpr UINT MB_YESNO = 0x04;
inline constexpr UINT MB_RETRYCANCEL = 0x05;
inline constexpr UINT MB_ICONSTOP = 0x10;
inline constexpr UINT MB_ICONERROR = 0x10;
inline constexpr UINT MB_ICONQUESTION = 0x20;
inline constexpr UINT MB_ICONEXCLAMATION = 0x30;
inline constexpr UINT MB_ICONWARNING = 0x30;
inline constexpr UINT MB_ICONINFORMATION = 0x40;
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDRETRY = 4;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

/// Shows a message and returns the button that the operator chose. A null `text` is empty, a null
/// `title` is "Error"; `owner` is ignored. Throws what the handler throws.
TILTPOLE_API int MessageBoxW(HWND owner, const wchar_t* text, const wchar_t* title, UINT style);

namespace framework {

/// Shows one message. Neither `text` nor `title` is null; the result is that of MessageBoxW.
using MessageBoxHandler =
    std::function<int(const wchar_t* text, const wchar_t* title, unsigned style)>;

/// Replaces the handler and returns the previous one. An empty handler restores the default, which
/// writes "title: text" as UTF-8 to standard error and returns IDOK.
TILTPOLE_API MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);

} // namespace framework
