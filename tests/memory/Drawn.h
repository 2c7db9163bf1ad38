// SPDX-License-Identifier: MIT
//
// Contexts and windows that rows of the allocation sweep work on, and what is to see of them.
#pragma once

#include "framework/core/TextConversion.h"
#include "framework/gui/gui.h"

#include <cstdint>
#include <string>

namespace sweep {

/// A number of the pixels that can be drawn on.
inline std::string Pixels(const CDC& dc)
{
    CRect box;
    dc.GetClipBox(&box);
    std::uint64_t number = 14695981039346656037U;
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x)
            number = (number ^ dc.GetPixel(x, y)) * 1099511628211U;
    return std::to_string(number) + ' ';
}

inline std::string Text(const RECT& rect)
{
    return std::to_string(rect.left) + ',' + std::to_string(rect.top) + ','
           + std::to_string(rect.right) + ',' + std::to_string(rect.bottom) + ' ';
}

/// A drawing object whose handle has no object of the host's.
template <class Object>
class Bare
{
public:
    template <class... Arguments>
    explicit Bare(Arguments... arguments)
    {
        Object made(arguments...);
        handle = made.Detach();
    }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;
    ~Bare()
    {
        Object end;
        end.Attach(handle);
    }

    HGDIOBJ handle;
};

/// A picture in memory and what to draw on it with. The selected objects have no wrappers yet.
struct Paper
{
    Bare<CPen> firstPen{PS_SOLID, 1, RGB(10, 20, 30)};
    Bare<CBrush> firstBrush{RGB(30, 20, 10)};
    CPen pen{PS_SOLID, 1, RGB(200, 100, 0)};
    CPen widePen{PS_SOLID, 7, RGB(0, 200, 100)};
    CBrush brush{RGB(100, 0, 200)};
    CFont font;
    CDC dc;
    CBitmap picture;
    int result = 0;
    std::string told;

    Paper()
    {
        font.CreateFont(20, 0, 0, 0, FW_BOLD, 0, 0, 0, 0, 0, 0, 0, 0, L"");
        dc.CreateCompatibleDC(nullptr);
        picture.CreateCompatibleBitmap(&dc, 48, 32);
        dc.SelectObject(&picture);
        dc.FillSolidRect(0, 0, 48, 32, RGB(250, 251, 252));
        SelectBare<CPen>(firstPen);
        SelectBare<CBrush>(firstBrush);
    }
    Paper(const Paper&) = delete;
    Paper& operator=(const Paper&) = delete;

    HGDIOBJ Pen() const { return dc.GetCurrentPen()->m_hObject; }
    HGDIOBJ Brush() const { return dc.GetCurrentBrush()->m_hObject; }

private:
    template <class Object>
    void SelectBare(const Bare<Object>& bare)
    {
        Object lent;
        lent.Attach(bare.handle);
        dc.SelectObject(&lent);
        lent.Detach();
    }
};

inline std::string Describe(const Paper& p)
{
    const CPoint at = p.dc.GetCurrentPosition();
    const CBitmap* const picture = p.dc.GetCurrentBitmap();
    CRect box;
    p.dc.GetClipBox(&box);
    return Pixels(p.dc) + Text(box) + std::to_string(at.x) + ',' + std::to_string(at.y) + ' '
           + (p.Pen() == p.firstPen.handle ? "first pen " : "pen ")
           + (p.Brush() == p.firstBrush.handle ? "first brush " : "brush ")
           + (p.dc.GetCurrentFont()->m_hObject == p.font.m_hObject ? "font " : "first font ")
           + (picture == &p.picture ? "picture " : "no picture ")
           + std::to_string(p.dc.GetTextColor()) + ' ' + std::to_string(p.dc.GetBkColor()) + ' '
           + std::to_string(p.dc.GetBkMode()) + ' ' + std::to_string(p.dc.GetTextAlign()) + ' '
           + std::to_string(p.result) + ' ' + p.told;
}

/// A window that is shown, and what the toolkit still does for it when it ends.
struct Host
{
    int count = 1;
    char name[5] = "test";
    char* values[2] = {name, nullptr};
    framework::Application application{count, values};
    CWnd window;

    Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host()
    {
        window.DestroyWindow();
        application.DispatchPending();
    }
};

constexpr DWORD kHidden = WS_CHILD;
constexpr DWORD kInHost = WS_CHILD | WS_VISIBLE;
constexpr const wchar_t* kName = L"a name that is too long to be stored within the object";

/// The name of a class of windows that are erased in a color and show no text.
inline LPCTSTR PlainClass()
{
    return AfxRegisterWndClass(0, nullptr, CBrush(RGB(7, 8, 9)));
}

inline Host::Host()
{
    window.CreateEx(0, PlainClass(), L"host", WS_OVERLAPPED, 0, 0, 120, 120, nullptr, 0);
    window.ShowWindow(SW_SHOW);
}

/// A child window without any object, also of the framework's.
inline HWND MakeBare(CWnd& parent, UINT id)
{
    CWnd made;
    made.CreateEx(0, PlainClass(), L"bare", kHidden, 0, 0, 9, 9, parent.GetSafeHwnd(), id);
    return made.Detach();
}

/// A window and its child, neither shown, and a child without an object of the host's.
struct Pair
{
    CWnd top;
    CWnd child;
    HWND bare = nullptr;
    CString text;
    int result = 0;
    std::string told;

    Pair()
    {
        top.CreateEx(0, PlainClass(), L"top", WS_OVERLAPPED, 0, 0, 60, 40, nullptr, 0);
        child.CreateEx(WS_EX_STATICEDGE, PlainClass(), L"child", kHidden, 5, 6, 30, 20,
                       top.GetSafeHwnd(), 7);
        bare = MakeBare(top, 8);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
};

inline std::string Describe(CWnd& window)
{
    if (!window.GetSafeHwnd()) return "none ";
    CRect place;
    window.GetWindowRect(&place);
    CRect invalid;
    window.GetUpdateRect(&invalid);
    CString text;
    window.GetWindowText(text);
    const CClientDC dc(&window);
    return Text(place) + Text(invalid) + framework::ToUtf8(text.GetString()) + ' '
           + std::to_string(window.GetStyle()) + ' ' + std::to_string(window.GetExStyle()) + ' '
           + std::to_string(window.GetDlgCtrlID()) + ' ' + Pixels(dc);
}

inline std::string Describe(const Pair& constant)
{
    auto& p = const_cast<Pair&>(constant); // asking is not const
    std::string children;
    for (const int id : {7, 8, 9})
        children += p.top.GetDlgItem(id) ? 'y' : 'n';
    return Describe(p.top) + '|' + Describe(p.child) + '|' + children + ' '
           + std::to_string(p.result) + ' ' + framework::ToUtf8(p.text.GetString()) + ' ' + p.told;
}

} // namespace sweep
