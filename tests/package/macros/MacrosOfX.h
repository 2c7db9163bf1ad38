// SPDX-License-Identifier: MIT
//
// Words that the headers of the X Window System define as macros (X.h, Xlib.h).
#pragma once

#define None 0L
#define ParentRelative 1L
#define CurrentTime 0L
#define Bool int
#define Status int
#define True 1
#define False 0
#define Success 0
#define Always 2
#define WhenMapped 1
#define NotUseful 0
#define KeyPress 2
#define KeyRelease 3
#define FocusIn 9
#define FocusOut 10
#define Expose 12
#define Above 0
#define Below 1
#define Opposite 4
#define Complex 0
#define Nonconvex 1
#define Convex 2
#define Unsorted 0
#define CoordModePrevious 1
#define GrayScale 1
#define StaticGray 0
#define CursorShape 0
#define FontChange 255
#define Button1 1
