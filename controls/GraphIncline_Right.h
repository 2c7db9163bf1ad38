// SPDX-License-Identifier: MIT
/// @class CGraphIncline_Right
/// An angle of 180 to 360 degrees on a vertical scale: ticks every ten degrees, a red pointer line,
/// green marks at fixed angles. 180 is at the top, 360 at the bottom.
///
/// Values outside the range are ignored. Otherwise the gauge works like CGraphCompass.
///
///     CGraphIncline_Right gauge;
///     gauge.SubclassDlgItem(IDC_GAUGE, &dialog);
///     gauge.SetValue(270.0 + sample.dRoll); // degrees
#pragma once

#include "controls/gauge/GaugeControl.h"

#include "framework/core/Export.h"
#include "framework/gui/Static.h"

class TILTPOLE_API CGraphIncline_Right : public CStatic
{
    DECLARE_DYNAMIC(CGraphIncline_Right)

public:
    CGraphIncline_Right();
    ~CGraphIncline_Right() override;

    /// Stores the angle [degrees, 180 to 360 inclusive] and redraws at once if the gauge has been
    /// painted before. Any other angle is ignored.
    void SetValue(double degrees);
    double GetValue() const;

    /// Color around the frames; the background is drawn again at the next paint.
    void SetMeterBackColor(COLORREF color);
    COLORREF GetMeterBackColor() const;

    /// Makes the next paint redraw the background in the current size of the control.
    void ReconstructControl();

    /// Marks an angle in whole degrees and draws the mark at once. An angle that is out of range or
    /// marked already is ignored. All marks are drawn with one device
    /// context, which the control keeps until its window ends.
    void SetFix(int degrees);
    /// Removes all marks; they vanish at the next paint.
    void ClearFix();

    /// @{ Drawing steps. Nothing is drawn without a context.
    void DrawBackground(CDC* dc, CRect& rect);
    void DrawPointer(CDC* dc, double degrees);
    void DrawFixSign(CDC* dc);
    /// @}

    void PreSubclassWindow() override;

    afx_msg void OnPaint();
    /// FALSE: the background is part of every paint.
    afx_msg BOOL OnEraseBkgnd(CDC* dc);

protected:
    DECLARE_MESSAGE_MAP()

    tiltpole::controls::GaugeControl m_gauge;
};
