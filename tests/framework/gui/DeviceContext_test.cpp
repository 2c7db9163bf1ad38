// SPDX-License-Identifier: MIT
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

// A picture in memory, initially white.
struct Memory
{
    CDC dc;
    CBitmap bitmap;
    CBitmap* previous = nullptr;

    Memory(int width, int height)
    {
        dc.CreateCompatibleDC(nullptr);
        bitmap.CreateCompatibleBitmap(&dc, width, height);
        previous = dc.SelectObject(&bitmap);
        const CRect all(0, 0, width, height);
        dc.FillSolidRect(&all, RGB(255, 255, 255));
    }
};

TEST(MemoryContext, DrawsOnNothingBeforeItsBitmap)
{
    CDC dc;
    EXPECT_FALSE(dc.LineTo(5, 5)) << "no handle yet";
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    EXPECT_FALSE(dc.CreateCompatibleDC(nullptr)) << "it has a handle";
    EXPECT_TRUE(dc.LineTo(5, 5));
    EXPECT_EQ(dc.GetPixel(0, 0), CLR_INVALID);
    EXPECT_TRUE(dc.DeleteDC());
    EXPECT_FALSE(dc.DeleteDC());
}

TEST(MemoryContext, GivesThePreviousBitmapBack)
{
    Memory memory(8, 8);
    ASSERT_NE(memory.previous, nullptr);
    EXPECT_EQ(memory.dc.SelectObject(memory.previous), &memory.bitmap);
    EXPECT_EQ(memory.dc.GetPixel(0, 0), CLR_INVALID);
    EXPECT_EQ(memory.dc.SelectObject(&memory.bitmap), memory.previous);
    EXPECT_EQ(memory.dc.GetPixel(0, 0), RGB(255, 255, 255));
}

TEST(Bitmap, GoesIntoOneContextAtATime)
{
    Memory memory(8, 8);
    CDC other;
    other.CreateCompatibleDC(nullptr);
    EXPECT_EQ(other.SelectObject(&memory.bitmap), nullptr);
    memory.dc.SelectObject(memory.previous);
    EXPECT_NE(other.SelectObject(&memory.bitmap), nullptr);
    EXPECT_EQ(other.GetPixel(3, 3), RGB(255, 255, 255));
}

TEST(Bitmap, OfNoSizeHasOnePixelAndOfNegativeSizeFails)
{
    CDC dc;
    dc.CreateCompatibleDC(nullptr);
    CBitmap bitmap;
    EXPECT_TRUE(bitmap.CreateCompatibleBitmap(&dc, 0, 10));
    EXPECT_EQ(bitmap.GetSize(), CSize(1, 1));
    EXPECT_FALSE(bitmap.CreateCompatibleBitmap(&dc, -1, 10));
    EXPECT_FALSE(bitmap.CreateCompatibleBitmap(&dc, 1 << 30, 1 << 30));
}

TEST(Selection, KeepsADeletedPenUntilAnotherIsSelected)
{
    Memory memory(8, 8);
    CPen pen(PS_SOLID, 1, RGB(1, 2, 3));
    CPen* const previous = memory.dc.SelectObject(&pen);
    ASSERT_NE(previous, nullptr);
    EXPECT_TRUE(pen.DeleteObject());
    EXPECT_FALSE(pen.DeleteObject());
    memory.dc.MoveTo(0, 0);
    memory.dc.LineTo(3, 0);
    EXPECT_EQ(memory.dc.GetPixel(2, 0), RGB(1, 2, 3));
    EXPECT_NE(memory.dc.SelectObject(previous), nullptr);
    memory.dc.LineTo(3, 3);
    EXPECT_EQ(memory.dc.GetPixel(3, 1), RGB(0, 0, 0)) << "the stock pen is black";
}

TEST(Selection, RefusesWhatIsNotThere)
{
    Memory memory(8, 8);
    CPen none;
    EXPECT_EQ(memory.dc.SelectObject(&none), nullptr);
    EXPECT_EQ(memory.dc.SelectObject(static_cast<CBrush*>(nullptr)), nullptr);
    EXPECT_FALSE(CPen().CreatePen(99, 1, 0));
}

TEST(Drawing, MovesTheCurrentPosition)
{
    Memory memory(8, 8);
    EXPECT_EQ(memory.dc.MoveTo(2, 3), CPoint(0, 0));
    EXPECT_TRUE(memory.dc.LineTo(5, 3));
    EXPECT_EQ(memory.dc.GetCurrentPosition(), CPoint(5, 3));
    EXPECT_EQ(memory.dc.GetPixel(4, 3), RGB(0, 0, 0));
    EXPECT_EQ(memory.dc.GetPixel(5, 3), RGB(255, 255, 255)) << "the end pixel stays unset";
}

TEST(Drawing, WithTheNullPenLeavesTheLastRowAndColumnOfARectangle)
{
    Memory memory(8, 8);
    CBrush red(RGB(255, 0, 0));
    memory.dc.SelectObject(&red);
    memory.dc.SelectStockObject(NULL_PEN);
    memory.dc.Rectangle(1, 1, 5, 5);
    EXPECT_EQ(memory.dc.GetPixel(3, 3), RGB(255, 0, 0));
    EXPECT_EQ(memory.dc.GetPixel(4, 3), RGB(255, 255, 255));
    EXPECT_EQ(memory.dc.GetPixel(3, 4), RGB(255, 255, 255));
    memory.dc.FillRect(CRect(1, 1, 5, 5), &red);
    EXPECT_EQ(memory.dc.GetPixel(4, 4), RGB(255, 0, 0));
}

TEST(Drawing, FillsAPolygonBeforeItsOutline)
{
    Memory memory(12, 12);
    CBrush red(RGB(255, 0, 0));
    CPen blue(PS_SOLID, 1, RGB(0, 0, 255));
    memory.dc.SelectObject(&red);
    memory.dc.SelectObject(&blue);
    const POINT square[] = {
        {2, 2},
        {8, 2},
        {8, 8},
        {2, 8}
    };
    EXPECT_TRUE(memory.dc.Polygon(square, 4));
    EXPECT_EQ(memory.dc.GetPixel(2, 2), RGB(0, 0, 255));
    EXPECT_EQ(memory.dc.GetPixel(8, 5), RGB(0, 0, 255));
    EXPECT_EQ(memory.dc.GetPixel(5, 5), RGB(255, 0, 0));
    EXPECT_FALSE(memory.dc.Polygon(square, 1));
}

TEST(Blit, CombinesLayersWithOr)
{
    Memory below(4, 4);
    Memory above(4, 4);
    const CRect all(0, 0, 4, 4);
    below.dc.FillSolidRect(&all, RGB(0, 0, 255));
    above.dc.FillSolidRect(&all, RGB(0, 0, 0));
    above.dc.SetPixel(1, 1, RGB(255, 0, 0));
    EXPECT_TRUE(below.dc.BitBlt(0, 0, 4, 4, &above.dc, 0, 0, SRCPAINT));
    EXPECT_EQ(below.dc.GetPixel(1, 1), RGB(255, 0, 255));
    EXPECT_EQ(below.dc.GetPixel(0, 0), RGB(0, 0, 255));
    EXPECT_FALSE(below.dc.BitBlt(0, 0, 4, 4, &above.dc, 0, 0, 0x12345678));
    EXPECT_FALSE(below.dc.BitBlt(0, 0, 4, 4, nullptr, 0, 0, SRCCOPY));
}

TEST(Blit, CopiesWhatThereIsOfABoxAtTheLimitsOfAnInt)
{
    Memory target(4, 4);
    Memory source(4, 4);
    const CRect all(0, 0, 4, 4);
    target.dc.FillSolidRect(&all, RGB(0, 0, 0));
    source.dc.FillSolidRect(&all, RGB(1, 2, 3));
    EXPECT_TRUE(target.dc.BitBlt(2, 3, INT_MAX, INT_MAX, &source.dc, 0, 0, SRCCOPY));
    EXPECT_EQ(target.dc.GetPixel(3, 3), RGB(1, 2, 3));
    EXPECT_EQ(target.dc.GetPixel(1, 3), RGB(0, 0, 0));
    EXPECT_EQ(target.dc.GetPixel(2, 2), RGB(0, 0, 0));
    for (const int far : {INT_MIN, INT_MAX}) {
        EXPECT_TRUE(target.dc.BitBlt(far, far, 9, 9, &source.dc, 0, 0, SRCCOPY));
        EXPECT_TRUE(target.dc.BitBlt(0, 0, far, far, &source.dc, far, far, SRCCOPY));
    }
    EXPECT_EQ(target.dc.GetPixel(0, 0), RGB(0, 0, 0));
}

// The bounding box of all pixels that are not white.
CRect InkBox(CDC& dc, int width, int height)
{
    CRect box(width, height, 0, 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (dc.GetPixel(x, y) == RGB(255, 255, 255)) continue;
            box.left = box.left < x ? box.left : x;
            box.top = box.top < y ? box.top : y;
            box.right = box.right > x + 1 ? box.right : x + 1;
            box.bottom = box.bottom > y + 1 ? box.bottom : y + 1;
        }
    }
    return box;
}

TEST(Text, IsCenteredInItsBoxAndClippedToIt)
{
    Memory memory(80, 60);
    CFont font;
    ASSERT_TRUE(font.CreateFont(18, 0, 0, 0, 700, 0, 0, 0, 0, 0, 0, 0, 0, L"Tahoma"));
    memory.dc.SelectObject(&font);
    memory.dc.SetBkMode(TRANSPARENT);
    memory.dc.SetTextColor(RGB(0, 0, 255));
    CRect box(20, 10, 54, 44);
    const int height = memory.dc.DrawText(L"270", &box, DT_CENTER);
    EXPECT_GT(height, 10);
    EXPECT_LE(height, 18) << "the cell is at most as high as asked";
    const CRect ink = InkBox(memory.dc, 80, 60);
    EXPECT_NEAR((ink.left + ink.right) / 2.0, 37, 2);
    EXPECT_GE(ink.top, 10);
    EXPECT_LE(ink.bottom, 10 + height);

    Memory narrow(80, 60);
    narrow.dc.SelectObject(&font);
    CRect slit(30, 10, 34, 14);
    narrow.dc.DrawText(L"270", &slit, DT_CENTER);
    const CRect clipped = InkBox(narrow.dc, 80, 60);
    EXPECT_TRUE(clipped.left >= 30 && clipped.right <= 34 && clipped.bottom <= 14);
}

TEST(Text, IsMeasuredWithoutDrawing)
{
    Memory memory(80, 60);
    CRect box(5, 5, 6, 6);
    const int height = memory.dc.DrawText(L"12\n3456", &box, DT_CALCRECT);
    EXPECT_EQ(box.Height(), height);
    EXPECT_EQ(box.Width(), memory.dc.GetTextExtent(L"3456").cx);
    EXPECT_TRUE(InkBox(memory.dc, 80, 60).IsRectEmpty());
}

TEST(Text, AtTheLimitsOfAnIntIsNotInThePicture)
{
    Memory memory(30, 30);
    const CRect all(0, 0, 30, 30);
    memory.dc.FillSolidRect(&all, RGB(255, 255, 255));
    for (const int far : {INT_MIN, INT_MIN + 9, INT_MAX - 9, INT_MAX}) {
        for (const UINT align : {TA_LEFT | TA_TOP, TA_CENTER | TA_BASELINE, TA_RIGHT | TA_BOTTOM}) {
            memory.dc.SetTextAlign(align);
            EXPECT_TRUE(memory.dc.TextOut(far, far, L"tip"));
        }
        CRect there(far, far, far, far);
        for (const UINT format : {DT_LEFT, DT_CENTER, DT_RIGHT, DT_CALCRECT})
            memory.dc.DrawText(L"&tip\ntip", &there, format | DT_VCENTER);
    }
    CRect widest(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
    memory.dc.DrawText(L"&tip and tip", &widest, DT_RIGHT | DT_BOTTOM | DT_SINGLELINE);
    memory.dc.DrawText(L"tip and tip", &widest, DT_LEFT | DT_WORDBREAK);
    EXPECT_TRUE(InkBox(memory.dc, 30, 30).IsRectEmpty());
    memory.dc.SetBkMode(TRANSPARENT);
    memory.dc.DrawText(L"tip", &widest, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    EXPECT_FALSE(InkBox(memory.dc, 30, 30).IsRectEmpty()) << "its middle is the picture's corner";
}

TEST(Text, FillsItsCellInOpaqueMode)
{
    Memory memory(80, 60);
    memory.dc.SetBkColor(RGB(0, 255, 0));
    memory.dc.TextOut(10, 10, L" ");
    EXPECT_EQ(memory.dc.GetPixel(11, 12), RGB(0, 255, 0));
}

TEST(SystemColor, IgnoresTheIndexFlag)
{
    EXPECT_EQ(GetSysColor(16), RGB(128, 128, 128));
    EXPECT_EQ(GetSysColor(16 | 0x40000000), RGB(128, 128, 128));
}

} // namespace
