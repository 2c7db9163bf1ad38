// SPDX-License-Identifier: MIT
//
// Window classes: their names, and what their windows are erased with.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

namespace {

constexpr COLORREF kDrawn = RGB(7, 8, 9);
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kGray = RGB(128, 128, 128);
constexpr COLORREF kWhite = RGB(255, 255, 255);

// The number that stands for a system color as the background of a class.
HBRUSH SystemBrush(int color)
{
    return reinterpret_cast<HBRUSH>(static_cast<UINT_PTR>(color) + 1);
}

// What a drawn pixel is after its window has been erased.
COLORREF ErasedWith(LPCTSTR className)
{
    CWnd window;
    EXPECT_TRUE(window.CreateEx(0, className, L"", WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr, 0));
    window.UpdateWindow();
    CClientDC dc(&window);
    dc.SetPixel(3, 3, kDrawn);
    window.Invalidate();
    window.UpdateWindow();
    return dc.GetPixel(3, 3);
}

struct Background
{
    HBRUSH brush;
    COLORREF erased;
    const char* name;
};

const Background kBackgrounds[] = {
    {nullptr,                     kDrawn,                     "none"                },
    {GetStockObject(NULL_BRUSH),  kDrawn,                     "null brush"          },
    {GetStockObject(BLACK_BRUSH), kBlack,                     "black brush"         },
    {GetStockObject(GRAY_BRUSH),  kGray,                      "gray brush"          },
    {SystemBrush(COLOR_WINDOW),   kWhite,                     "color of windows"    },
    {SystemBrush(COLOR_BTNFACE),  GetSysColor(COLOR_BTNFACE), "color of buttons"    },
    {SystemBrush(30),             kBlack,                     "unknown system color"},
};

TEST(WindowClass, IsTheSameForTheSameArguments)
{
    EXPECT_EQ(AfxRegisterWndClass(3), AfxRegisterWndClass(3));
    EXPECT_STRNE(AfxRegisterWndClass(3), AfxRegisterWndClass(0));
    WNDCLASS named;
    named.lpszClassName = L"tiltpole.test.named";
    EXPECT_TRUE(AfxRegisterClass(&named));
    EXPECT_FALSE(AfxRegisterClass(&named)) << "the name is taken";
}

TEST(WindowClass, ErasesWithABrushOrASystemColorAndOtherwiseNotAtAll)
{
    for (const Background& b : kBackgrounds)
        EXPECT_EQ(ErasedWith(AfxRegisterWndClass(0, nullptr, b.brush)), b.erased) << b.name;
}

TEST(WindowClass, WithANameErasesInTheSameWay)
{
    for (const Background& b : kBackgrounds) {
        CString name;
        name.Format(L"tiltpole.test.%hs", b.name);
        WNDCLASS named;
        named.hbrBackground = b.brush;
        named.lpszClassName = name;
        ASSERT_TRUE(AfxRegisterClass(&named)) << b.name;
        EXPECT_EQ(ErasedWith(name), b.erased) << b.name;
    }
}

} // namespace
