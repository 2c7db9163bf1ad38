// SPDX-License-Identifier: MIT
//
// The window of the gallery: dial and gauges follow the pole, the plots and the tilt graph fill.
#pragma once

#include "apps/gallery/Replay.h"

#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "controls/TiltPositionGraph.h"
#include "framework/gui/gui.h"

#include <vector>

namespace gallery {

/// A view that shows the tilt graph when it is painted.
class GroundView : public CView
{
public:
    CTiltPositionGraph graph;

protected:
    void OnDraw(CDC* dc) override;
};

class Frame : public CWnd
{
public:
    explicit Frame(std::vector<ReplaySample> replay);

    /// Creates and shows the window; false without a windowing system.
    bool Open();

    /// Shows the next samples; false at the end of the recording.
    bool Step(int samples);

protected:
    afx_msg void OnTimer(UINT_PTR id);
    afx_msg void OnPaint();

    DECLARE_MESSAGE_MAP()

private:
    void Show(const ReplaySample& sample);
    void AddObservation(const ReplaySample& sample);

    std::vector<ReplaySample> m_replay;
    std::size_t m_next = 0;
    std::vector<xyhCoordinate> m_observed;
    CGraphCompass m_dial;
    CGraphIncline_Left m_left;
    CGraphIncline_Right m_right;
    CGraphMagnetic_XY m_horizontal;
    CGraphMagnetic_XZ m_vertical;
    GroundView m_ground;
    CStatic m_caption;
};

} // namespace gallery
