// SPDX-License-Identifier: MIT
//
// The vertical scale that both incline gauges are: three frames, ticks, labels, a pointer line and
// fixed marks. The gauges differ in the angles they take and in the edge these count from.
#pragma once

#include "controls/drawing/MeterFace.h"

#include "framework/core/Rect.h"

namespace tiltpole::controls {

/// All that sets one gauge apart from the other.
struct GaugeScale
{
    enum class End { Bottom, Top };

    double low; // accepted angles [degrees], both ends in
    double high;
    End lowEnd; // where `low` lies on the screen

    constexpr bool Holds(double angle) const { return low <= angle && angle <= high; }

    /// The row of an angle [pixels]: the scale frame's height is the whole range.
    int RowOf(double angle, const CRect& scaleFrame) const;
    int RowOf(int angle, const CRect& scaleFrame) const;
};

inline constexpr GaugeScale kLeftScale{0.0, 180.0, GaugeScale::End::Bottom};
inline constexpr GaugeScale kRightScale{180.0, 360.0, GaugeScale::End::Top};

/// The frames one inside the other; each is narrower, none lower.
struct GaugeFrames
{
    CRect outer;
    CRect middle;
    CRect scale;

    static GaugeFrames Of(const CRect& rect);
};

/// State and drawing of one gauge. The window stays with the control.
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
