// SPDX-License-Identifier: MIT
//
// What the compass dial and the incline gauges share: a background drawn once into a picture in
// memory, a value, fixed marks, and the composition of the three without flicker.
#pragma once

#include "framework/core/Array.h"
#include "framework/gui/DeviceContext.h"
#include "framework/gui/GdiObject.h"
#include "framework/gui/Types.h"

#include <functional>

namespace tiltpole::controls {

struct MeterFace
{
    /// True once the background has been drawn and the client area has a width.
    bool CanCompose() const { return background.GetSafeHdc() && client.Width() > 0; }

    /// Refreshes the client rectangle; true when the background must be drawn, into a fresh
    /// picture of that size.
    bool PrepareBackground(CDC& target, const CRect& clientNow);

    /// Gives the background up, so that the next paint draws it again.
    void DropBackground();

    /// Copies the background into memory, calls `drawOver` with that context, and copies the result
    /// to the target in one step.
    void Compose(CDC& target, const std::function<void(CDC&)>& drawOver);

    /// Fills `rect` with the background color and takes center, diameter and needle unit from it.
    void FillAndMeasure(CDC& dc, const CRect& rect);

    /// False when the mark is listed already.
    bool AddFix(int degrees);

    CRect client;
    CDC background;
    CBitmap backgroundBitmap;
    CBitmap* previousBitmap = nullptr;
    CPoint center;
    int diameter = 0; // pixels
    /// Part of the state that a control has always had; never read.
    COLORREF reservedColor = RGB(0, 255, 0);
    COLORREF backColor = RGB(102, 255, 255);
    COLORREF needleColor = RGB(255, 0, 0);
    COLORREF needleShadowColor = GetSysColor(COLOR_BTNSHADOW | SYS_COLOR_INDEX_FLAG);
    COLORREF needleLightColor = RGB(233, 87, 50);
    double value = 0.0;     // degrees
    int needleUnit = 0;     // diameter / 60
    CArray<int, int> fixes; // whole degrees, none twice
};

/// PreSubclassWindow adds this bit to the window style. The framework gives it no meaning.
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

/// A number centered in the box around `at`, from the box's top.
void DrawLabel(CDC& dc, CPoint at, int number);

} // namespace tiltpole::controls
