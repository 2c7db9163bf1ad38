// SPDX-License-Identifier: MIT
/// @file
/// Plain types and constants of the window framework, for systems whose headers do not have them.
#pragma once

#include <cstddef>
#include <cstdint>

using BOOL = int;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using UINT = unsigned int;
using INT = int;
using LONG = std::int32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using INT_PTR = std::ptrdiff_t;
using UINT_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;

using TCHAR = wchar_t;
using WCHAR = wchar_t;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPTSTR = wchar_t*;
using LPCTSTR = const wchar_t*;

// Handles point to records that only the framework knows.
namespace framework {
struct ModuleRecord;
struct WindowRecord;
} // namespace framework
using HINSTANCE = framework::ModuleRecord*;
using HMODULE = HINSTANCE;
using HWND = framework::WindowRecord*;

// Macros as in the framework, so that other libraries' own "#ifndef TRUE" keeps working.
#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define _T(literal) L##literal
#define TEXT(literal) L##literal

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x01;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

inline constexpr DWORD MAX_PATH = 260;
