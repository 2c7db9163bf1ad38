// SPDX-License-Identifier: MIT
//
// The window of the gallery: dial and gauges follow the pole, the plots and the tilt graph fill.
// Space pauses, the arrow keys step, Esc closes the window; the tilt graph tells the observation
// under the mouse.
#pragma once

#include "apps/gallery/GroundView.h"
#include "apps/gallery/Replay.h"

#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "framework/gui/gui.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace gallery {

class Frame : public CWnd
{
public:
    /// The controls, by their ids.
    enum Id : UINT { kDial = 1, kLeft, kRight, kHorizontal, kVertical, kGround, kCaption };
    enum class Key { Pause, Back, Forward, Close };

    static constexpr int kWidth = 980; // usual size, pixels
    static constexpr int kHeight = 610;

    explicit Frame(std::vector<ReplaySample> replay);

    /// Creates and shows the window, `scale` times its usual size; false without a windowing
    /// system.
    bool Open(double scale = 1.0);

    /// Shows the next samples; false at the end of the recording.
    bool Step(int samples);

    void Press(Key key);

    /// Draws everything in the present size of the window. A new size does it after a moment.
    void Rebuild();

    /// The number of samples that are shown.
    std::size_t Position() const { return m_next; }
    bool IsPaused() const { return m_paused; }

protected:
    afx_msg void OnTimer(UINT_PTR id);
    afx_msg void OnPaint();
    afx_msg void OnSize(UINT type, int width, int height);

    DECLARE_MESSAGE_MAP()

private:
    void Place();
    void MakePlots();
    void Pause(bool paused);
    void Back();
    void Collect(std::size_t index);
    void AddObservation(const ReplaySample& sample);
    void ShowCurrent();

    std::vector<ReplaySample> m_replay;
    std::size_t m_next = 0;
    bool m_paused = false;
    std::vector<xyhCoordinate> m_observed;
    CGraphCompass m_dial;
    CGraphIncline_Left m_left;
    CGraphIncline_Right m_right;
    std::optional<CGraphMagnetic_XY> m_horizontal;
    std::optional<CGraphMagnetic_XZ> m_vertical;
    GroundView m_ground;
    CStatic m_caption;
};

} // namespace gallery
