// SPDX-License-Identifier: MIT
//
// The magnetometer samples of the vertical turn while it is recorded: the third component over the
// first, every sample a cross, every computed center a red one.
//
// The view zooms itself to the samples when more than ten have fallen outside it, and is kept
// between runs in GraphMagnetic_XZ.cfg beside the running module.
//
//   CGraphMagnetic_XZ plot;
//   plot.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(10, 10, 260, 260),
//               &dialog, IDC_TURN);
//   plot.AddTrackPoint(120, -340, 85); // raw counts: x, y, z
#pragma once

#include "controls/MagneticPlotPoint.h"
#include "controls/plot/ScatterPlot.h"

#include "framework/core/Export.h"
#include "framework/gui/Wnd.h"

class TILTPOLE_API CGraphMagnetic_XZ : public CWnd
{
    DECLARE_DYNAMIC(CGraphMagnetic_XZ)

public:
    /// Begins with the stored view where there is one.
    CGraphMagnetic_XZ();
    ~CGraphMagnetic_XZ() override;

    /// Makes the window with a client and a static edge. Class and window name and the context are
    /// not used.
    /// @return TRUE in every case, even when the window could not be made
    BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect, CWnd* parent,
                UINT id, CCreateContext* context = nullptr) override;

    /// Adds a sample [counts] and draws it; the eleventh outside the view zooms.
    void AddTrackPoint(int a, int b, int c);
    /// Adds a center [counts] and draws it; centers never zoom.
    void AddCenterPoint(int a, int b, int c);
    /// Removes all samples and centers; the view stays.
    void Clear();
    /// Fits the view to the samples and stores it; nothing below two samples or without area.
    void ZoomAll();

    /// Distance of two pixels, cut toward zero.
    int GetDistance(CPoint p, CPoint q);

    /// @{ Draws every sample or center as a cross; nothing without a context.
    void DrawTrackPoints(CDC* dc);
    void DrawCenterPoints(CDC* dc);
    /// @}

protected:
    /// Draws both layers again for the client area as it is now; a new size counts from then on.
    void InvalidateCtrl();
    afx_msg void OnPaint();

    /// FALSE when the view file could not be written; the old one is then whole.
    BOOL ConfigSave();
    /// Takes over what the view file holds; FALSE when it could not be opened.
    BOOL ConfigRead();

    /// Counts to pixels, y upwards; (0, 0) for a scale below 1e-6.
    void WorldToClient(long wx, long wy, long& cx, long& cy);
    /// Pixels to counts. The column is taken from what `wx` holds when called, not from `cx`.
    void ClientToWorld(long cx, long cy, long& wx, long& wy);

    DECLARE_MESSAGE_MAP()

private:
    tiltpole::controls::ScatterPlot m_plot;
};
