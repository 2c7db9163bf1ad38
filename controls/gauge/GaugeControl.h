// SPDX-License-Identifier: MIT
/// @class tiltpole::controls::GaugeControl
/// The shared implementation of both incline gauges: the operations of the exported classes, given
/// the control's window and its scale.
#pragma once

#include "controls/gauge/InclineGauge.h"

#include "framework/gui/Static.h"

namespace tiltpole::controls {

class GaugeControl
{
public:
    GaugeControl(CStatic& window, const GaugeScale& scale) : m_window(window), m_scale(scale) {}

    void SetValue(double angle);
    void SetFix(int angle);
    void ClearFix();
    void SetBackColor(COLORREF color);
    void Reconstruct();
    void TakeWindow() { m_gauge.face.TakeWindow(m_window); }
    void Paint();
    void DrawBackground(CDC* dc, const CRect& rect);
    void DrawPointer(CDC* dc, double angle) const;
    void DrawFixSign(CDC* dc) const;

    const MeterFace& Face() const { return m_gauge.face; }

private:
    void Compose(CDC& target);

    CStatic& m_window;
    const GaugeScale& m_scale;
    InclineGauge m_gauge;
};

} // namespace tiltpole::controls
