// SPDX-License-Identifier: MIT
/// @struct tiltpole::controls::MeterFace
/// Common parts of the compass dial and the incline gauges: a background drawn once into a picture
/// in memory, a value, fixed marks, and flicker-free composition of the three.
#pragma once

#include "framework/core/Array.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/GdiObject.h"
#include "framework/gui/Types.h"
#include "framework/gui/Wnd.h"

#include <functional>

namespace tiltpole::controls {

struct MeterFace
{
    /// True once the background has been drawn and the client area has a width.
    bool CanCompose() const { return background.GetSafeHdc() && client.Width() > 0; }

    /// Updates the client rectangle. Where there is no background, makes a picture of that size and
    /// calls `draw`; if that throws there is none again.
    void PrepareBackground(CDC& target, const CRect& clientNow, const std::function<void()>& draw);

    /// Discards the background, so that the next paint redraws it.
    void DropBackground();

    /// Copies the background into memory, calls `drawOver` with that context, and copies the result
    /// to the target in one step.
    void Compose(CDC& target, const std::function<void(CDC&)>& drawOver);

    /// Fills `rect` with the background color and derives center, diameter and needle unit from it.
    void FillAndMeasure(CDC& dc, const CRect& rect);

    /// Lists the mark and calls `draw`; if that throws it is not listed. Nothing happens if it is
    /// listed already.
    void AddFix(int degrees, const std::function<void()>& draw);

    /// The context that marks are drawn with at once, obtained at the first call for a window and
    /// never released: it ends with the window. Null without a window.
    CDC* FixContext(CWnd& window);

    /// Prepares the window that the control is about to get; what was obtained from an earlier one
    /// is gone.
    void TakeWindow(CWnd& window);

    CRect client;
    CDC background;
    CBitmap backgroundBitmap;
    CPoint center;
    int diameter = 0; // pixels
    /// Reserved member of the exported controls; never read.
    COLORREF reservedColor = RGB(0, 255, 0);
    COLORREF backColor = RGB(102, 255, 255);
    COLORREF needleColor = RGB(255, 0, 0);
    COLORREF needleShadowColor = GetSysColor(COLOR_BTNSHADOW | SYS_COLOR_INDEX_FLAG);
    COLORREF needleLightColor = RGB(233, 87, 50);
    double value = 0.0;       // degrees
    int needleUnit = 0;       // diameter / 60
    CArray<int, int> fixes;   // whole degrees, no duplicates
    HWND fixWindow = nullptr; // that fixContext was obtained from
    CDC* fixContext = nullptr;
};

/// TakeWindow adds this bit to the window style. It has no meaning to the framework.
constexpr DWORD kMeterStyle = 0x4000;

constexpr COLORREF kFaceColor = RGB(204, 255, 102);
constexpr COLORREF kOuterColor = RGB(0, 153, 255);
constexpr COLORREF kMiddleColor = RGB(255, 204, 0);
constexpr COLORREF kTickColor = RGB(255, 0, 255);
constexpr COLORREF kLabelColor = RGB(0, 0, 255);
constexpr COLORREF kFixColor = RGB(0, 255, 0);
constexpr int kRingPen = 2; // pixels
constexpr int kFixPen = 3;
constexpr int kLabelHalf = 17; // half the side of a label's box

/// The bold face of tick labels, 18 pixels high.
void MakeLabelFont(CFont& font);

/// Draws a number in the box around `at`, horizontally centered and aligned to the box's top.
void DrawLabel(CDC& dc, CPoint at, int number);

} // namespace tiltpole::controls
