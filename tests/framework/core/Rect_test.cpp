// SPDX-License-Identifier: MIT
#include "framework/core/Rect.h"

#include <gtest/gtest.h>

namespace {

constexpr CRect kFrame(10, 20, 30, 60);

struct Hit
{
    int x, y;
    bool inside;
    const char* why;
};

} // namespace

TEST(Rect, ContainsItsLeftAndTopEdgesOnly)
{
    constexpr Hit cases[] = {
        {10, 20, true,  "top left corner"},
        {29, 59, true,  "last pixel"     },
        {30, 59, false, "right edge"     },
        {29, 60, false, "bottom edge"    },
        {9,  20, false, "left of it"     },
        {10, 19, false, "above it"       },
    };
    for (const Hit& c : cases) {
        EXPECT_EQ(kFrame.PtInRect(CPoint(c.x, c.y)) != FALSE, c.inside) << c.why;
        EXPECT_EQ(PtInRect(&kFrame, CPoint(c.x, c.y)) != FALSE, c.inside) << c.why;
    }
    EXPECT_FALSE(PtInRect(nullptr, CPoint(0, 0)));
}

TEST(Rect, ReportsItsMeasures)
{
    EXPECT_EQ(kFrame.Width(), 20);
    EXPECT_EQ(kFrame.Height(), 40);
    EXPECT_EQ(kFrame.Size(), CSize(20, 40));
    EXPECT_EQ(kFrame.TopLeft(), CPoint(10, 20));
    EXPECT_EQ(kFrame.BottomRight(), CPoint(30, 60));
    EXPECT_EQ(kFrame.CenterPoint(), CPoint(20, 40));
    EXPECT_EQ(CRect(0, 0, 5, 7).CenterPoint(), CPoint(2, 3));
    EXPECT_EQ(CRect(-5, -7, 0, 0).CenterPoint(), CPoint(-2, -3));
}

TEST(Rect, IsEmptyWithoutPositiveWidthAndHeight)
{
    EXPECT_TRUE(CRect().IsRectEmpty());
    EXPECT_TRUE(CRect().IsRectNull());
    EXPECT_TRUE(CRect(5, 5, 5, 9).IsRectEmpty());
    EXPECT_TRUE(CRect(5, 5, 9, 5).IsRectEmpty());
    EXPECT_TRUE(CRect(9, 5, 5, 9).IsRectEmpty());
    EXPECT_FALSE(CRect(5, 5, 5, 9).IsRectNull());
    EXPECT_FALSE(kFrame.IsRectEmpty());
}

TEST(Rect, GrowsShrinksAndMoves)
{
    CRect rect = kFrame;
    rect.InflateRect(1, 2);
    EXPECT_EQ(rect, CRect(9, 18, 31, 62));
    rect.DeflateRect(1, 2);
    EXPECT_EQ(rect, kFrame);
    rect.DeflateRect(1, 2, 3, 4);
    EXPECT_EQ(rect, CRect(11, 22, 27, 56));
    rect.InflateRect(1, 2, 3, 4);
    EXPECT_EQ(rect, kFrame);
    rect.DeflateRect(CSize(2, 3));
    rect.InflateRect(CSize(2, 3));
    const RECT margins{1, 2, 3, 4};
    rect.DeflateRect(&margins);
    rect.InflateRect(&margins);
    EXPECT_EQ(rect, kFrame);
    rect.OffsetRect(5, -5);
    EXPECT_EQ(rect, CRect(15, 15, 35, 55));
    rect.MoveToXY(0, 0);
    EXPECT_EQ(rect, CRect(0, 0, 20, 40));
    rect.MoveToX(10);
    rect.MoveToY(20);
    EXPECT_EQ(rect, kFrame);
}

TEST(Rect, IsNormalizedEdgeByEdge)
{
    CRect rect(30, 20, 10, 60);
    rect.NormalizeRect();
    EXPECT_EQ(rect, kFrame);
    rect.SetRect(10, 60, 30, 20);
    rect.NormalizeRect();
    EXPECT_EQ(rect, kFrame);
}

TEST(Rect, IsSetAndCopied)
{
    CRect rect;
    rect.SetRect(10, 20, 30, 60);
    EXPECT_TRUE(rect.EqualRect(&kFrame));
    rect.SetRectEmpty();
    EXPECT_FALSE(rect.EqualRect(&kFrame));
    rect.CopyRect(&kFrame);
    EXPECT_EQ(rect, kFrame);
    LPRECT plain = rect;
    plain->left = 11;
    EXPECT_EQ(rect.left, 11);
    EXPECT_EQ(CRect(CPoint(10, 20), CSize(20, 40)), kFrame);
    EXPECT_EQ(CRect(CPoint(10, 20), CPoint(30, 60)), kFrame);
    const RECT record{10, 20, 30, 60};
    EXPECT_EQ(CRect(record), kFrame);
    EXPECT_EQ(CRect(&record), kFrame);
}

TEST(Rect, IsIntersectedWithAnother)
{
    CRect common;
    const CRect other(20, 0, 50, 30);
    EXPECT_TRUE(common.IntersectRect(&kFrame, &other));
    EXPECT_EQ(common, CRect(20, 20, 30, 30));
    const CRect touching(30, 20, 40, 60);
    EXPECT_FALSE(common.IntersectRect(&kFrame, &touching));
    EXPECT_TRUE(common.IsRectNull());
    common = kFrame;
    common &= other;
    EXPECT_EQ(common, CRect(20, 20, 30, 30));
}

TEST(Rect, IsUnitedIgnoringEmptyOnes)
{
    const CRect other(20, 0, 50, 30);
    const CRect empty(100, 100, 100, 200);
    CRect all;
    EXPECT_TRUE(all.UnionRect(&kFrame, &other));
    EXPECT_EQ(all, CRect(10, 0, 50, 60));
    EXPECT_TRUE(all.UnionRect(&kFrame, &empty));
    EXPECT_EQ(all, kFrame);
    EXPECT_TRUE(all.UnionRect(&empty, &kFrame));
    EXPECT_EQ(all, kFrame);
    EXPECT_FALSE(all.UnionRect(&empty, &empty));
    EXPECT_TRUE(all.IsRectNull());
    all |= kFrame;
    EXPECT_EQ(all, kFrame);
}

TEST(Rect, MovesByOperators)
{
    CRect rect = kFrame;
    rect += CPoint(1, 2);
    rect -= CSize(1, 2);
    rect += CSize(3, 4);
    rect -= CPoint(3, 4);
    EXPECT_EQ(rect, kFrame);
    EXPECT_EQ(kFrame + CPoint(1, 2), CRect(11, 22, 31, 62));
    EXPECT_EQ(kFrame - CPoint(1, 2), CRect(9, 18, 29, 58));
    EXPECT_EQ(kFrame + CSize(1, 2), CRect(11, 22, 31, 62));
    EXPECT_EQ(kFrame - CSize(1, 2), CRect(9, 18, 29, 58));
    EXPECT_NE(rect, CRect());
}

TEST(Point, AddsSizesAndPoints)
{
    const CPoint point(3, 4);
    EXPECT_EQ(point + CSize(1, 2), CPoint(4, 6));
    EXPECT_EQ(point - CSize(1, 2), CPoint(2, 2));
    EXPECT_EQ(point + CPoint(1, 2), CPoint(4, 6));
    EXPECT_EQ(point - CPoint(1, 2), CSize(2, 2));
    EXPECT_EQ(-point, CPoint(-3, -4));
    CPoint moved = point;
    moved.Offset(1, 1);
    moved += CSize(1, 1);
    moved -= CPoint(2, 2);
    moved += CPoint(5, 5);
    moved -= CSize(5, 5);
    EXPECT_EQ(moved, point);
    moved.Offset(CPoint(1, 0));
    moved.Offset(CSize(0, 1));
    EXPECT_NE(moved, point);
    moved.SetPoint(3, 4);
    EXPECT_EQ(moved, point);
    EXPECT_EQ(CPoint(CSize(3, 4)), point);
}

TEST(Size, AddsAndNegates)
{
    CSize size(3, 4);
    size += CSize(1, 1);
    size -= CSize(2, 2);
    EXPECT_EQ(size, CSize(2, 3));
    EXPECT_EQ(size + CSize(1, 1), CSize(3, 4));
    EXPECT_EQ(size - CSize(1, 1), CSize(1, 2));
    EXPECT_EQ(-size, CSize(-2, -3));
    EXPECT_EQ(CSize(CPoint(2, 3)), size);
    size.SetSize(0, 0);
    EXPECT_EQ(size, CSize());
}

TEST(Rect, IsEqualWhereAllEdgesAre)
{
    const CRect frame(1, 2, 3, 4);
    EXPECT_EQ(frame, CRect(1, 2, 3, 4));
    for (const CRect& other :
         {CRect(0, 2, 3, 4), CRect(1, 0, 3, 4), CRect(1, 2, 0, 4), CRect(1, 2, 3, 0)})
        EXPECT_NE(frame, other) << other.left << other.top << other.right << other.bottom;
}

// Written out: GoogleTest's macros hide a warning of clang++ about operators that are ambiguous.
TEST(Rect, IsComparedWithRecordsOfTheSystemFromBothSides)
{
    const CRect frame(1, 2, 3, 4);
    const RECT record = frame;
    const CPoint point(1, 2);
    const POINT place = point;
    const CSize size(1, 2);
    const SIZE extent = size;
    EXPECT_TRUE((frame == record) && (record == frame) && (frame == CRect(record)));
    EXPECT_TRUE((point == place) && (place == point) && (point == CPoint(place)));
    EXPECT_TRUE((size == extent) && (extent == size) && (size == CSize(extent)));
    EXPECT_TRUE(frame != CRect() && point != CPoint() && size != CSize());
}

TEST(Rect, IsNotNullWhereOneEdgeIsNot)
{
    for (const CRect& one :
         {CRect(1, 0, 0, 0), CRect(0, 1, 0, 0), CRect(0, 0, 1, 0), CRect(0, 0, 0, 1)})
        EXPECT_FALSE(one.IsRectNull()) << one.left << one.top << one.right << one.bottom;
}

TEST(Point, AndSizeAreEqualWhereBothNumbersAre)
{
    const CPoint point(1, 2);
    const CSize size(1, 2);
    EXPECT_EQ(point, CPoint(1, 2));
    EXPECT_NE(point, CPoint(0, 2));
    EXPECT_NE(point, CPoint(1, 0));
    EXPECT_EQ(size, CSize(1, 2));
    EXPECT_NE(size, CSize(0, 2));
    EXPECT_NE(size, CSize(1, 0));
}

TEST(Point, ComesFromTheRecordsOfTheSystem)
{
    POINT point;
    point.x = 3;
    point.y = 4;
    SIZE size;
    size.cx = 5;
    size.cy = 6;
    CPoint position;
    EXPECT_EQ(position, CPoint(0, 0));
    position = point;
    EXPECT_EQ(position, CPoint(3, 4));
    EXPECT_EQ(CSize(size), CSize(5, 6));
    const CRect frame(position, CSize(size));
    const LPCRECT record = frame;
    EXPECT_EQ(record->right, 8);
    EXPECT_EQ(record->bottom, 10);
}
