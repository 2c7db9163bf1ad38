// SPDX-License-Identifier: MIT
//
// The idioms of drawing, casts and checks, as hosts in the window framework's words write them.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <climits>
#include <cwchar>
#include <string>

namespace {

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kWhite = RGB(255, 255, 255);

// A picture in memory of 40 x 20 black pixels.
struct DrawingIdioms : testing::Test
{
    CDC dc;
    CBitmap bitmap;

    DrawingIdioms()
    {
        dc.CreateCompatibleDC(nullptr);
        bitmap.CreateCompatibleBitmap(&dc, 40, 20);
        dc.SelectObject(&bitmap);
        dc.FillSolidRect(CRect(0, 0, 40, 20), kBlack);
    }

    // The smallest rectangle around all pixels of a color.
    CRect Extent(COLORREF color) const
    {
        CRect extent;
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 40; ++x)
                if (dc.GetPixel(x, y) == color)
                    extent.UnionRect(CRect(extent), CRect(x, y, x + 1, y + 1));
        return extent;
    }
};

TEST_F(DrawingIdioms, SaveDCKeepsWhatRestoreDCBringsBack)
{
    CPen pen(PS_SOLID, 2, kRed);
    CBrush brush(kBlue);
    CFont font;
    font.CreatePointFont(90, L"DejaVu Sans");
    CPen* const penBefore = dc.GetCurrentPen();
    CBrush* const brushBefore = dc.GetCurrentBrush();
    CFont* const fontBefore = dc.GetCurrentFont();
    dc.MoveTo(3, 4);
    const int saved = dc.SaveDC();
    EXPECT_EQ(saved, 1);

    dc.SelectObject(&pen);
    dc.SelectObject(&brush);
    dc.SelectObject(&font);
    dc.SetTextColor(kRed);
    dc.SetBkColor(kBlue);
    dc.SetBkMode(TRANSPARENT);
    dc.SetTextAlign(TA_CENTER);
    dc.MoveTo(9, 9);
    dc.IntersectClipRect(1, 1, 2, 2);
    EXPECT_TRUE(dc.RestoreDC(saved));

    EXPECT_EQ(dc.GetCurrentPen(), penBefore);
    EXPECT_EQ(dc.GetCurrentBrush(), brushBefore);
    EXPECT_EQ(dc.GetCurrentFont(), fontBefore);
    EXPECT_EQ(dc.GetTextColor(), kBlack);
    EXPECT_EQ(dc.GetBkColor(), kBlack) << "as FillSolidRect left it";
    EXPECT_EQ(dc.GetBkMode(), OPAQUE);
    EXPECT_EQ(dc.GetTextAlign(), TA_LEFT | TA_TOP);
    EXPECT_EQ(dc.GetCurrentPosition(), CPoint(3, 4));
    CRect clip;
    EXPECT_EQ(dc.GetClipBox(&clip), SIMPLEREGION);
    EXPECT_EQ(clip, CRect(0, 0, 40, 20));
    EXPECT_EQ(dc.GetCurrentBitmap(), &bitmap);
}

TEST_F(DrawingIdioms, RestoreDCForgetsTheStatesItPasses)
{
    EXPECT_FALSE(dc.RestoreDC(-1));
    dc.SetTextColor(1);
    EXPECT_EQ(dc.SaveDC(), 1);
    dc.SetTextColor(2);
    EXPECT_EQ(dc.SaveDC(), 2);
    dc.SetTextColor(3);
    EXPECT_EQ(dc.SaveDC(), 3);
    EXPECT_TRUE(dc.RestoreDC(-1));
    EXPECT_EQ(dc.GetTextColor(), 3U);
    EXPECT_FALSE(dc.RestoreDC(3));
    EXPECT_TRUE(dc.RestoreDC(1));
    EXPECT_EQ(dc.GetTextColor(), 1U);
    EXPECT_FALSE(dc.RestoreDC(2));
    EXPECT_FALSE(dc.RestoreDC(0));
}

TEST_F(DrawingIdioms, RestoreDCCountsBackFromTheLastState)
{
    for (const COLORREF color : {1U, 2U, 3U}) {
        dc.SetTextColor(color);
        dc.SaveDC();
    }
    EXPECT_FALSE(dc.RestoreDC(-4));
    EXPECT_FALSE(dc.RestoreDC(INT_MIN));
    EXPECT_TRUE(dc.RestoreDC(-2));
    EXPECT_EQ(dc.GetTextColor(), 2U);
    EXPECT_TRUE(dc.RestoreDC(-1));
    EXPECT_EQ(dc.GetTextColor(), 1U);
}

TEST_F(DrawingIdioms, RestoreDCBringsTheBitmapBack)
{
    CBitmap other;
    other.CreateCompatibleBitmap(&dc, 3, 3);
    dc.SaveDC();
    dc.SelectObject(&other);
    dc.SaveDC();
    EXPECT_TRUE(dc.RestoreDC(1));
    EXPECT_EQ(dc.GetCurrentBitmap(), &bitmap);
    dc.SetPixel(30, 10, kRed);
    EXPECT_EQ(Extent(kRed), CRect(30, 10, 31, 11)) << "on the larger one";

    dc.SaveDC();
    dc.SelectObject(&other);
    CDC taker;
    taker.CreateCompatibleDC(nullptr);
    taker.SelectObject(&bitmap);
    EXPECT_TRUE(dc.RestoreDC(-1));
    EXPECT_EQ(dc.GetCurrentBitmap(), &other) << "its own is in use";
}

TEST_F(DrawingIdioms, IntersectClipRectLimitsDrawing)
{
    EXPECT_EQ(dc.IntersectClipRect(CRect(5, 5, 30, 15)), SIMPLEREGION);
    EXPECT_EQ(dc.IntersectClipRect(10, 0, 99, 99), SIMPLEREGION);
    dc.FillSolidRect(CRect(0, 0, 40, 20), kRed);
    EXPECT_EQ(dc.IntersectClipRect(0, 0, 3, 3), NULLREGION);
    dc.FillSolidRect(CRect(0, 0, 40, 20), kBlue);
    CRect clip(1, 1, 2, 2);
    EXPECT_EQ(dc.GetClipBox(&clip), NULLREGION);
    EXPECT_TRUE(clip.IsRectEmpty());
    dc.SaveDC();
    CDC whole;
    dc.SelectStockObject(WHITE_PEN);
    EXPECT_EQ(dc.GetPixel(12, 7), CLR_INVALID) << "outside the clip";
    dc.DeleteDC();
    whole.CreateCompatibleDC(nullptr);
    whole.SelectObject(&bitmap);
    EXPECT_EQ(whole.GetPixel(10, 5), kRed);
    EXPECT_EQ(whole.GetPixel(29, 14), kRed);
    EXPECT_EQ(whole.GetPixel(9, 5), kBlack);
    EXPECT_EQ(whole.GetPixel(30, 14), kBlack);
    EXPECT_EQ(whole.GetPixel(0, 0), kBlack);
}

TEST_F(DrawingIdioms, PatBltFillsAndInverts)
{
    CBrush brush(RGB(0x0F, 0xF0, 0xFF));
    dc.SelectObject(&brush);
    EXPECT_TRUE(dc.PatBlt(2, 3, 4, 5, PATCOPY));
    EXPECT_EQ(Extent(RGB(0x0F, 0xF0, 0xFF)), CRect(2, 3, 6, 8));
    EXPECT_TRUE(dc.PatBlt(6, 8, -4, -5, DSTINVERT)) << "from the other corner";
    EXPECT_EQ(Extent(RGB(0xF0, 0x0F, 0x00)), CRect(2, 3, 6, 8));
    EXPECT_TRUE(dc.PatBlt(2, 3, 4, 5, PATINVERT));
    EXPECT_EQ(Extent(kWhite), CRect(2, 3, 6, 8));
    EXPECT_TRUE(dc.PatBlt(0, 0, 1, 1, WHITENESS));
    EXPECT_EQ(dc.GetPixel(0, 0), kWhite);
    EXPECT_TRUE(dc.PatBlt(0, 0, 1, 1, BLACKNESS));
    EXPECT_EQ(dc.GetPixel(0, 0), kBlack);
    EXPECT_FALSE(dc.PatBlt(0, 0, 1, 1, SRCCOPY));
    dc.SelectStockObject(NULL_BRUSH);
    EXPECT_TRUE(dc.PatBlt(0, 0, 40, 20, PATCOPY));
    EXPECT_EQ(Extent(kWhite), CRect(2, 3, 6, 8)) << "without a brush nothing changes";
}

TEST_F(DrawingIdioms, PatBltReachesAsFarAsThereAreNumbers)
{
    EXPECT_TRUE(dc.PatBlt(30, 10, INT_MAX, INT_MAX, WHITENESS));
    EXPECT_EQ(Extent(kWhite), CRect(30, 10, 40, 20));
    EXPECT_TRUE(dc.PatBlt(-2, -2, INT_MIN, INT_MIN, WHITENESS));
    EXPECT_EQ(Extent(kWhite), CRect(30, 10, 40, 20)) << "up and left of the picture";
}

TEST_F(DrawingIdioms, SetTextAlignChoosesThePointOfTheText)
{
    dc.SetBkColor(kRed);
    dc.SetTextColor(kRed); // the cell alone
    const CSize cell = dc.GetTextExtent(L"8");
    TEXTMETRIC metrics;
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    struct Case
    {
        UINT align;
        CPoint corner; // of the cell, from the point
    };
    const Case cases[] = {
        {TA_LEFT | TA_TOP,       {0, 0}                                         },
        {TA_RIGHT | TA_TOP,      {-cell.cx, 0}                                  },
        {TA_CENTER | TA_TOP,     {-(cell.cx / 2), 0}                            },
        {TA_LEFT | TA_BOTTOM,    {0, -cell.cy}                                  },
        {TA_RIGHT | TA_BASELINE, {-cell.cx, static_cast<int>(-metrics.tmAscent)}},
    };
    for (const Case& c : cases) {
        dc.FillSolidRect(CRect(0, 0, 40, 20), kBlack);
        dc.SetBkColor(kRed);
        EXPECT_NE(dc.SetTextAlign(c.align), GDI_ERROR);
        EXPECT_EQ(dc.GetTextAlign(), c.align);
        dc.TextOut(20, 10, L"8");
        CRect expected;
        expected.IntersectRect(CRect(CPoint(20, 10) + c.corner, cell), CRect(0, 0, 40, 20));
        EXPECT_EQ(Extent(kRed), expected) << c.align;
    }
}

// Each face where it is installed; any other name is drawn in the usual face.
TEST_F(DrawingIdioms, FacesDifferWhereTheyAreInstalled)
{
    const auto widthIn = [this](LPCTSTR face) {
        CFont font;
        font.CreatePointFont(120, face);
        CFont* const before = dc.SelectObject(&font);
        const CSize size = dc.GetTextExtent(L"iiiiWWWW");
        dc.SelectObject(before);
        return size.cx;
    };
    const int sans = widthIn(L"DejaVu Sans");
    EXPECT_EQ(widthIn(L"A face that nobody has"), sans);
    EXPECT_EQ(widthIn(L""), sans);
    EXPECT_NE(widthIn(L"DejaVu Sans Mono"), sans);
    EXPECT_NE(widthIn(L"DejaVu Serif"), sans);
}

TEST_F(DrawingIdioms, GetTextMetricsMeasuresTheFont)
{
    CFont font;
    ASSERT_TRUE(font.CreatePointFont(120, L"DejaVu Sans")); // 12 points: 16 pixels
    dc.SelectObject(&font);
    TEXTMETRIC metrics;
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    EXPECT_EQ(metrics.tmHeight, dc.GetTextExtent(L"0").cy);
    EXPECT_EQ(metrics.tmAscent + metrics.tmDescent, metrics.tmHeight);
    EXPECT_GT(metrics.tmAscent, metrics.tmDescent);
    EXPECT_EQ(metrics.tmAveCharWidth, dc.GetTextExtent(L"x").cx);
    EXPECT_GT(metrics.tmMaxCharWidth, metrics.tmAveCharWidth);
    EXPECT_EQ(metrics.tmWeight, FW_NORMAL);

    CFont pixels;
    LOGFONT request;
    request.lfHeight = -16;
    wcscpy(request.lfFaceName, L"DejaVu Sans");
    pixels.CreateFontIndirect(&request);
    dc.SelectObject(&pixels);
    EXPECT_EQ(dc.GetTextExtent(L"0").cy, metrics.tmHeight);
    EXPECT_FALSE(dc.GetTextMetrics(nullptr));
    CDC none;
    EXPECT_FALSE(none.GetTextMetrics(&metrics));
    EXPECT_EQ(none.SetTextAlign(TA_LEFT), GDI_ERROR);
    EXPECT_EQ(none.SaveDC(), 0);
}

TEST_F(DrawingIdioms, StockObjectsHaveHandles)
{
    EXPECT_NE(GetStockObject(WHITE_BRUSH), nullptr);
    EXPECT_EQ(GetStockObject(WHITE_BRUSH), GetStockObject(WHITE_BRUSH));
    EXPECT_EQ(GetStockObject(4711), nullptr);
    dc.SelectObject(CBrush::FromHandle(static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))));
    dc.PatBlt(1, 1, 1, 1, PATCOPY);
    EXPECT_EQ(dc.GetPixel(1, 1), kWhite);
    EXPECT_NE(CFont::FromHandle(static_cast<HFONT>(GetStockObject(SYSTEM_FONT))), nullptr);
    EXPECT_NE(CFont::FromHandle(static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT))), nullptr);
    EXPECT_EQ(GetStockObject(-1), nullptr);
    EXPECT_EQ(GetStockObject(DEFAULT_GUI_FONT + 1), nullptr);
    int lightness = 256;
    for (const int brush : {WHITE_BRUSH, LTGRAY_BRUSH, GRAY_BRUSH, DKGRAY_BRUSH, BLACK_BRUSH}) {
        dc.SelectStockObject(brush);
        dc.PatBlt(2, 1, 1, 1, PATCOPY);
        EXPECT_LT(GetRValue(dc.GetPixel(2, 1)), lightness) << brush;
        lightness = GetRValue(dc.GetPixel(2, 1));
    }
}

TEST(WindowDC, StartsAtTheCornerOfTheWindow)
{
    CWnd window;
    ASSERT_TRUE(window.CreateEx(WS_EX_CLIENTEDGE, AfxRegisterWndClass(0), L"",
                                WS_POPUP | WS_VISIBLE, 0, 0, 24, 14, nullptr, nullptr));
    {
        CWindowDC dc(&window);
        EXPECT_EQ(dc.GetWindow(), &window);
        CRect clip;
        dc.GetClipBox(&clip);
        EXPECT_EQ(clip, CRect(2, 2, 22, 12)) << "inside the edge";
        dc.SetPixel(2, 3, kRed);
        dc.FillSolidRect(CRect(10, 0, 30, 99), kBlue);
        CDC copy;
        CBitmap bitmap;
        copy.CreateCompatibleDC(&dc);
        bitmap.CreateCompatibleBitmap(&dc, 4, 4);
        copy.SelectObject(&bitmap);
        copy.BitBlt(0, 0, 4, 4, &dc, 9, 9, SRCCOPY);
        EXPECT_EQ(copy.GetPixel(1, 1), kBlue);
    }
    CClientDC client(&window);
    EXPECT_EQ(client.GetPixel(0, 1), kRed);
    EXPECT_EQ(client.GetPixel(8, 0), kBlue);
    EXPECT_EQ(client.GetPixel(19, 9), kBlue);
    EXPECT_NE(client.GetPixel(7, 0), kBlue);
}

TEST(Idioms, PointsComeOutOfMessageParameters)
{
    const CPoint point(MAKELPARAM(-5, 700));
    EXPECT_EQ(point, CPoint(-5, 700));
    EXPECT_EQ(LOWORD(MAKEWPARAM(3, 4)), 3);
    EXPECT_EQ(HIWORD(MAKEWPARAM(3, 4)), 4);
}

TEST(Idioms, TheProgramHasAnInstance)
{
    wchar_t name[MAX_PATH];
    EXPECT_NE(AfxGetInstanceHandle(), nullptr);
    EXPECT_GT(GetModuleFileNameW(AfxGetInstanceHandle(), name, MAX_PATH), 0U);
}

TEST(Idioms, ChecksEvaluateWhatTheyVerify)
{
    int calls = 0;
    VERIFY(++calls == 1);
    ASSERT(calls == 1);
    EXPECT_EQ(calls, 1);
    testing::internal::CaptureStderr();
    TRACE(L"%d observations of %s\n", 3, L"the pole");
    TRACE("%.1f m\n", 2.5);
    const std::string traced = testing::internal::GetCapturedStderr();
#ifdef NDEBUG
    EXPECT_EQ(traced, "");
#else
    EXPECT_EQ(traced, "3 observations of the pole\n2.5 m\n");
#endif
}

} // namespace
