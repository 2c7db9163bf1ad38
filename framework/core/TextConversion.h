// SPDX-License-Identifier: MIT
/// @file
/// Conversion between wide text and UTF-8.
///
///     const std::string bytes = framework::ToUtf8(L"H\u00F6he"); // 5 bytes
///     const std::wstring text = framework::FromUtf8(bytes);      // 4 characters
///
/// Neither the C nor the C++ locale is consulted, and every input has a defined result: each
/// maximal ill-formed part becomes one U+FFFD. ToUtf8 and FromUtf8 throw std::bad_alloc where
/// memory does not suffice; the functions with a buffer do not allocate.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Types.h"

#include <string>
#include <string_view>

namespace framework {

/// `text` as UTF-8. A wide character that is not a Unicode scalar value becomes U+FFFD.
TILTPOLE_API std::string ToUtf8(std::wstring_view text);

/// UTF-8 `bytes` as wide text. A byte-order mark is kept (U+FEFF).
TILTPOLE_API std::wstring FromUtf8(std::string_view bytes);

} // namespace framework

inline constexpr UINT CP_ACP = 0; // the system's own code page: UTF-8 here
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x08; // fail on ill-formed input
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;

/// Converts `sourceLength` bytes, or up to and including the closing 0 where it is -1.
///
/// @param codePage  CP_UTF8 or CP_ACP
/// @param capacity  size of `target` [wide characters]; 0 returns the number needed
/// @return wide characters written or needed; 0 where `target` is too small, the input is empty or
///         (with MB_ERR_INVALID_CHARS) ill-formed, or an argument is out of range
TILTPOLE_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source,
                                     int sourceLength, wchar_t* target, int capacity);

/// Converts `sourceLength` wide characters, or up to and including the closing 0 where it is -1.
///
/// @param codePage     CP_UTF8 or CP_ACP
/// @param capacity     size of `target` [bytes]; 0 returns the number needed
/// @param defaultChar  ignored; must be null for CP_UTF8
/// @param usedDefault  set to whether a character was replaced; must be null for CP_UTF8
/// @return bytes written or needed; 0 where `target` is too small, the input is empty or
///         (with WC_ERR_INVALID_CHARS) ill-formed, or an argument is out of range
TILTPOLE_API int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* source,
                                     int sourceLength, char* target, int capacity,
                                     const char* defaultChar, BOOL* usedDefault);
