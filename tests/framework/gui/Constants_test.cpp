// SPDX-License-Identifier: MIT
//
// The numbers behind the names of keys, messages, styles and flags: hosts keep them, post them and
// combine them with their own. Values as published for the window system.
#include "framework/gui/gui.h"

#include <gtest/gtest.h>

namespace {

struct Named
{
    const char* name;
    long long actual;
    long long published;
};

#define NAMED(name, published)                                                                     \
    Named                                                                                          \
    {                                                                                              \
#name, static_cast < long long>(name), published                                           \
    }

TEST(Constants, OfKeysAreThePublishedOnes)
{
    const Named all[] = {
        NAMED(VK_BACK, 8),        NAMED(VK_TAB, 9),         NAMED(VK_RETURN, 13),
        NAMED(VK_SHIFT, 16),      NAMED(VK_CONTROL, 17),    NAMED(VK_MENU, 18),
        NAMED(VK_PAUSE, 19),      NAMED(VK_CAPITAL, 20),    NAMED(VK_ESCAPE, 27),
        NAMED(VK_SPACE, 32),      NAMED(VK_PRIOR, 33),      NAMED(VK_NEXT, 34),
        NAMED(VK_END, 35),        NAMED(VK_HOME, 36),       NAMED(VK_LEFT, 37),
        NAMED(VK_UP, 38),         NAMED(VK_RIGHT, 39),      NAMED(VK_DOWN, 40),
        NAMED(VK_INSERT, 45),     NAMED(VK_DELETE, 46),     NAMED(VK_NUMPAD0, 96),
        NAMED(VK_NUMPAD9, 105),   NAMED(VK_MULTIPLY, 106),  NAMED(VK_ADD, 107),
        NAMED(VK_SUBTRACT, 109),  NAMED(VK_DECIMAL, 110),   NAMED(VK_DIVIDE, 111),
        NAMED(VK_F1, 112),        NAMED(VK_F12, 123),       NAMED(VK_OEM_PLUS, 187),
        NAMED(VK_OEM_COMMA, 188), NAMED(VK_OEM_MINUS, 189), NAMED(VK_OEM_PERIOD, 190),
        NAMED(WHEEL_DELTA, 120),  NAMED(MK_LBUTTON, 1),     NAMED(MK_RBUTTON, 2),
        NAMED(MK_SHIFT, 4),       NAMED(MK_CONTROL, 8),     NAMED(MK_MBUTTON, 16),
    };
    for (const Named& c : all)
        EXPECT_EQ(c.actual, c.published) << c.name;
}

TEST(Constants, OfMessagesAreThePublishedOnes)
{
    const Named all[] = {
        NAMED(WM_NULL, 0x0000),
        NAMED(WM_CREATE, 0x0001),
        NAMED(WM_DESTROY, 0x0002),
        NAMED(WM_MOVE, 0x0003),
        NAMED(WM_SIZE, 0x0005),
        NAMED(WM_SETFOCUS, 0x0007),
        NAMED(WM_KILLFOCUS, 0x0008),
        NAMED(WM_ENABLE, 0x000A),
        NAMED(WM_SETREDRAW, 0x000B),
        NAMED(WM_SETTEXT, 0x000C),
        NAMED(WM_GETTEXT, 0x000D),
        NAMED(WM_GETTEXTLENGTH, 0x000E),
        NAMED(WM_PAINT, 0x000F),
        NAMED(WM_CLOSE, 0x0010),
        NAMED(WM_ERASEBKGND, 0x0014),
        NAMED(WM_SHOWWINDOW, 0x0018),
        NAMED(WM_SETFONT, 0x0030),
        NAMED(WM_GETFONT, 0x0031),
        NAMED(WM_NCDESTROY, 0x0082),
        NAMED(WM_KEYDOWN, 0x0100),
        NAMED(WM_KEYUP, 0x0101),
        NAMED(WM_CHAR, 0x0102),
        NAMED(WM_SYSKEYDOWN, 0x0104),
        NAMED(WM_SYSKEYUP, 0x0105),
        NAMED(WM_SYSCHAR, 0x0106),
        NAMED(WM_COMMAND, 0x0111),
        NAMED(WM_TIMER, 0x0113),
        NAMED(WM_MOUSEMOVE, 0x0200),
        NAMED(WM_LBUTTONDOWN, 0x0201),
        NAMED(WM_LBUTTONUP, 0x0202),
        NAMED(WM_LBUTTONDBLCLK, 0x0203),
        NAMED(WM_RBUTTONDOWN, 0x0204),
        NAMED(WM_RBUTTONUP, 0x0205),
        NAMED(WM_RBUTTONDBLCLK, 0x0206),
        NAMED(WM_MBUTTONDOWN, 0x0207),
        NAMED(WM_MBUTTONUP, 0x0208),
        NAMED(WM_MBUTTONDBLCLK, 0x0209),
        NAMED(WM_MOUSEWHEEL, 0x020A),
        NAMED(WM_CAPTURECHANGED, 0x0215),
        NAMED(WM_MOUSELEAVE, 0x02A3),
        NAMED(WM_USER, 0x0400),
        NAMED(WM_APP, 0x8000),
        NAMED(SIZE_RESTORED, 0),
        NAMED(SIZE_MINIMIZED, 1),
        NAMED(SIZE_MAXIMIZED, 2),
        NAMED(STN_CLICKED, 0),
        NAMED(STN_DBLCLK, 1),
        NAMED(STN_ENABLE, 2),
        NAMED(STN_DISABLE, 3),
    };
    for (const Named& c : all)
        EXPECT_EQ(c.actual, c.published) << c.name;
}

TEST(Constants, OfStylesAndFlagsAreThePublishedOnes)
{
    const Named all[] = {
        NAMED(WS_OVERLAPPED, 0),
        NAMED(WS_POPUP, 0x80000000),
        NAMED(WS_CHILD, 0x40000000),
        NAMED(WS_VISIBLE, 0x10000000),
        NAMED(WS_DISABLED, 0x08000000),
        NAMED(WS_CLIPSIBLINGS, 0x04000000),
        NAMED(WS_CLIPCHILDREN, 0x02000000),
        NAMED(WS_CAPTION, 0x00C00000),
        NAMED(WS_BORDER, 0x00800000),
        NAMED(WS_SYSMENU, 0x00080000),
        NAMED(WS_THICKFRAME, 0x00040000),
        NAMED(WS_GROUP, 0x00020000),
        NAMED(WS_TABSTOP, 0x00010000),
        NAMED(WS_MINIMIZEBOX, 0x00020000),
        NAMED(WS_MAXIMIZEBOX, 0x00010000),
        NAMED(WS_OVERLAPPEDWINDOW, 0x00CF0000),
        NAMED(WS_POPUPWINDOW, 0x80880000),
        NAMED(WS_EX_CLIENTEDGE, 0x00000200),
        NAMED(WS_EX_STATICEDGE, 0x00020000),
        NAMED(AFX_IDW_PANE_FIRST, 0xE900),
        NAMED(SS_LEFT, 0),
        NAMED(SS_CENTER, 1),
        NAMED(SS_RIGHT, 2),
        NAMED(SS_LEFTNOWORDWRAP, 12),
        NAMED(SS_TYPEMASK, 31),
        NAMED(SS_NOPREFIX, 0x80),
        NAMED(SS_NOTIFY, 0x100),
        NAMED(SS_CENTERIMAGE, 0x200),
        NAMED(CS_VREDRAW, 1),
        NAMED(CS_HREDRAW, 2),
        NAMED(CS_DBLCLKS, 8),
        NAMED(CW_USEDEFAULT, -2147483648LL),
        NAMED(RDW_INVALIDATE, 0x0001),
        NAMED(RDW_ERASE, 0x0004),
        NAMED(RDW_VALIDATE, 0x0008),
        NAMED(RDW_NOERASE, 0x0020),
        NAMED(RDW_NOCHILDREN, 0x0040),
        NAMED(RDW_ALLCHILDREN, 0x0080),
        NAMED(RDW_UPDATENOW, 0x0100),
        NAMED(RDW_ERASENOW, 0x0200),
        NAMED(SW_HIDE, 0),
        NAMED(SW_SHOWNORMAL, 1),
        NAMED(SW_SHOWNOACTIVATE, 4),
        NAMED(SW_SHOW, 5),
        NAMED(SWP_NOSIZE, 0x01),
        NAMED(SWP_NOMOVE, 0x02),
        NAMED(SWP_NOZORDER, 0x04),
        NAMED(SWP_NOREDRAW, 0x08),
        NAMED(SWP_NOACTIVATE, 0x10),
        NAMED(SWP_FRAMECHANGED, 0x20),
        NAMED(SWP_SHOWWINDOW, 0x40),
        NAMED(SWP_HIDEWINDOW, 0x80),
    };
    for (const Named& c : all)
        EXPECT_EQ(c.actual, c.published) << c.name;
}

TEST(Constants, OfDrawingAreThePublishedOnes)
{
    const Named all[] = {
        NAMED(PS_SOLID, 0),
        NAMED(PS_NULL, 5),
        NAMED(WHITE_BRUSH, 0),
        NAMED(LTGRAY_BRUSH, 1),
        NAMED(GRAY_BRUSH, 2),
        NAMED(DKGRAY_BRUSH, 3),
        NAMED(BLACK_BRUSH, 4),
        NAMED(NULL_BRUSH, 5),
        NAMED(HOLLOW_BRUSH, 5),
        NAMED(WHITE_PEN, 6),
        NAMED(BLACK_PEN, 7),
        NAMED(NULL_PEN, 8),
        NAMED(SYSTEM_FONT, 13),
        NAMED(DEFAULT_GUI_FONT, 17),
        NAMED(SRCCOPY, 0x00CC0020),
        NAMED(SRCPAINT, 0x00EE0086),
        NAMED(PATCOPY, 0x00F00021),
        NAMED(PATINVERT, 0x005A0049),
        NAMED(DSTINVERT, 0x00550009),
        NAMED(BLACKNESS, 0x00000042),
        NAMED(WHITENESS, 0x00FF0062),
        NAMED(NULLREGION, 1),
        NAMED(SIMPLEREGION, 2),
        NAMED(TRANSPARENT, 1),
        NAMED(OPAQUE, 2),
        NAMED(DT_TOP, 0),
        NAMED(DT_LEFT, 0),
        NAMED(DT_CENTER, 1),
        NAMED(DT_RIGHT, 2),
        NAMED(DT_VCENTER, 4),
        NAMED(DT_BOTTOM, 8),
        NAMED(DT_WORDBREAK, 0x10),
        NAMED(DT_SINGLELINE, 0x20),
        NAMED(DT_NOCLIP, 0x100),
        NAMED(DT_CALCRECT, 0x400),
        NAMED(DT_NOPREFIX, 0x800),
        NAMED(ETO_OPAQUE, 2),
        NAMED(ETO_CLIPPED, 4),
        NAMED(TA_LEFT, 0),
        NAMED(TA_RIGHT, 2),
        NAMED(TA_CENTER, 6),
        NAMED(TA_TOP, 0),
        NAMED(TA_BOTTOM, 8),
        NAMED(TA_BASELINE, 24),
        NAMED(GDI_ERROR, 0xFFFFFFFF),
        NAMED(CLR_INVALID, 0xFFFFFFFF),
        NAMED(FW_NORMAL, 400),
        NAMED(FW_BOLD, 700),
        NAMED(LF_FACESIZE, 32),
        NAMED(SYS_COLOR_INDEX_FLAG, 0x40000000),
    };
    for (const Named& c : all)
        EXPECT_EQ(c.actual, c.published) << c.name;
}

// The colors of the system that the controls were measured on.
TEST(Constants, OfSystemColorsNameTheirColors)
{
    struct Case
    {
        int index;
        int published;
        COLORREF color;
    };
    const Case all[] = {
        {COLOR_WINDOW,       5,  RGB(255, 255, 255)},
        {COLOR_WINDOWTEXT,   8,  RGB(0,   0,   0)  },
        {COLOR_BTNFACE,      15, RGB(192, 192, 192)},
        {COLOR_BTNSHADOW,    16, RGB(128, 128, 128)},
        {COLOR_BTNTEXT,      18, RGB(0,   0,   0)  },
        {COLOR_BTNHIGHLIGHT, 20, RGB(255, 255, 255)},
        {COLOR_3DDKSHADOW,   21, RGB(0,   0,   0)  },
        {COLOR_3DLIGHT,      22, RGB(192, 192, 192)},
    };
    for (const Case& c : all) {
        EXPECT_EQ(c.index, c.published);
        EXPECT_EQ(GetSysColor(c.index), c.color) << c.index;
    }
}

} // namespace
