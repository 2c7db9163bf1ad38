// SPDX-License-Identifier: MIT
/// @file
/// The vertical scale of both incline gauges: three frames, ticks, labels, a pointer line and fixed
/// marks. The gauges differ in the range of angles and in the edge from which it is measured.
#pragma once

#include "controls/drawing/MeterFace.h"

#include "framework/core/Rect.h"

namespace tiltpole::controls {

/// Everything in which the two gauges differ.
struct GaugeScale
{
    enum class End { Bottom, Top };

    double low; // accepted angles [degrees], inclusive
    double high;
    End lowEnd; // where `low` lies on the screen

    constexpr bool Holds(double angle) const { return low <= angle && angle <= high; }

    /// The row of an angle [pixels]; the height of the scale frame spans the whole range.
    int RowOf(double angle, const CRect& scaleFrame) const;
    int RowOf(int angle, const CRect& scaleFrame) const;
};

inline constexpr GaugeScale kLeftScale{0.0, 180.0, GaugeScale::End::Bottom};
inline constexpr GaugeScale kRightScale{180.0, 360.0, GaugeScale::End::Top};

/// The nested frames; each is narrower than the one before, and all have the same height.
struct GaugeFrames
{
    CRect outer;
    CRect middle;
    CRect scale;

    static GaugeFrames Of(const CRect& rect);
};

/// State and drawing of one gauge. The control owns the window.
struct InclineGauge
{
    void DrawBackground(CDC& dc, const CRect& rect);
    void DrawPointer(CDC& dc, const GaugeScale& scale, double angle) const;
    void DrawFixes(CDC& dc, const GaugeScale& scale) const;
    void DrawFix(CDC& dc, const GaugeScale& scale, int angle) const;

    MeterFace face;
    GaugeFrames frames; // of the last background

private:
    void DrawFrames(CDC& dc) const;
    void DrawTicks(CDC& dc) const;
};

} // namespace tiltpole::controls
