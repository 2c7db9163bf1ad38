// SPDX-License-Identifier: MIT
//
// Wide text and UTF-8. Nothing here looks at the C or C++ locale, and no input is undefined:
// what is not well-formed becomes U+FFFD, one per maximal ill-formed part.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/Types.h"

#include <string>
#include <string_view>

namespace framework {

/// UTF-8 of `text`. A wide character that is no Unicode scalar value becomes U+FFFD.
TILTPOLE_API std::string ToUtf8(std::wstring_view text);

/// Wide text of UTF-8 `bytes`. A byte-order mark is kept (as U+FEFF).
TILTPOLE_API std::wstring FromUtf8(std::string_view bytes);

} // namespace framework

inline constexpr UINT CP_ACP = 0; // the system's single-byte text: UTF-8 here
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x08; // ill-formed input fails instead of U+FFFD
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;

/// Converts `sourceLength` bytes, or up to and including the closing 0 where it is -1.
///
/// @param codePage  CP_UTF8 or CP_ACP
/// @param capacity  wide characters that `target` holds; 0 asks for the number needed
/// @return wide characters written or needed; 0 where the target is too small, the input is empty
///         or ill-formed (with MB_ERR_INVALID_CHARS), or an argument is out of range
TILTPOLE_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source,
                                     int sourceLength, wchar_t* target, int capacity);

/// Converts `sourceLength` wide characters, or up to and including the closing 0 where it is -1.
///
/// @param codePage     CP_UTF8 or CP_ACP
/// @param capacity     bytes that `target` holds; 0 asks for the number needed
/// @param defaultChar  not used; must be null for CP_UTF8
/// @param usedDefault  set to whether something was replaced; must be null for CP_UTF8
/// @return bytes written or needed; 0 where the target is too small, the input is empty or
///         ill-formed (with WC_ERR_INVALID_CHARS), or an argument is out of range
TILTPOLE_API int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* source,
                                     int sourceLength, char* target, int capacity,
                                     const char* defaultChar, BOOL* usedDefault);
