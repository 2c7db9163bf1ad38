// SPDX-License-Identifier: MIT
/// @class CGraphMagnetic_XZ
/// Plots the magnetometer samples of the vertical turn while it is recorded, the third component
/// against the first. Every sample is a cross, every computed center a red cross.
///
/// The view zooms to fit when more than ten samples have fallen outside it, and is saved between
/// runs in GraphMagnetic_XZ.cfg beside the running module.
///
///     CGraphMagnetic_XZ plot;
///     plot.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(10, 10, 260, 260),
///                 &dialog, IDC_TURN);
///     plot.AddTrackPoint(120, -340, 85); // raw counts: x, y, z
#pragma once

#include "controls/MagneticPlotPoint.h"
#include "controls/plot/ScatterPlot.h"

#include "framework/core/Export.h"
#include "framework/gui/Wnd.h"

class TILTPOLE_API CGraphMagnetic_XZ : public CWnd
{
    DECLARE_DYNAMIC(CGraphMagnetic_XZ)

public:
    /// Starts with the saved view if there is one.
    CGraphMagnetic_XZ();
    ~CGraphMagnetic_XZ() override;

    /// Creates the window with a client and a static edge, and the layers that it shows. Class name,
    /// window name and context are ignored. A window made by CreateEx or taken over by subclassing
    /// has no layers and is black until Clear.
    /// @return always TRUE, even if the window could not be created
    BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect, CWnd* parent,
                UINT id, CCreateContext* context = nullptr) override;

    /// Adds a sample [counts] and draws it; the eleventh one outside the view triggers ZoomAll.
    void AddTrackPoint(int a, int b, int c);
    /// Adds a center [counts] and draws it; centers never change the view.
    void AddCenterPoint(int a, int b, int c);
    /// Removes all samples and centers and keeps the view.
    void Clear();
    /// Fits the view to the samples and saves it. Needs two samples and a nonempty client area.
    void ZoomAll();

    /// Distance between two pixels, truncated toward zero.
    int GetDistance(CPoint p, CPoint q);

    /// @{ Draws every sample or center as a cross. Nothing is drawn without a context.
    void DrawTrackPoints(CDC* dc);
    void DrawCenterPoints(CDC* dc);
    /// @}

protected:
    /// Redraws both layers for the current client area; a new size takes effect here.
    void InvalidateCtrl();
    afx_msg void OnPaint();

    /// FALSE if the view file could not be written; the old file is then intact.
    BOOL ConfigSave();
    /// Loads the view from its file; FALSE if the file could not be opened.
    BOOL ConfigRead();

    /// Counts to pixels, y pointing up; (0, 0) for a scale below 1e-6.
    void WorldToClient(long wx, long wy, long& cx, long& cy);
    /// Pixels to counts. The column is read from `wx` on entry; `cx` is ignored.
    void ClientToWorld(long cx, long cy, long& wx, long& wy);

    DECLARE_MESSAGE_MAP()

private:
    tiltpole::controls::ScatterPlot m_plot;
};
