// SPDX-License-Identifier: MIT
//
// Words that the headers of Windows define as macros (minwindef.h, windef.h, wingdi.h, rpcndr.h,
// winnt.h) and that a library may use by accident or has as functions.
#pragma once

#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define near
#define far
#define NEAR near
#define FAR far
#define IN
#define OUT
#define OPTIONAL
#define CONST const
#define ERROR 0
#define NO_ERROR 0L
#define DELETE 0x00010000L
#define DIFFERENCE 11
#define ABSOLUTE 1
#define RELATIVE 2
#define STRICT 1
#define small char
#define interface struct
#define CALLBACK
#define WINAPI
#define LOWORD(l) ((unsigned short)(((unsigned long long)(l)) & 0xffff))
#define HIWORD(l) ((unsigned short)((((unsigned long long)(l)) >> 16) & 0xffff))
#define MAKELONG(a, b) ((int)(((unsigned)(a)&0xffff) | ((unsigned)(b)&0xffff) << 16))
#define MAKEWPARAM(l, h) ((unsigned long long)(unsigned)MAKELONG(l, h))
#define MAKELPARAM(l, h) ((long)(unsigned)MAKELONG(l, h))
#define RGB(r, g, b) ((unsigned)((r)&0xff) | ((unsigned)((g)&0xff) << 8) | ((b)&0xffu) << 16)
#define GetRValue(rgb) ((unsigned char)(rgb))
#define GetGValue(rgb) ((unsigned char)((rgb) >> 8))
#define GetBValue(rgb) ((unsigned char)((rgb) >> 16))
