// SPDX-License-Identifier: MIT
//
// What becomes invalid when windows are moved, sized, shown and redrawn, and when it is painted.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>
#include <vector>

namespace {

// Counts its paints and keeps its messages.
struct Child : CWnd
{
    int paints = 0;
    int erased = 0;
    std::vector<UINT> messages;

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        messages.push_back(message);
        paints += message == WM_PAINT;
        erased += message == WM_ERASEBKGND;
        return CWnd::WindowProc(message, wParam, lParam);
    }
};

// Painted once, of a class that becomes invalid as a whole where its size changes.
struct Painted : Child
{
    explicit Painted(UINT classStyle = CS_HREDRAW | CS_VREDRAW)
    {
        EXPECT_TRUE(CreateEx(0, AfxRegisterWndClass(classStyle, nullptr, CBrush(RGB(1, 2, 3))),
                             L"page", WS_POPUP | WS_VISIBLE, 10, 20, 60, 40, nullptr, nullptr));
        UpdateWindow();
        paints = 0;
    }

    CRect Invalid()
    {
        CRect rect;
        GetUpdateRect(&rect);
        return rect;
    }

    // Since the last time; what is invalid is painted now.
    int PaintsAfterwards()
    {
        UpdateWindow();
        return std::exchange(paints, 0);
    }
};

TEST(Redrawing, RedrawWindowErasesOnlyWhereItIsAskedTo)
{
    Painted page(0);
    page.messages.clear();
    page.RedrawWindow(nullptr, nullptr, RDW_INVALIDATE | RDW_NOERASE | RDW_UPDATENOW);
    EXPECT_EQ(page.messages, std::vector<UINT>{WM_PAINT});
    page.messages.clear();
    page.RedrawWindow(nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ERASENOW | RDW_NOCHILDREN);
    EXPECT_EQ(page.messages, (std::vector<UINT>{WM_PAINT, WM_ERASEBKGND}));
    page.messages.clear();
    page.RedrawWindow(nullptr, nullptr, RDW_INVALIDATE);
    page.RedrawWindow(nullptr, nullptr, RDW_VALIDATE | RDW_UPDATENOW);
    EXPECT_TRUE(page.messages.empty()) << "nothing is invalid any more";
}

TEST(Redrawing, RedrawWindowPaintsAtOnceAndTheChildrenToo)
{
    Painted frame;
    Child outer;
    Child inner;
    outer.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 50, 50), &frame, 1);
    inner.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 50, 50), &outer, 1);
    outer.UpdateWindow();
    inner.UpdateWindow();
    outer.paints = outer.erased = inner.paints = 0;

    outer.RedrawWindow();
    EXPECT_EQ(outer.paints, 1);
    EXPECT_EQ(outer.erased, 1);
    EXPECT_EQ(inner.paints, 0);
    outer.RedrawWindow(CRect(1, 1, 5, 5), nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(outer.paints, 2);
    EXPECT_EQ(outer.erased, 1) << "without erasing";
    outer.RedrawWindow(nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    EXPECT_EQ(outer.paints, 3);
    EXPECT_EQ(inner.paints, 1);
    outer.RedrawWindow(nullptr, nullptr, RDW_INVALIDATE);
    EXPECT_EQ(outer.paints, 3) << "later";
    outer.RedrawWindow(nullptr, nullptr, RDW_VALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(outer.paints, 3);
}

TEST(Redrawing, SetRedrawHoldsPaintsBack)
{
    Painted frame;
    Child window;
    window.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 50, 50), &frame, 1);
    window.UpdateWindow();
    window.paints = 0;
    window.SetRedraw(FALSE);
    window.Invalidate();
    window.UpdateWindow();
    EXPECT_EQ(window.paints, 0);
    window.SetRedraw(TRUE);
    window.UpdateWindow();
    EXPECT_EQ(window.paints, 1);
}

TEST(Redrawing, NothingIsPaintedThatIsPlacedWithoutRedrawing)
{
    Painted page;
    page.SetWindowPos(nullptr, 5, 6, 90, 70, SWP_NOZORDER | SWP_NOREDRAW);
    EXPECT_EQ(page.PaintsAfterwards(), 0) << "moved and sized by SetWindowPos";
    page.MoveWindow(1, 2, 120, 50, FALSE);
    EXPECT_EQ(page.PaintsAfterwards(), 0) << "by MoveWindow";
    page.MoveWindow(CRect(0, 0, 130, 60), FALSE);
    EXPECT_EQ(page.PaintsAfterwards(), 0) << "to a rectangle";
    page.ModifyStyleEx(0, WS_EX_CLIENTEDGE, SWP_FRAMECHANGED | SWP_NOREDRAW);
    EXPECT_EQ(page.PaintsAfterwards(), 0) << "given a frame";
    page.Invalidate();
    EXPECT_EQ(page.PaintsAfterwards(), 1) << "until the host invalidates";
    page.MoveWindow(0, 0, 140, 60);
    EXPECT_EQ(page.PaintsAfterwards(), 1) << "the next call redraws";
}

TEST(Redrawing, AWindowShownWithoutRedrawingIsNotPainted)
{
    constexpr UINT still = SWP_NOMOVE | SWP_NOSIZE;
    Painted page;
    page.SetWindowPos(nullptr, 0, 0, 0, 0, still | SWP_HIDEWINDOW);
    page.SetWindowPos(nullptr, 0, 0, 0, 0, still | SWP_SHOWWINDOW | SWP_NOREDRAW);
    EXPECT_TRUE(page.IsWindowVisible());
    EXPECT_EQ(page.PaintsAfterwards(), 0);
    page.ShowWindow(SW_HIDE);
    page.ShowWindow(SW_SHOW);
    EXPECT_EQ(page.PaintsAfterwards(), 1);
}

TEST(Redrawing, PlacingWithoutRedrawingStillTellsPlaceAndSize)
{
    Painted page;
    page.messages.clear();
    page.MoveWindow(1, 2, 90, 70, FALSE);
    EXPECT_EQ(page.messages, (std::vector<UINT>{WM_MOVE, WM_SIZE}));
    CRect place;
    page.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(1, 2, 91, 72));
}

TEST(Redrawing, WhatWasInvalidBeforePlacingWithoutRedrawingStaysSo)
{
    Painted page(0);
    const CRect corner(50, 30, 60, 40);
    page.InvalidateRect(&corner);
    page.MoveWindow(1, 2, 90, 70, FALSE);
    EXPECT_EQ(page.Invalid(), corner);
    page.MoveWindow(1, 2, 55, 70, FALSE);
    EXPECT_EQ(page.Invalid(), CRect(50, 30, 55, 40)) << "only inside the client area";
    page.MoveWindow(1, 2, 40, 70);
    EXPECT_FALSE(page.GetUpdateRect(nullptr));
    page.messages.clear();
    page.Invalidate(FALSE);
    page.UpdateWindow();
    EXPECT_EQ(page.messages, (std::vector<UINT>{WM_PAINT})) << "the erasing is forgotten with it";
}

// A host whose memory runs out in a paint between BeginPaint and EndPaint.
struct ShortOfMemory : Painted
{
    bool isShort = true;
    CSize size{60, 40}; // taken in the paint

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_PAINT && isShort) {
            PAINTSTRUCT paint;
            BeginPaint(&paint);
            SetWindowPos(nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
            throw std::bad_alloc();
        }
        return Painted::WindowProc(message, wParam, lParam);
    }
};

TEST(Redrawing, APaintThatEndsEarlyIsMadeUpFor)
{
    ShortOfMemory page;
    page.Invalidate();
    EXPECT_THROW(page.UpdateWindow(), std::bad_alloc);
    EXPECT_EQ(page.Invalid(), CRect(0, 0, 60, 40));
    page.isShort = false;
    EXPECT_EQ(page.PaintsAfterwards(), 1);
    EXPECT_EQ(page.PaintsAfterwards(), 0);
}

TEST(Redrawing, NothingOutsideOfTheWindowStaysInvalid)
{
    ShortOfMemory page;
    page.size = {30, 20};
    page.Invalidate();
    EXPECT_THROW(page.UpdateWindow(), std::bad_alloc);
    EXPECT_EQ(page.Invalid(), CRect(0, 0, 30, 20));
}

} // namespace
