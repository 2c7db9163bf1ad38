// SPDX-License-Identifier: MIT
#include "controls/gauge/InclineGauge.h"

#include "controls/drawing/Pixel.h"
#include "controls/drawing/Segment.h"
#include "framework/gui/Selected.h"

namespace tiltpole::controls {
namespace {

using framework::Selected;

constexpr int kMiddleInset = 5; // pixels, left and right
constexpr int kScaleInset = 15;
constexpr int kMajorTick = 10;
constexpr int kMinorTick = 5;
constexpr int kSteps = 18; // of ten degrees each

int RowAt(const GaugeScale& scale, double way, const CRect& frame)
{
    return scale.lowEnd == GaugeScale::End::Bottom ? ToPixel(frame.bottom - way)
                                                   : ToPixel(frame.top + way);
}

void DrawFrame(CDC& dc, const CRect& frame, COLORREF color)
{
    CPen pen(PS_SOLID, kRingPen, color);
    const Selected usePen(dc, pen);
    dc.Rectangle(&frame);
}

} // namespace

int GaugeScale::RowOf(double angle, const CRect& scaleFrame) const
{
    return RowAt(*this, scaleFrame.Height() * (angle - low) / 180.0, scaleFrame);
}

// Integer arithmetic up to the division.
int GaugeScale::RowOf(int angle, const CRect& scaleFrame) const
{
    const int product = scaleFrame.Height() * (angle - static_cast<int>(low));
    return RowAt(*this, product / 180.0, scaleFrame);
}

GaugeFrames GaugeFrames::Of(const CRect& rect)
{
    const CRect middle(rect.left + kMiddleInset, rect.top, rect.right - kMiddleInset, rect.bottom);
    const CRect scale(middle.left + kScaleInset, middle.top, middle.right - kScaleInset,
                      middle.bottom);
    return {rect, middle, scale};
}

void InclineGauge::DrawBackground(CDC& dc, const CRect& rect)
{
    face.FillAndMeasure(dc, rect);
    frames = GaugeFrames::Of(rect);
    DrawFrames(dc);
    DrawTicks(dc);
}

void InclineGauge::DrawFrames(CDC& dc) const
{
    CBrush brush(kFaceColor);
    const Selected useBrush(dc, brush);
    DrawFrame(dc, frames.outer, kOuterColor);
    DrawFrame(dc, frames.middle, kMiddleColor);
    DrawFrame(dc, frames.scale, kOuterColor);
}

// Labels give the angle from the nearer end, the same for both gauges.
void InclineGauge::DrawTicks(CDC& dc) const
{
    CPen pen(PS_SOLID, kRingPen, kTickColor);
    CFont font;
    MakeLabelFont(font);
    const Selected usePen(dc, pen);
    const Selected useFont(dc, font);
    dc.SetBkMode(TRANSPARENT);
    dc.SetTextColor(kLabelColor);

    const CRect& scale = frames.scale;
    const double step = scale.Height() / static_cast<double>(kSteps);
    for (int i = 1; i < kSteps; ++i) {
        const int y = ToPixel(scale.bottom - step * i);
        const bool isMajor = i % 3 == 0;
        const int length = isMajor ? kMajorTick : kMinorTick;
        DrawSegment(dc, {scale.left, y}, {scale.left + length, y});
        DrawSegment(dc, {scale.right - length, y}, {scale.right, y});
        if (isMajor)
            DrawLabel(dc, {scale.left + kMajorTick + kLabelHalf, y + kLabelHalf / 2},
                      i <= kSteps / 2 ? 10 * i : 180 - 10 * i);
    }
}

void InclineGauge::DrawPointer(CDC& dc, const GaugeScale& scale, double angle) const
{
    CPen pen(PS_SOLID, 2, face.needleColor);
    const Selected usePen(dc, pen);
    const int y = scale.RowOf(angle, frames.scale);
    DrawSegment(dc, {frames.scale.left, y}, {frames.scale.right, y});
}

void InclineGauge::DrawFixes(CDC& dc, const GaugeScale& scale) const
{
    for (INT_PTR i = 0; i < face.fixes.GetSize(); ++i)
        DrawFix(dc, scale, face.fixes.GetAt(i));
}

void InclineGauge::DrawFix(CDC& dc, const GaugeScale& scale, int angle) const
{
    CPen pen(PS_SOLID, kFixPen, kFixColor);
    const Selected usePen(dc, pen);
    const int y = scale.RowOf(angle, frames.scale);
    DrawSegment(dc, {frames.middle.left, y}, {frames.scale.left, y});
}

} // namespace tiltpole::controls
