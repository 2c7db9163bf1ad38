// SPDX-License-Identifier: MIT
//
// What windows and contexts answer before they have a handle, to null, and to null arguments: nothing
// changes and nothing is read.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

// A context that has no handle, or one in memory with a picture of 8 x 8 white pixels.
struct Picture
{
    CDC dc;
    CBitmap bitmap;

    Picture()
    {
        dc.CreateCompatibleDC(nullptr);
        bitmap.CreateCompatibleBitmap(&dc, 8, 8);
        dc.SelectObject(&bitmap);
        dc.FillSolidRect(0, 0, 8, 8, RGB(255, 255, 255));
    }
    bool IsWhite() const
    {
        for (int i = 0; i < 64; ++i)
            if (dc.GetPixel(i % 8, i / 8) != RGB(255, 255, 255)) return false;
        return true;
    }
};

class Child : public CWnd
{
public:
    int ended = 0;

protected:
    void PostNcDestroy() override { ++ended; }
};

struct Parent : CWnd
{
    explicit Parent(DWORD style = WS_OVERLAPPED)
    {
        EXPECT_TRUE(
            CreateEx(0, AfxRegisterWndClass(0), L"parent", style, 0, 0, 40, 30, nullptr, 0));
    }
    ~Parent() override { DestroyWindow(); }
};

constexpr RECT kBox{1, 2, 5, 6};

} // namespace

TEST(ContextWithoutHandle, HasNoColorsModesObjectsAndPosition)
{
    CDC dc;
    EXPECT_EQ(dc.SetTextColor(RGB(1, 2, 3)), CLR_INVALID);
    EXPECT_EQ(dc.GetTextColor(), CLR_INVALID);
    EXPECT_EQ(dc.SetBkColor(RGB(1, 2, 3)), CLR_INVALID);
    EXPECT_EQ(dc.GetBkColor(), CLR_INVALID);
    EXPECT_EQ(dc.SetBkMode(TRANSPARENT), 0);
    EXPECT_EQ(dc.GetBkMode(), 0);
    EXPECT_EQ(dc.GetCurrentPen(), nullptr);
    EXPECT_EQ(dc.GetCurrentBrush(), nullptr);
    EXPECT_EQ(dc.GetCurrentFont(), nullptr);
    EXPECT_EQ(dc.GetCurrentBitmap(), nullptr);
    EXPECT_EQ(dc.MoveTo(3, 4), CPoint());
    EXPECT_EQ(dc.GetCurrentPosition(), CPoint());
    EXPECT_EQ(dc.GetPixel(0, 0), CLR_INVALID);
    EXPECT_EQ(dc.SaveDC(), 0);
    EXPECT_FALSE(dc.RestoreDC(1));
    EXPECT_EQ(dc.SelectStockObject(BLACK_PEN), nullptr);
}

TEST(ContextWithoutHandle, DrawsNothing)
{
    CDC dc;
    const POINT points[] = {
        {0, 0},
        {5, 0},
        {5, 5}
    };
    EXPECT_FALSE(dc.LineTo(5, 5));
    EXPECT_FALSE(dc.Polyline(points, 3));
    EXPECT_FALSE(dc.Polygon(points, 3));
    EXPECT_FALSE(dc.Rectangle(&kBox));
    EXPECT_FALSE(dc.Ellipse(&kBox));
    EXPECT_EQ(dc.SetPixel(1, 1, RGB(1, 2, 3)), CLR_INVALID);
    EXPECT_FALSE(dc.PatBlt(0, 0, 5, 5, BLACKNESS));
    EXPECT_FALSE(dc.BitBlt(0, 0, 5, 5, &dc, 0, 0, SRCCOPY));
    EXPECT_FALSE(dc.TextOut(0, 0, L"text"));
    RECT box = kBox;
    EXPECT_EQ(dc.DrawText(L"text", &box, DT_LEFT), 0);
    dc.FillSolidRect(&kBox, RGB(1, 2, 3));
    EXPECT_EQ(dc.GetBkColor(), CLR_INVALID);
}

TEST(ContextWithoutHandle, SelectsMeasuresAndFillsNothing)
{
    CDC dc;
    CPen pen(PS_SOLID, 1, RGB(1, 2, 3));
    CBrush brush(RGB(1, 2, 3));
    EXPECT_EQ(dc.SelectObject(&pen), nullptr);
    EXPECT_EQ(dc.GetTextExtent(L"text"), CSize());
    EXPECT_EQ(dc.GetWindow(), nullptr);
    dc.FillRect(&kBox, &brush);
    EXPECT_EQ(dc.GetSafeHdc(), nullptr);
}

TEST(Context, WritesNoTextThatIsNullOrHasNoPlace)
{
    Picture picture;
    EXPECT_EQ(picture.dc.DrawText(L"text", 4, nullptr, DT_LEFT), 0);
    EXPECT_TRUE(picture.dc.ExtTextOut(0, 0, 0, nullptr, static_cast<LPCTSTR>(nullptr), 3, nullptr));
    picture.dc.FillRect(&kBox, nullptr);
    EXPECT_TRUE(picture.IsWhite());
}

TEST(Context, IsItsHandle)
{
    Picture picture;
    const HDC handle = picture.dc;
    EXPECT_NE(handle, nullptr);
    EXPECT_EQ(handle, picture.dc.GetSafeHdc());
}

TEST(Context, HasNoClipWithoutHeight)
{
    Picture picture;
    EXPECT_EQ(picture.dc.IntersectClipRect(1, 6, 5, 6), NULLREGION);
}

TEST(Context, OfNoPictureHasABitmapWithoutSizeThatStays)
{
    CDC dc;
    dc.CreateCompatibleDC(nullptr);
    CBitmap* const nothing = dc.GetCurrentBitmap();
    ASSERT_NE(nothing, nullptr);
    EXPECT_EQ(nothing->GetSize(), CSize(0, 0));
}

TEST(Context, OfAWindowTakesNoBitmapAndKeepsItsStates)
{
    Parent window;
    CClientDC dc(&window);
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateCompatibleBitmap(&dc, 8, 8));
    EXPECT_EQ(dc.SelectObject(&bitmap), nullptr);
    EXPECT_NE(dc.GetPixel(20, 20), CLR_INVALID) << "it has the picture of the window";
    const COLORREF before = dc.GetTextColor();
    EXPECT_EQ(dc.SaveDC(), 1);
    dc.SetTextColor(RGB(1, 2, 3));
    EXPECT_TRUE(dc.RestoreDC(-1));
    EXPECT_EQ(dc.GetTextColor(), before);
    EXPECT_EQ(dc.GetWindow(), &window);
}

TEST(Context, DrawsNothingOfANullArgument)
{
    Picture picture;
    CDC& dc = picture.dc;
    EXPECT_FALSE(dc.Rectangle(nullptr));
    EXPECT_FALSE(dc.Ellipse(nullptr));
    EXPECT_FALSE(dc.Polyline(nullptr, 3));
    EXPECT_FALSE(dc.Polygon(nullptr, 3));
    EXPECT_FALSE(dc.BitBlt(0, 0, 5, 5, nullptr, 0, 0, SRCCOPY));
    dc.FillRect(nullptr, nullptr);
    dc.FillSolidRect(nullptr, RGB(1, 2, 3));
    EXPECT_EQ(dc.SelectObject(static_cast<CPen*>(nullptr)), nullptr);
    EXPECT_EQ(dc.SelectObject(static_cast<CFont*>(nullptr)), nullptr);
    EXPECT_EQ(dc.SelectObject(static_cast<CBitmap*>(nullptr)), nullptr);
    EXPECT_EQ(dc.SelectObject(static_cast<CGdiObject*>(nullptr)), nullptr);
    EXPECT_TRUE(picture.IsWhite());
}

TEST(Context, SelectsAnObjectOfAnyKindByItsBase)
{
    Picture picture;
    CPen pen(PS_SOLID, 1, RGB(1, 2, 3));
    CGdiObject* const object = &pen;
    EXPECT_NE(picture.dc.SelectObject(object), nullptr);
    EXPECT_EQ(picture.dc.GetCurrentPen(), &pen);
    EXPECT_NE(picture.dc.SelectStockObject(BLACK_PEN), nullptr);
    EXPECT_NE(picture.dc.GetCurrentPen(), &pen);
}

TEST(Context, DrawsAnEllipseIntoARect)
{
    Picture by;
    Picture of;
    EXPECT_TRUE(by.dc.Ellipse(&kBox));
    EXPECT_TRUE(of.dc.Ellipse(kBox.left, kBox.top, kBox.right, kBox.bottom));
    EXPECT_FALSE(by.IsWhite());
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(by.dc.GetPixel(i % 8, i / 8), of.dc.GetPixel(i % 8, i / 8)) << i;
}

TEST(Context, DrawsNoOutlineWithTheNullPenAndNoFaceWithTheNullBrush)
{
    const POINT corners[] = {
        {0, 0},
        {7, 0},
        {7, 7},
        {0, 7}
    };
    Picture picture;
    CDC& dc = picture.dc;
    dc.SelectStockObject(NULL_PEN);
    dc.SelectStockObject(NULL_BRUSH);
    dc.MoveTo(0, 0);
    EXPECT_TRUE(dc.LineTo(7, 7));
    EXPECT_EQ(dc.GetCurrentPosition(), CPoint(7, 7));
    EXPECT_TRUE(dc.Polyline(corners, 4));
    EXPECT_TRUE(dc.Polygon(corners, 4));
    EXPECT_TRUE(dc.Rectangle(&kBox));
    EXPECT_TRUE(dc.Ellipse(&kBox));
    EXPECT_TRUE(dc.PatBlt(0, 0, 8, 8, PATCOPY));
    EXPECT_TRUE(dc.PatBlt(0, 0, 8, 8, PATINVERT));
    CBrush* const none = dc.GetCurrentBrush();
    dc.FillRect(&kBox, none);
    CBrush nothing;
    dc.FillRect(&kBox, &nothing);
    EXPECT_TRUE(picture.IsWhite());
}

TEST(Context, DrawsNoRectangleWithoutWidthOrHeight)
{
    Picture picture;
    EXPECT_TRUE(picture.dc.Rectangle(2, 1, 2, 7));
    EXPECT_TRUE(picture.dc.Rectangle(1, 3, 7, 3));
    EXPECT_TRUE(picture.IsWhite());
    EXPECT_TRUE(picture.dc.Rectangle(6, 6, 1, 2)) << "corners may be exchanged";
    EXPECT_EQ(picture.dc.GetPixel(1, 2), RGB(0, 0, 0));
}

TEST(Context, KnowsNoPixelOutsideItsPicture)
{
    Picture picture;
    for (const auto& [x, y] : {
             std::pair(-1, 3), {3, -1},
               {8, 3 },
               {3, 8 }
    }) {
        EXPECT_EQ(picture.dc.GetPixel(x, y), CLR_INVALID);
        EXPECT_EQ(picture.dc.SetPixel(x, y, 0), CLR_INVALID);
    }
    EXPECT_TRUE(picture.IsWhite());
}

TEST(Context, HasAClipOfWhatIsLeft)
{
    Picture picture;
    RECT box{};
    EXPECT_EQ(picture.dc.GetClipBox(nullptr), 0);
    EXPECT_EQ(picture.dc.IntersectClipRect(nullptr), 0);
    EXPECT_NE(picture.dc.IntersectClipRect(&kBox), 0);
    EXPECT_NE(picture.dc.GetClipBox(&box), 0);
    EXPECT_EQ(CRect(box), CRect(kBox));
    EXPECT_EQ(picture.dc.IntersectClipRect(5, 2, 7, 6), NULLREGION);
    EXPECT_EQ(CDC().GetClipBox(&box), 0);
    EXPECT_EQ(CDC().IntersectClipRect(&kBox), 0);
    EXPECT_EQ(CDC().GetTextAlign(), static_cast<UINT>(GDI_ERROR));
}

TEST(Bitmap, NeedsAContextAndAPossibleSize)
{
    Picture picture;
    CBitmap bitmap;
    CDC none;
    EXPECT_FALSE(bitmap.CreateCompatibleBitmap(nullptr, 5, 5));
    EXPECT_FALSE(bitmap.CreateCompatibleBitmap(&none, 5, 5));
    EXPECT_FALSE(bitmap.CreateCompatibleBitmap(&picture.dc, 5, -1));
    EXPECT_FALSE(bitmap.CreateCompatibleBitmap(&picture.dc, 5, 1 << 30));
    EXPECT_EQ(bitmap.GetSize(), CSize(0, 0));
    EXPECT_TRUE(bitmap.CreateCompatibleBitmap(&picture.dc, 5, 0));
    EXPECT_EQ(bitmap.GetSize(), CSize(1, 1));
}

TEST(Font, TakesAnyFaceAndNone)
{
    CFont font;
    EXPECT_FALSE(font.CreateFontIndirect(nullptr));
    EXPECT_EQ(font.GetSafeHandle(), nullptr);
    EXPECT_TRUE(font.CreatePointFont(90, nullptr));
    EXPECT_NE(font.GetSafeHandle(), nullptr);
    const std::wstring longest(200, L'f');
    EXPECT_TRUE(font.CreatePointFont(90, longest.c_str()));
    EXPECT_TRUE(font.CreateFont(12, 0, 0, 0, FW_BOLD, FALSE, FALSE, FALSE, 0, 0, 0, 0, 0, nullptr));
    EXPECT_TRUE(
        font.CreateFont(12, 0, 0, 0, FW_BOLD, FALSE, FALSE, FALSE, 0, 0, 0, 0, 0, longest.c_str()));
    Picture picture;
    EXPECT_NE(picture.dc.SelectObject(&font), nullptr);
}

TEST(GdiHandle, BelongsToOneObject)
{
    CPen pen(PS_SOLID, 1, RGB(1, 2, 3));
    CPen other(PS_SOLID, 1, RGB(4, 5, 6));
    EXPECT_FALSE(other.Attach(nullptr));
    EXPECT_FALSE(other.Attach(pen.GetSafeHandle()));
    EXPECT_FALSE(other.CreateStockObject(BLACK_PEN)) << "it has one of its own";
    EXPECT_EQ(CGdiObject::FromHandle(nullptr), nullptr);
    EXPECT_TRUE(other.DeleteObject());
    EXPECT_TRUE(other.CreateStockObject(BLACK_PEN));
}

TEST(ContextHandle, BelongsToOneContext)
{
    CDC dc;
    EXPECT_FALSE(dc.Attach(nullptr));
    EXPECT_EQ(CDC::FromHandle(nullptr), nullptr);
    EXPECT_EQ(dc.Detach(), nullptr);
    dc.CreateCompatibleDC(nullptr);
    CDC other;
    other.CreateCompatibleDC(nullptr);
    auto* const handle = dc.Detach();
    EXPECT_FALSE(other.Attach(handle)) << "it has one of its own";
    CDC* const temporary = CDC::FromHandle(handle);
    ASSERT_NE(temporary, nullptr);
    EXPECT_EQ(CDC::FromHandle(handle), temporary);
    EXPECT_TRUE(dc.Attach(handle));
    EXPECT_EQ(CDC::FromHandle(handle), &dc);
}

TEST(ContextHandle, LeavesATemporaryContextAlone)
{
    CDC dc;
    dc.CreateCompatibleDC(nullptr);
    const HDC handle = dc.Detach();
    CDC* const temporary = CDC::FromHandle(handle);
    ASSERT_TRUE(dc.Attach(handle));
    EXPECT_EQ(temporary->Detach(), handle);
    EXPECT_EQ(temporary->GetSafeHdc(), nullptr);
    EXPECT_EQ(CDC::FromHandle(handle), &dc) << "it stays with its owner";
}

TEST(WithoutWindow, NothingIsDoneAndNothingIsThere)
{
    CWnd none;
    EXPECT_FALSE(none.DestroyWindow());
    EXPECT_FALSE(none.SubclassDlgItem(1, nullptr));
    EXPECT_FALSE(none.SubclassWindow(nullptr));
    EXPECT_EQ(none.UnsubclassWindow(), nullptr);
    EXPECT_EQ(none.GetStyle(), 0U);
    EXPECT_EQ(none.GetExStyle(), 0U);
    EXPECT_FALSE(none.ModifyStyle(0, WS_BORDER));
    EXPECT_FALSE(none.ModifyStyleEx(0, 1));
    EXPECT_EQ(none.SetDlgCtrlID(7), 0);
    EXPECT_EQ(none.GetDlgCtrlID(), 0);
    EXPECT_EQ(none.GetDlgItem(1), nullptr);
    EXPECT_EQ(none.GetParent(), nullptr);
    EXPECT_EQ(none.GetOwner(), nullptr);
    EXPECT_EQ(none.SetParent(nullptr), nullptr);
    EXPECT_FALSE(none.SetWindowPos(nullptr, 1, 2, 3, 4, 0));
    EXPECT_FALSE(none.ShowWindow(SW_SHOW));
    EXPECT_FALSE(none.IsWindowVisible());
    EXPECT_FALSE(none.EnableWindow(FALSE));
    EXPECT_FALSE(none.IsWindowEnabled());
    EXPECT_EQ(none.SetFocus(), nullptr);
    EXPECT_EQ(none.SetCapture(), nullptr);
    EXPECT_EQ(none.GetWindowTextLength(), 0);
    EXPECT_EQ(none.GetFont(), nullptr);
    EXPECT_EQ(none.GetDC(), nullptr);
    EXPECT_EQ(none.ReleaseDC(nullptr), 0);
    EXPECT_FALSE(none.RedrawWindow());
    EXPECT_FALSE(none.PostMessage(WM_PAINT));
    EXPECT_EQ(none.SetTimer(1, 100, nullptr), 0U);
    EXPECT_FALSE(none.KillTimer(1));
    none.SetOwner(nullptr);
    none.Invalidate();
    none.InvalidateRect(&kBox);
    none.ValidateRect(nullptr);
    EXPECT_EQ(none.GetSafeHwnd(), nullptr);
}

TEST(WithoutWindow, RectanglesAreEmptyAndPointsStay)
{
    CWnd none;
    RECT rect = kBox;
    none.GetClientRect(&rect);
    EXPECT_EQ(CRect(rect), CRect());
    rect = kBox;
    none.GetWindowRect(&rect);
    EXPECT_EQ(CRect(rect), CRect());
    rect = kBox;
    none.ClientToScreen(&rect);
    none.ScreenToClient(&rect);
    EXPECT_EQ(CRect(rect), CRect(kBox));
    POINT point{3, 4};
    none.ClientToScreen(&point);
    none.ScreenToClient(&point);
    EXPECT_EQ(CPoint(point), CPoint(3, 4));
}

TEST(WithoutWindow, TextsAreEmpty)
{
    CWnd none;
    CString text = L"before";
    none.GetWindowText(text);
    EXPECT_TRUE(text.IsEmpty());
    wchar_t buffer[8] = L"before";
    EXPECT_EQ(none.GetWindowText(buffer, 8), 0);
    EXPECT_EQ(std::wstring(buffer), L"");
    text = L"before";
    EXPECT_EQ(none.GetDlgItemText(1, text), 0);
    EXPECT_TRUE(text.IsEmpty());
    buffer[0] = L'x';
    EXPECT_EQ(none.GetDlgItemText(1, buffer, 8), 0);
    EXPECT_EQ(std::wstring(buffer), L"");
}

TEST(WithoutWindow, AChildOfNoParentIsNotCreatedAndEnds)
{
    Child child;
    EXPECT_FALSE(child.Create(AfxRegisterWndClass(0), L"child", 0, kBox, nullptr, 1));
    EXPECT_EQ(child.ended, 1);
}

TEST(WindowParent, OfNoneLeavesAWindowThatIsThere)
{
    Parent parent;
    Child child;
    ASSERT_TRUE(child.Create(AfxRegisterWndClass(0), L"", 0, kBox, &parent, 5));
    EXPECT_FALSE(child.Create(AfxRegisterWndClass(0), L"", 0, kBox, nullptr, 6));
    EXPECT_EQ(child.ended, 0);
    EXPECT_EQ(parent.GetDlgItem(5), &child);
}

TEST(WindowParent, ThatIsTakenAwayLeavesAWindowOfItsOwn)
{
    Parent parent;
    Child child;
    ASSERT_TRUE(child.Create(AfxRegisterWndClass(0), L"", WS_VISIBLE, kBox, &parent, 5));
    EXPECT_EQ(child.SetParent(nullptr), &parent);
    EXPECT_EQ(child.GetParent(), nullptr);
    EXPECT_EQ(parent.GetDlgItem(5), nullptr);
    EXPECT_EQ(child.SetParent(&parent), nullptr);
    EXPECT_EQ(parent.GetDlgItem(5), &child);
}

TEST(WindowParent, ThatHasEndedHasNoNewChildren)
{
    Parent parent;
    const HWND gone = parent.GetSafeHwnd();
    ASSERT_TRUE(parent.DestroyWindow());
    EXPECT_EQ(CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, gone, 7), nullptr);
}

TEST(WindowHandle, IsEndedByATemporaryObjectOnlyWhereNobodyOwnsIt)
{
    Parent parent;
    const auto make = [&parent] {
        return CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, parent.GetSafeHwnd(), 7);
    };
    const HWND alone = make();
    ASSERT_NE(alone, nullptr);
    EXPECT_TRUE(CWnd::FromHandle(alone)->DestroyWindow());
    EXPECT_EQ(parent.GetDlgItem(7), nullptr);

    const HWND owned = make();
    CWnd* const temporary = CWnd::FromHandle(owned);
    CWnd owner;
    EXPECT_FALSE(owner.Attach(nullptr));
    ASSERT_TRUE(owner.Attach(owned));
    EXPECT_FALSE(temporary->DestroyWindow());
    EXPECT_EQ(parent.GetDlgItem(7), &owner);
    EXPECT_TRUE(owner.DestroyWindow());
    EXPECT_EQ(CWnd::FromHandlePermanent(nullptr), nullptr);
}

TEST(WindowArguments, ChooseBothNumbersOfAPlaceOrASize)
{
    CRect places[3];
    constexpr POINT corners[] = {
        {CW_USEDEFAULT, CW_USEDEFAULT},
        {CW_USEDEFAULT, 7            },
        {7,             CW_USEDEFAULT}
    };
    for (int i = 0; i < 3; ++i) {
        CWnd window;
        const POINT chosen = corners[i];
        ASSERT_TRUE(window.CreateEx(0, AfxRegisterWndClass(0), L"", WS_OVERLAPPED, chosen.x,
                                    chosen.y, chosen.x, chosen.y, nullptr, nullptr));
        window.GetWindowRect(&places[i]);
    }
    EXPECT_EQ(places[1], places[0]);
    EXPECT_EQ(places[2], places[0]);
    EXPECT_NE(places[0].left, 7);
    EXPECT_GT(places[0].Width(), 7);
    EXPECT_GT(places[0].Height(), 7);
}

TEST(WindowArguments, OfNullChangeNothing)
{
    Parent window;
    CRect before;
    window.GetWindowRect(&before);
    window.MoveWindow(nullptr);
    window.GetWindowRect(nullptr);
    window.GetClientRect(nullptr);
    window.ClientToScreen(static_cast<LPPOINT>(nullptr));
    window.ScreenToClient(static_cast<LPPOINT>(nullptr));
    window.ClientToScreen(static_cast<LPRECT>(nullptr));
    window.ScreenToClient(static_cast<LPRECT>(nullptr));
    CRect after;
    window.GetWindowRect(&after);
    EXPECT_EQ(before, after);
    EXPECT_EQ(window.GetWindowText(nullptr, 8), 0);
    wchar_t buffer[8] = L"before";
    EXPECT_EQ(window.GetWindowText(buffer, 0), 0);
    EXPECT_EQ(std::wstring(buffer), L"before");
    EXPECT_EQ(window.GetWindowText(buffer, 4), 3);
    EXPECT_EQ(std::wstring(buffer), L"par");
    window.SetWindowText(nullptr);
    EXPECT_EQ(window.GetWindowTextLength(), 0);
    EXPECT_EQ(window.ReleaseDC(nullptr), 0);
}

TEST(WindowArguments, OnlyARectThatCoversTheInvalidAreaMakesItValid)
{
    Parent window;
    const RECT invalid{5, 5, 20, 20};
    const auto isInvalid = [&window] { return window.GetUpdateRect(nullptr) != FALSE; };
    window.ValidateRect(nullptr);
    window.InvalidateRect(&invalid);
    for (const RECT& part : {
             RECT{6, 5, 20, 20},
             RECT{5, 6, 20, 20},
             RECT{5, 5, 19, 20},
             RECT{5, 5, 20, 19}
    }) {
        window.ValidateRect(&part);
        EXPECT_TRUE(isInvalid());
    }
    window.ValidateRect(&invalid);
    EXPECT_FALSE(isInvalid());
    CWnd none;
    RECT rect = kBox;
    EXPECT_FALSE(none.GetUpdateRect(&rect));
    EXPECT_EQ(CRect(rect), CRect());
}

TEST(WindowArguments, OfPaintingMayBeNull)
{
    Parent window;
    CWnd none;
    PAINTSTRUCT paint{};
    EXPECT_EQ(window.BeginPaint(nullptr), nullptr);
    EXPECT_EQ(none.BeginPaint(&paint), nullptr);
    window.EndPaint(nullptr);
    none.EndPaint(&paint);
    none.UpdateWindow();
    EXPECT_EQ(none.SendMessage(WM_PAINT), 0);
    for (CWnd* const without : {static_cast<CWnd*>(nullptr), &none}) {
        EXPECT_EQ(CClientDC(without).GetSafeHdc(), nullptr);
        EXPECT_EQ(CWindowDC(without).GetSafeHdc(), nullptr);
        EXPECT_EQ(CPaintDC(without).GetSafeHdc(), nullptr);
    }
}

TEST(WindowClass, NeedsANameThatIsNotTaken)
{
    WNDCLASS wanted{};
    EXPECT_FALSE(AfxRegisterClass(nullptr));
    EXPECT_FALSE(AfxRegisterClass(&wanted));
    wanted.lpszClassName = L"";
    EXPECT_FALSE(AfxRegisterClass(&wanted));
    wanted.lpszClassName = L"without window";
    EXPECT_TRUE(AfxRegisterClass(&wanted));
    EXPECT_FALSE(AfxRegisterClass(&wanted));
}

TEST(MouseTracking, IsOfAWindowThatIsThere)
{
    Parent window;
    TRACKMOUSEEVENT request{};
    EXPECT_FALSE(TrackMouseEvent(nullptr));
    EXPECT_FALSE(TrackMouseEvent(&request));
    request.hwndTrack = window.GetSafeHwnd();
    request.dwFlags = 0;
    EXPECT_FALSE(TrackMouseEvent(&request));
    request.dwFlags = TME_LEAVE | TME_CANCEL;
    EXPECT_TRUE(TrackMouseEvent(&request)) << "nothing to cancel";
    request.dwFlags = TME_LEAVE;
    EXPECT_TRUE(TrackMouseEvent(&request));
    request.dwFlags = TME_LEAVE | TME_CANCEL;
    EXPECT_TRUE(TrackMouseEvent(&request));
}

TEST(WindowArguments, StylesThatAreThereChangeNothing)
{
    Parent window;
    EXPECT_TRUE(window.ModifyStyle(0, WS_BORDER, SWP_FRAMECHANGED));
    EXPECT_FALSE(window.ModifyStyle(0, WS_BORDER));
    EXPECT_TRUE(window.GetStyle() & WS_BORDER);
    EXPECT_TRUE(window.ModifyStyleEx(0, WS_EX_CLIENTEDGE, SWP_FRAMECHANGED));
    EXPECT_FALSE(window.ModifyStyleEx(0, WS_EX_CLIENTEDGE));
    EXPECT_TRUE(window.ModifyStyleEx(WS_EX_CLIENTEDGE, 0));
    EXPECT_EQ(window.GetExStyle(), 0U);
}

TEST(WindowParent, MayNotBeTheWindowItselfOrInsideIt)
{
    Parent parent;
    Child child;
    ASSERT_TRUE(child.Create(AfxRegisterWndClass(0), L"", WS_VISIBLE, kBox, &parent, 5));
    Child grandchild;
    ASSERT_TRUE(grandchild.Create(AfxRegisterWndClass(0), L"", WS_VISIBLE, kBox, &child, 6));
    EXPECT_EQ(child.SetParent(&child), nullptr);
    EXPECT_EQ(child.SetParent(&grandchild), nullptr);
    CWnd none;
    EXPECT_EQ(child.SetParent(&none), nullptr);
    EXPECT_EQ(child.GetParent(), &parent);
    EXPECT_EQ(grandchild.SetParent(&child), &child) << "it is there already";
    EXPECT_EQ(grandchild.SetParent(&parent), &child);
    EXPECT_EQ(parent.GetDlgItem(6), &grandchild);
    EXPECT_EQ(child.GetDlgItem(6), nullptr);
}

TEST(WindowParent, GivesItsChildrenTextsByNumber)
{
    Parent parent;
    Child child;
    ASSERT_TRUE(child.Create(AfxRegisterWndClass(0), L"old", 0, kBox, &parent, 5));
    parent.SetDlgItemText(5, L"new");
    parent.SetDlgItemText(6, L"nobody");
    CString text;
    EXPECT_EQ(parent.GetDlgItemText(5, text), 3);
    EXPECT_EQ(parent.GetDlgItemText(5, nullptr, 8), 0);
    EXPECT_EQ(text, L"new");
    EXPECT_EQ(child.SetDlgCtrlID(9), 5);
    EXPECT_EQ(parent.GetDlgItem(5), nullptr);
    EXPECT_EQ(parent.GetDlgItem(9), &child);
    EXPECT_EQ(child.GetOwner(), &parent);
    Parent other;
    child.SetOwner(&other);
    EXPECT_EQ(child.GetOwner(), &other);
    child.SetOwner(nullptr);
    EXPECT_EQ(child.GetOwner(), &parent);
}

TEST(WindowHandle, OfAnotherWindowIsTakenOverOnce)
{
    Parent parent;
    Child child;
    ASSERT_TRUE(child.Create(AfxRegisterWndClass(0), L"", 0, kBox, &parent, 5));
    CWnd over;
    EXPECT_FALSE(over.SubclassDlgItem(4, &parent));
    EXPECT_TRUE(over.SubclassDlgItem(5, &parent));
    EXPECT_FALSE(over.SubclassWindow(parent)) << "it has a window";
    EXPECT_EQ(CWnd::FromHandlePermanent(child.GetSafeHwnd()), &over);
    EXPECT_EQ(over.UnsubclassWindow(), child.GetSafeHwnd());
    EXPECT_EQ(CWnd::FromHandlePermanent(child.GetSafeHwnd()), &child);
    EXPECT_EQ(CWnd::FromHandle(nullptr), nullptr);
}
