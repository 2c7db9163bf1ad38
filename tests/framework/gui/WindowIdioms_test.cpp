// SPDX-License-Identifier: MIT
//
// Calls that hosts make on windows and contexts now and then.
#include "framework/gui/detail/GdiRecord.h"
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr COLORREF kFace = RGB(1, 2, 3);
constexpr COLORREF kInk = RGB(250, 10, 20);

// A window of one color, without a frame.
class Page : public CWnd
{
public:
    int paints = 0;

    explicit Page(DWORD style = WS_VISIBLE)
    {
        EXPECT_TRUE(CreateEx(0, AfxRegisterWndClass(0, nullptr, CBrush(kFace)), L"page",
                             WS_POPUP | style, 10, 20, 60, 40, nullptr, nullptr));
    }

    COLORREF At(int x, int y)
    {
        const CClientDC dc(this);
        return dc.GetPixel(x, y);
    }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        paints += message == WM_PAINT;
        return CWnd::WindowProc(message, wParam, lParam);
    }
};

// A picture in memory of one color, with a font.
struct Sheet
{
    CDC dc;
    CBitmap bitmap;
    CFont font;

    Sheet()
    {
        dc.CreateCompatibleDC(nullptr);
        bitmap.CreateCompatibleBitmap(&dc, 80, 40);
        dc.SelectObject(&bitmap);
        font.CreatePointFont(90, L"DejaVu Sans");
        dc.SelectObject(&font);
        dc.SetBkMode(TRANSPARENT);
        dc.SetTextColor(kInk);
        Clear();
    }

    void Clear()
    {
        const CRect all(0, 0, 80, 40);
        dc.FillSolidRect(&all, kFace);
    }

    // The smallest box around all pixels of a color; empty if there are none.
    CRect BoxOf(COLORREF color) const
    {
        CRect box(80, 40, 0, 0);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 80; ++x)
                if (dc.GetPixel(x, y) == color)
                    box.SetRect(std::min<int>(box.left, x), std::min<int>(box.top, y),
                                std::max<int>(box.right, x + 1), std::max<int>(box.bottom, y + 1));
        return box.left < box.right ? box : CRect();
    }
};

TEST(WindowIdioms, FlagsOfSetWindowPosShowAndHide)
{
    Page page(0);
    constexpr UINT still = SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE;
    page.SetWindowPos(nullptr, 0, 0, 0, 0, still | SWP_SHOWWINDOW);
    EXPECT_TRUE(page.IsWindowVisible());
    page.SetWindowPos(nullptr, 0, 0, 0, 0, still | SWP_HIDEWINDOW);
    EXPECT_FALSE(page.IsWindowVisible());
    for (const int command : {SW_SHOWNORMAL, SW_SHOWNOACTIVATE, SW_SHOW}) {
        EXPECT_FALSE(page.ShowWindow(command)) << "hidden before";
        EXPECT_TRUE(page.IsWindowVisible());
        EXPECT_TRUE(page.ShowWindow(SW_HIDE)) << "shown before";
    }
    CRect place;
    page.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(10, 20, 70, 60));
}

TEST(WindowIdioms, StylesChangeWithTheFrameTheyStandFor)
{
    Page page;
    CRect client;
    EXPECT_TRUE(page.ModifyStyleEx(0, WS_EX_CLIENTEDGE));
    EXPECT_FALSE(page.ModifyStyleEx(0, WS_EX_CLIENTEDGE)) << "has it";
    EXPECT_EQ(page.GetExStyle(), WS_EX_CLIENTEDGE);
    EXPECT_TRUE(page.ModifyStyleEx(WS_EX_CLIENTEDGE, WS_EX_STATICEDGE, SWP_FRAMECHANGED));
    page.GetClientRect(&client);
    EXPECT_EQ(client.Size(), CSize(58, 38)) << "one pixel on each side";
    EXPECT_TRUE(page.ModifyStyle(0, WS_TABSTOP));
    EXPECT_TRUE(page.GetStyle() & WS_TABSTOP);
    CWnd none;
    EXPECT_FALSE(none.ModifyStyle(0, WS_TABSTOP));
    EXPECT_FALSE(none.ModifyStyleEx(0, WS_EX_CLIENTEDGE));
}

TEST(WindowIdioms, IdsOfChildrenChange)
{
    Page page;
    CStatic label;
    ASSERT_TRUE(label.Create(L"", WS_CHILD, CRect(0, 0, 5, 5), &page, 7));
    EXPECT_EQ(label.SetDlgCtrlID(8), 7);
    EXPECT_EQ(label.GetDlgCtrlID(), 8);
    EXPECT_EQ(page.GetDlgItem(8), &label);
    EXPECT_EQ(page.GetDlgItem(7), nullptr);
    CWnd none;
    EXPECT_EQ(none.SetDlgCtrlID(1), 0);
    EXPECT_EQ(none.GetDlgCtrlID(), 0);
}

TEST(WindowIdioms, HandlesAreAttachedAndDetached)
{
    Page page;
    CWnd other;
    const HWND handle = CreateWindowExW(0, L"STATIC", L"tip", WS_CHILD, 0, 0, 9, 9, page, 3);
    EXPECT_EQ(CWnd::FromHandlePermanent(handle), nullptr) << "nobody's yet";
    EXPECT_TRUE(other.Attach(handle));
    EXPECT_FALSE(other.Attach(handle)) << "has a window";
    EXPECT_EQ(CWnd::FromHandlePermanent(handle), &other);
    EXPECT_EQ(other.Detach(), handle);
    EXPECT_EQ(other.GetSafeHwnd(), nullptr);
    EXPECT_EQ(other.Detach(), nullptr);
    EXPECT_TRUE(::IsWindow(handle)) << "it stays";
    EXPECT_TRUE(other.SubclassWindow(handle));
    EXPECT_EQ(other.UnsubclassWindow(), handle);
    EXPECT_EQ(page.GetDlgItem(3)->GetWindowTextLength(), 3);
}

TEST(WindowIdioms, TextAndFontTravelInMessagesToo)
{
    Page page;
    std::array<wchar_t, 4> text{};
    EXPECT_EQ(page.SendMessage(WM_GETTEXTLENGTH), 4);
    EXPECT_EQ(page.SendMessage(WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data())), 3);
    EXPECT_EQ(std::wstring(text.data()), L"pag") << "as much as there is room for";
    EXPECT_EQ(page.GetFont(), nullptr);
    CFont font;
    font.CreatePointFont(90, L"DejaVu Sans");
    page.UpdateWindow();
    const int before = page.paints;
    page.SetFont(&font, FALSE);
    page.UpdateWindow();
    EXPECT_EQ(page.paints, before) << "not painted anew";
    EXPECT_EQ(page.GetFont(), &font);
    EXPECT_EQ(page.SendMessage(WM_GETFONT), reinterpret_cast<LRESULT>(font.GetSafeHandle()));
    page.SetFont(nullptr);
    page.UpdateWindow();
    EXPECT_EQ(page.paints, before + 1);
    EXPECT_EQ(page.GetFont(), nullptr);
}

TEST(WindowIdioms, PaintingMayBeBegunAndEndedByHand)
{
    class Drawing : public Page
    {
    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message != WM_PAINT) return Page::WindowProc(message, wParam, lParam);
            PAINTSTRUCT paint;
            CDC* const dc = BeginPaint(&paint);
            EXPECT_EQ(dc->GetSafeHdc(), paint.hdc);
            const CRect all(0, 0, 60, 40);
            dc->FillSolidRect(&all, kInk);
            EndPaint(&paint);
            EXPECT_EQ(paint.hdc, nullptr);
            return 0;
        }
    } page;
    page.UpdateWindow();
    EXPECT_EQ(page.At(5, 5), kInk);
    const CRect part(10, 10, 20, 20);
    {
        CClientDC dc(&page);
        const CRect all(0, 0, 60, 40);
        dc.FillSolidRect(&all, kFace);
    }
    page.InvalidateRect(&part);
    page.UpdateWindow();
    EXPECT_EQ(page.At(15, 15), kInk);
    EXPECT_EQ(page.At(25, 15), kFace) << "outside of what was invalid";
    PAINTSTRUCT paint;
    CWnd none;
    EXPECT_EQ(none.BeginPaint(&paint), nullptr);
    EXPECT_EQ(page.BeginPaint(nullptr), nullptr);
}

TEST(WindowIdioms, StaticsAlignTheirTextByTheirStyle)
{
    Page page;
    const auto leftAndRight = [&page](DWORD style) {
        CStatic label;
        label.Create(L"I", WS_CHILD | WS_VISIBLE | style, CRect(0, 0, 60, 40), &page, 1);
        label.UpdateWindow();
        const CClientDC dc(&label);
        int left = 60;
        int right = 0;
        for (int x = 0; x < 60; ++x)
            for (int y = 0; y < 40; ++y)
                if (dc.GetPixel(x, y) == GetSysColor(COLOR_WINDOWTEXT)) {
                    left = std::min(left, x);
                    right = std::max(right, x);
                }
        return CPoint(left, right);
    };
    EXPECT_LT(leftAndRight(SS_LEFT).y, 10);
    EXPECT_GT(leftAndRight(SS_RIGHT).x, 50);
    EXPECT_GT(leftAndRight(SS_CENTER).x, 25);
    EXPECT_LT(leftAndRight(SS_CENTER).y, 35);
}

TEST(WindowIdioms, AViewPreparesItsContextBeforeItDraws)
{
    class Prepared : public CView
    {
    protected:
        void OnPrepareDC(CDC* dc) override { dc->SetBkColor(kInk); }
        void OnDraw(CDC* dc) override
        {
            const CRect all(0, 0, 9, 9);
            dc->FillSolidRect(&all, dc->GetBkColor());
        }
    } view;
    Page page;
    ASSERT_TRUE(view.Create(nullptr, nullptr, AFX_WS_DEFAULT_VIEW, CRect(0, 0, 9, 9), &page, 1));
    view.UpdateWindow();
    const CClientDC dc(&view);
    EXPECT_EQ(dc.GetPixel(4, 4), kInk);
}

TEST(WindowIdioms, PolylineDrawsItsCornersWithoutTheLast)
{
    Sheet sheet;
    CPen pen(PS_SOLID, 1, kInk);
    sheet.dc.SelectObject(&pen);
    const POINT corners[] = {
        {2,  3 },
        {10, 3 },
        {10, 20}
    };
    EXPECT_TRUE(sheet.dc.Polyline(corners, 3));
    EXPECT_EQ(sheet.BoxOf(kInk), CRect(2, 3, 11, 20));
    EXPECT_EQ(sheet.dc.GetPixel(10, 3), kInk);
    EXPECT_EQ(sheet.dc.GetPixel(5, 10), kFace) << "not filled";
    EXPECT_FALSE(sheet.dc.Polyline(corners, 1));
}

// Its outline is the line there and back, so that the last pixel is set too; nothing is inside.
TEST(WindowIdioms, APolygonOfTwoPointsIsALine)
{
    Sheet sheet;
    CPen pen(PS_SOLID, 1, kInk);
    sheet.dc.SelectObject(&pen);
    const POINT ends[] = {
        {2,  3},
        {10, 3}
    };
    EXPECT_TRUE(sheet.dc.Polygon(ends, 2));
    EXPECT_EQ(sheet.BoxOf(kInk), CRect(2, 3, 11, 4));
    EXPECT_FALSE(sheet.dc.Polygon(ends, 1));
}

TEST(WindowIdioms, TextOutFillsAndClipsToItsRectangle)
{
    Sheet sheet;
    const CRect box(10, 5, 30, 12);
    sheet.dc.SetBkColor(RGB(0, 90, 0));
    EXPECT_TRUE(sheet.dc.ExtTextOut(12, 4, ETO_OPAQUE | ETO_CLIPPED, &box, L"WWWWWWWW", nullptr));
    EXPECT_FALSE(sheet.BoxOf(kInk).IsRectEmpty());
    CRect both;
    both.UnionRect(sheet.BoxOf(RGB(0, 90, 0)), sheet.BoxOf(kInk));
    EXPECT_EQ(both, box);

    sheet.Clear();
    EXPECT_TRUE(sheet.dc.ExtTextOut(12, 4, 0, &box, L"WWWWWWWW", 8, nullptr));
    EXPECT_GT(sheet.BoxOf(kInk).right, 30) << "not clipped";
    EXPECT_TRUE(sheet.BoxOf(RGB(0, 90, 0)).IsRectEmpty()) << "not filled";
}

TEST(WindowIdioms, DrawTextKeepsToItsFlags)
{
    Sheet sheet;
    CRect box(20, 10, 30, 16);
    sheet.dc.DrawText(L"WWWW", &box, DT_SINGLELINE);
    EXPECT_LE(sheet.BoxOf(kInk).right, 30) << "clipped";
    sheet.Clear();
    sheet.dc.DrawText(L"WWWW", &box, DT_SINGLELINE | DT_NOCLIP);
    EXPECT_GT(sheet.BoxOf(kInk).right, 30);

    CRect plain(0, 0, 80, 40);
    CRect prefixed(0, 0, 80, 40);
    sheet.dc.DrawText(L"&Tip", &plain, DT_CALCRECT | DT_NOPREFIX);
    sheet.dc.DrawText(L"&Tip", &prefixed, DT_CALCRECT);
    EXPECT_EQ(prefixed.Width(), sheet.dc.GetTextExtent(L"Tip").cx);
    EXPECT_EQ(plain.Width(), sheet.dc.GetTextExtent(L"&Tip").cx);

    sheet.Clear();
    CRect low(0, 10, 80, 40);
    sheet.dc.DrawText(L"Tip", &low, DT_SINGLELINE | DT_BOTTOM | DT_RIGHT);
    const CRect ink = sheet.BoxOf(kInk);
    EXPECT_GT(ink.left, 50);
    EXPECT_GT(ink.top, 20);
    EXPECT_EQ(sheet.dc.DrawText(L"a\r\nb\nc", -1, &low, DT_CALCRECT),
              3 * sheet.dc.GetTextExtent(L"a").cy);
}

TEST(WindowIdioms, DrawingObjectsAreMadeAttachedAndDetached)
{
    Sheet sheet;
    CBrush brush;
    EXPECT_TRUE(brush.CreateSolidBrush(kInk));
    CBrush other;
    const HGDIOBJ handle = brush.Detach();
    EXPECT_EQ(brush.GetSafeHandle(), nullptr);
    EXPECT_TRUE(other.Attach(handle));
    EXPECT_FALSE(other.Attach(handle)) << "has one";
    EXPECT_EQ(CGdiObject::FromHandle(handle), &other);
    const CRect box(1, 1, 4, 4);
    sheet.dc.FillRect(&box, &other);
    EXPECT_EQ(sheet.BoxOf(kInk), box);

    CPen pen;
    EXPECT_TRUE(pen.CreateStockObject(BLACK_PEN));
    EXPECT_EQ(pen.GetSafeHandle(), GetStockObject(BLACK_PEN));
    CDC taken;
    const HDC context = sheet.dc.Detach();
    EXPECT_TRUE(taken.Attach(context));
    EXPECT_FALSE(taken.Attach(context));
    EXPECT_EQ(taken.GetPixel(2, 2), kInk);
    EXPECT_EQ(taken.Detach(), context);
    EXPECT_TRUE(sheet.dc.Attach(context));
}

TEST(WindowIdioms, StockBrushesHaveTheirGrays)
{
    Sheet sheet;
    const CRect box(0, 0, 4, 4);
    const std::pair<int, int> grays[] = {
        {WHITE_BRUSH,  255},
        {LTGRAY_BRUSH, 192},
        {GRAY_BRUSH,   128},
        {DKGRAY_BRUSH, 64 },
        {BLACK_BRUSH,  0  }
    };
    for (const auto& [index, gray] : grays) {
        CBrush brush;
        ASSERT_TRUE(brush.CreateStockObject(index));
        sheet.dc.FillRect(&box, &brush);
        EXPECT_EQ(sheet.dc.GetPixel(1, 1), RGB(gray, gray, gray)) << index;
    }
}

TEST(WindowIdioms, CellsOfFontsAreNoHigherThanRequested)
{
    Sheet sheet;
    for (int height = 1; height < 40; ++height) {
        CFont font;
        font.CreateFont(height, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, L"DejaVu Sans");
        sheet.dc.SelectObject(&font);
        EXPECT_LE(sheet.dc.GetTextExtent(L"0").cy, height);
        EXPECT_GE(sheet.dc.GetTextExtent(L"0").cy, height - 2);
    }
}

// The name of a face fills its 32 characters without an end, and what follows is no part of it.
TEST(WindowIdioms, FacesMayFillTheirName)
{
    struct
    {
        LOGFONT font;
        wchar_t after[4] = {L'x', L'x', L'x', 0};
    } request;
    std::fill(std::begin(request.font.lfFaceName), std::end(request.font.lfFaceName), L'f');
    CFont font;
    ASSERT_TRUE(font.CreateFontIndirect(&request.font));
    EXPECT_EQ(font.m_hObject->font.face, std::wstring(LF_FACESIZE, L'f'));
}

TEST(WindowIdioms, SolidRectanglesHaveACornerAndASize)
{
    Sheet sheet;
    sheet.dc.FillSolidRect(4, 5, 6, 7, kInk);
    EXPECT_EQ(sheet.BoxOf(kInk), CRect(4, 5, 10, 12));
    EXPECT_EQ(sheet.dc.GetBkColor(), kInk);
    sheet.dc.FillSolidRect(30, 12, INT_MAX, INT_MAX, kInk);
    EXPECT_EQ(sheet.dc.GetPixel(39, 19), kInk) << "as far as numbers go";
}

TEST(WindowIdioms, FontsOfAnyHeightHaveMeasures)
{
    Sheet sheet;
    for (const int height : {20000, INT_MAX, INT_MIN, INT_MIN + 1}) {
        CFont font;
        font.CreateFont(height, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, L"DejaVu Sans");
        sheet.dc.SelectObject(&font);
        EXPECT_GT(sheet.dc.GetTextExtent(L"0").cy, 1000) << height;
        EXPECT_TRUE(sheet.dc.TextOut(0, 0, L"0")) << height;
    }
}

TEST(WindowIdioms, TracesGoToStandardErrorAsUtf8)
{
    testing::internal::CaptureStderr();
    framework::WriteTrace(L"pole \u00e9\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "pole \xc3\xa9\n");
}

} // namespace
