// SPDX-License-Identifier: MIT
/// @class CGraphCompass
/// A heading on a round compass dial: rings, 36 ticks with twelve numbers, a red needle, and green
/// marks at fixed headings. 0 is at the top; headings increase clockwise, in degrees.
///
/// Put it on a dialog by SubclassDlgItem over a static control, then feed it with SetValue:
///
///     CGraphCompass dial;
///     dial.SubclassDlgItem(IDC_DIAL, &dialog);
///     dial.SetValue(sample.dYaw);
#pragma once

#include "controls/dial/DialGeometry.h"
#include "controls/drawing/MeterFace.h"

#include "framework/core/Export.h"
#include "framework/gui/Static.h"

class TILTPOLE_API CGraphCompass : public CStatic
{
    DECLARE_DYNAMIC(CGraphCompass)

public:
    CGraphCompass();
    ~CGraphCompass() override;

    /// Stores the heading [degrees] unchanged, whatever its range, and redraws at once if the dial
    /// has been painted before.
    void SetValue(double degrees);
    double GetValue() const;

    /// Color of the control around the dial; the background is drawn again at the next paint.
    void SetMeterBackColor(COLORREF color);
    COLORREF GetMeterBackColor() const;

    /// Makes the next paint redraw the background in the current size of the control. Call it after
    /// every change of size.
    void ReconstructControl();

    /// Marks a heading in whole degrees and draws the mark at once. A heading marked already is
    /// ignored; 10 and 370 count as two marks at the same place. All marks are drawn
    /// with one device context, which the control keeps until its window ends.
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

    tiltpole::controls::MeterFace m_face;
    tiltpole::controls::DialRings m_rings; // of the last background

private:
    void Compose(CDC& target);
    void DrawRings(CDC& dc) const;
    void DrawTicks(CDC& dc) const;
};
