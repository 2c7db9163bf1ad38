// SPDX-License-Identifier: MIT
//
// A host's dialog without a screen, and a look at what a control on it shows.
#pragma once

#include "framework/gui/gui.h"

#include <cstdio>

namespace dialog {

/// Draws in memory; made before the first window.
struct Memory : framework::Application
{
    Memory(int& argc, char** argv) : Application(argc, argv, framework::Display::Memory) {}
};

class Dialog : public CWnd
{
public:
    Dialog()
    {
        CreateEx(0, AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW), L"host", WS_OVERLAPPED, 0, 0, 400,
                 400, nullptr, 0);
        ShowWindow(SW_SHOW);
    }
};

/// Pixels of a color in the picture of a window.
inline int CountOf(CWnd& window, COLORREF color)
{
    CRect client;
    window.GetClientRect(&client);
    CClientDC dc(&window);
    int count = 0;
    for (int y = 0; y < client.Height(); ++y)
        for (int x = 0; x < client.Width(); ++x)
            count += dc.GetPixel(x, y) == color;
    return count;
}

/// The middle of the pixels of a color.
inline CPoint MiddleOf(CWnd& window, COLORREF color)
{
    CRect client;
    window.GetClientRect(&client);
    CClientDC dc(&window);
    CPoint sum(0, 0);
    for (int y = 0; y < client.Height(); ++y)
        for (int x = 0; x < client.Width(); ++x)
            if (dc.GetPixel(x, y) == color) sum = CPoint(sum.x + x, sum.y + y);
    const int count = CountOf(window, color);
    return count > 0 ? CPoint(sum.x / count, sum.y / count) : CPoint(-1, -1);
}

/// Saves the picture of a window and prints its size.
inline void Save(CWnd& window, const char* name)
{
    CRect client;
    window.GetClientRect(&client);
    const bool saved = framework::SaveWindowImage(window, CString(name));
    std::printf("%s: %d x %d pixels%s\n", name, client.Width(), client.Height(),
                saved ? "" : ", not saved");
}

} // namespace dialog
