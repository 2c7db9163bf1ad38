// SPDX-License-Identifier: MIT
//
// A host's dialog for testing controls, and helpers to inspect the pixels a control shows.
#pragma once

#include "framework/gui/gui.h"

#include <gtest/gtest.h>

#include <vector>

namespace tiltpole::controls::test {

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kGreen = RGB(0, 255, 0);
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kFace = RGB(204, 255, 102);
constexpr COLORREF kTick = RGB(255, 0, 255);

class Dialog : public CWnd
{
public:
    Dialog()
    {
        CreateEx(0, AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW), L"host", WS_OVERLAPPED, 0, 0, 800,
                 800, nullptr, 0);
        ShowWindow(SW_SHOW);
    }
};

/// The current contents of a window, captured without painting.
class Shown
{
public:
    explicit Shown(CWnd& window)
    {
        CRect client;
        window.GetClientRect(&client);
        m_width = client.Width();
        m_height = client.Height();
        CClientDC dc(&window);
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                m_pixels.push_back(dc.GetPixel(x, y));
    }

    COLORREF At(int x, int y) const { return m_pixels[static_cast<std::size_t>(y * m_width + x)]; }

    int Count(COLORREF color) const
    {
        int count = 0;
        for (const COLORREF pixel : m_pixels)
            count += pixel == color;
        return count;
    }

    bool operator==(const Shown&) const = default;

private:
    int m_width;
    int m_height;
    std::vector<COLORREF> m_pixels;
};

/// Leaves white pixels in the memory that the next bitmap of that size is likely to reuse.
inline void SoilBitmaps(int width, int height)
{
    CDC memory;
    memory.CreateCompatibleDC(nullptr);
    CBitmap bitmap;
    bitmap.CreateCompatibleBitmap(&memory, width, height);
    memory.SelectObject(&bitmap);
    const CRect all(0, 0, width, height);
    memory.FillSolidRect(&all, kWhite);
}

/// A painted control on a dialog.
template <class Control>
struct Placed
{
    Dialog dialog;
    Control control;

    explicit Placed(int width, int height)
    {
        EXPECT_TRUE(
            control.Create(L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, width, height), &dialog, 1));
        control.UpdateWindow();
    }

    Shown Repainted()
    {
        control.Invalidate();
        control.UpdateWindow();
        return Shown(control);
    }
};

} // namespace tiltpole::controls::test
