// SPDX-License-Identifier: MIT
/// @file
/// Points, sizes and rectangles of the window framework, in device units (pixels); x grows to the
/// right, y downwards.
///
///     const CRect dial(10, 10, 110, 60);          // left, top, right, bottom
///     const bool hit = dial.PtInRect({10, 59});   // left and top edge: inside
///     const bool out = !dial.PtInRect({110, 60}); // right and bottom edge: outside
#pragma once

#include "framework/core/Types.h"

#include <algorithm>
#include <utility>

/// A point [pixels].
struct POINT
{
    LONG x, y;
};

/// A width and a height [pixels].
struct SIZE
{
    LONG cx, cy;
};

/// A rectangle by its edges [pixels]; the right and the bottom edge are not part of it.
struct RECT
{
    LONG left, top, right, bottom;
};

using LPRECT = RECT*;
using LPCRECT = const RECT*;
using LPPOINT = POINT*;
using LPSIZE = SIZE*;

/// Whether `point` lies in `rect`; its left and top edges belong to it, its right and bottom do
/// not.
inline BOOL PtInRect(const RECT* rect, POINT point)
{
    return rect != nullptr && rect->left <= point.x && point.x < rect->right && rect->top <= point.y
           && point.y < rect->bottom;
}

/// A size with its arithmetic; conversions to and from SIZE are implicit.
class CSize : public SIZE
{
public:
    constexpr CSize() : SIZE() {}
    constexpr CSize(int initialCx, int initialCy) : SIZE()
    {
        cx = initialCx;
        cy = initialCy;
    }
    constexpr CSize(SIZE size) : SIZE(size) {}
    constexpr explicit CSize(POINT point) : CSize(point.x, point.y) {}

    void SetSize(int newCx, int newCy) { *this = CSize(newCx, newCy); }
    friend constexpr bool operator==(const CSize& a, const CSize& b)
    {
        return a.cx == b.cx && a.cy == b.cy;
    }
    void operator+=(SIZE other) { SetSize(cx + other.cx, cy + other.cy); }
    void operator-=(SIZE other) { SetSize(cx - other.cx, cy - other.cy); }
    constexpr CSize operator+(SIZE other) const { return {cx + other.cx, cy + other.cy}; }
    constexpr CSize operator-(SIZE other) const { return {cx - other.cx, cy - other.cy}; }
    constexpr CSize operator-() const { return {-cx, -cy}; }
};

/// A point with its arithmetic; conversions to and from POINT are implicit.
class CPoint : public POINT
{
public:
    constexpr CPoint() : POINT() {}
    constexpr CPoint(int initialX, int initialY) : POINT()
    {
        x = initialX;
        y = initialY;
    }
    constexpr CPoint(POINT point) : POINT(point) {}
    /// The point in a message parameter (LPARAM): two signed 16-bit numbers, x the low one.
    constexpr explicit CPoint(std::intptr_t packed)
        : CPoint(static_cast<std::int16_t>(packed & 0xFFFF),
                 static_cast<std::int16_t>(packed >> 16 & 0xFFFF))
    {}
    constexpr explicit CPoint(SIZE size) : CPoint(size.cx, size.cy) {}

    void SetPoint(int newX, int newY) { *this = CPoint(newX, newY); }
    void Offset(int dx, int dy) { SetPoint(x + dx, y + dy); }
    void Offset(POINT by) { Offset(by.x, by.y); }
    void Offset(SIZE by) { Offset(by.cx, by.cy); }
    friend constexpr bool operator==(const CPoint& a, const CPoint& b)
    {
        return a.x == b.x && a.y == b.y;
    }
    void operator+=(SIZE by) { Offset(by); }
    void operator-=(SIZE by) { Offset(-by.cx, -by.cy); }
    void operator+=(POINT by) { Offset(by); }
    void operator-=(POINT by) { Offset(-by.x, -by.y); }
    constexpr CPoint operator+(SIZE by) const { return {x + by.cx, y + by.cy}; }
    constexpr CPoint operator-(SIZE by) const { return {x - by.cx, y - by.cy}; }
    constexpr CPoint operator+(POINT by) const { return {x + by.x, y + by.y}; }
    constexpr CSize operator-(POINT other) const { return {x - other.x, y - other.y}; }
    constexpr CPoint operator-() const { return {-x, -y}; }
};

/// A rectangle with its arithmetic; conversions to and from RECT are implicit.
class CRect : public RECT
{
public:
    constexpr CRect() : RECT() {}
    constexpr CRect(int l, int t, int r, int b) : RECT()
    {
        left = l;
        top = t;
        right = r;
        bottom = b;
    }
    constexpr CRect(const RECT& rect) : RECT(rect) {}
    CRect(LPCRECT rect) : RECT(*rect) {}
    constexpr CRect(POINT topLeft, SIZE size)
        : CRect(topLeft.x, topLeft.y, topLeft.x + size.cx, topLeft.y + size.cy)
    {}
    constexpr CRect(POINT topLeft, POINT bottomRight)
        : CRect(topLeft.x, topLeft.y, bottomRight.x, bottomRight.y)
    {}

    operator LPRECT() { return this; }
    operator LPCRECT() const { return this; }

    constexpr int Width() const { return right - left; }
    constexpr int Height() const { return bottom - top; }
    constexpr CSize Size() const { return {Width(), Height()}; }
    constexpr CPoint TopLeft() const { return {left, top}; }
    constexpr CPoint BottomRight() const { return {right, bottom}; }
    /// Halves are truncated towards zero.
    constexpr CPoint CenterPoint() const { return {(left + right) / 2, (top + bottom) / 2}; }

    /// True where width or height is 0 or negative.
    constexpr BOOL IsRectEmpty() const { return left >= right || top >= bottom; }
    constexpr BOOL IsRectNull() const { return !(left || top || right || bottom); }
    BOOL PtInRect(POINT point) const { return ::PtInRect(this, point); }

    void SetRect(int l, int t, int r, int b) { *this = CRect(l, t, r, b); }
    void SetRectEmpty() { *this = CRect(); }
    void CopyRect(LPCRECT rect) { *this = CRect(rect); }
    BOOL EqualRect(LPCRECT rect) const { return *this == *rect; }

    void InflateRect(int l, int t, int r, int b)
    {
        SetRect(left - l, top - t, right + r, bottom + b);
    }
    void InflateRect(int x, int y) { InflateRect(x, y, x, y); }
    void InflateRect(SIZE by) { InflateRect(by.cx, by.cy); }
    void InflateRect(LPCRECT by) { InflateRect(by->left, by->top, by->right, by->bottom); }
    void DeflateRect(int l, int t, int r, int b) { InflateRect(-l, -t, -r, -b); }
    void DeflateRect(int x, int y) { InflateRect(-x, -y); }
    void DeflateRect(SIZE by) { InflateRect(-by.cx, -by.cy); }
    void DeflateRect(LPCRECT by) { DeflateRect(by->left, by->top, by->right, by->bottom); }
    void OffsetRect(int x, int y) { SetRect(left + x, top + y, right + x, bottom + y); }
    void OffsetRect(POINT by) { OffsetRect(by.x, by.y); }
    void OffsetRect(SIZE by) { OffsetRect(by.cx, by.cy); }
    void MoveToX(int x) { OffsetRect(x - left, 0); }
    void MoveToY(int y) { OffsetRect(0, y - top); }
    void MoveToXY(int x, int y) { OffsetRect(x - left, y - top); }

    /// Swaps edges so that width and height are not negative.
    void NormalizeRect()
    {
        if (left > right) std::swap(left, right);
        if (top > bottom) std::swap(top, bottom);
    }

    /// Becomes the intersection of two rectangles; empty, with result FALSE, where there is none.
    BOOL IntersectRect(LPCRECT a, LPCRECT b)
    {
        const CRect common((std::max)(a->left, b->left), (std::max)(a->top, b->top),
                           (std::min)(a->right, b->right), (std::min)(a->bottom, b->bottom));
        *this = common.IsRectEmpty() ? CRect() : common;
        return !IsRectEmpty();
    }

    /// Becomes the smallest rectangle around both. An empty one is ignored; FALSE where both are.
    BOOL UnionRect(LPCRECT a, LPCRECT b)
    {
        const CRect first(a);
        const CRect second(b);
        if (first.IsRectEmpty()) {
            *this = second.IsRectEmpty() ? CRect() : second;
        } else if (second.IsRectEmpty()) {
            *this = first;
        } else {
            SetRect((std::min)(first.left, second.left), (std::min)(first.top, second.top),
                    (std::max)(first.right, second.right), (std::max)(first.bottom, second.bottom));
        }
        return !IsRectEmpty();
    }

    friend constexpr bool operator==(const CRect& a, const CRect& b)
    {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
    void operator+=(POINT by) { OffsetRect(by); }
    void operator+=(SIZE by) { OffsetRect(by); }
    void operator-=(POINT by) { OffsetRect(-by.x, -by.y); }
    void operator-=(SIZE by) { OffsetRect(-by.cx, -by.cy); }
    void operator&=(const RECT& other) { IntersectRect(this, &other); }
    void operator|=(const RECT& other) { UnionRect(this, &other); }
    CRect operator+(POINT by) const { return CRect(TopLeft() + by, Size()); }
    CRect operator+(SIZE by) const { return CRect(TopLeft() + by, Size()); }
    CRect operator-(POINT by) const { return *this + POINT{-by.x, -by.y}; }
    CRect operator-(SIZE by) const { return CRect(TopLeft() - by, Size()); }
};
