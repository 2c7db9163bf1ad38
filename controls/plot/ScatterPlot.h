// SPDX-License-Identifier: MIT
/// @class tiltpole::controls::ScatterPlot
/// The shared implementation of the scatter plots of calibration samples: the operations of the
/// exported classes, given the window and the plane that is plotted.
#pragma once

#include "controls/MagneticPlotPoint.h"
#include "controls/drawing/Layers.h"
#include "controls/plot/PlotView.h"

#include "framework/core/Array.h"
#include "framework/gui/Wnd.h"

#include <cstdint>

namespace tiltpole::controls {

/// Everything in which the two plots differ.
struct PlotPlane
{
    std::int32_t MagneticPlotPoint::*vertical; // the first component is always the horizontal one
    wchar_t verticalLetter;
    COLORREF trackColor;
    PlotView view; // until a saved one is read
    const char* key;
    const wchar_t* wideKey;
    const wchar_t* fileName;
    const wchar_t* windowClass;
};

extern const PlotPlane kPlaneXY;
extern const PlotPlane kPlaneXZ;

class ScatterPlot
{
public:
    ScatterPlot(CWnd& window, const PlotPlane& plane);

    void CreateWindow(DWORD style, const RECT& rect, const CWnd* parent, UINT id);
    void AddTrackPoint(const MagneticPlotPoint& point);
    void AddCenterPoint(const MagneticPlotPoint& point);
    void Clear();
    void ZoomAll();
    void DrawTrackPoints(CDC* dc) const;
    void DrawCenterPoints(CDC* dc) const;
    void RebuildLayers();
    void Paint();
    bool SaveView() const;
    bool ReadView();

    const CRect& Client() const { return m_client; }
    const PlotView& View() const { return m_view; }

private:
    CPoint PixelOf(const MagneticPlotPoint& point) const;
    bool DrawOnPoints(const MagneticPlotPoint& point, COLORREF color);
    void DrawCrosses(CDC* dc, const CArray<MagneticPlotPoint>& points, COLORREF color) const;
    CString ViewPath() const;

    CWnd& m_window;
    const PlotPlane& m_plane;
    CRect m_client; // when the layers were last drawn
    Layers m_layers;
    PlotView m_view;
    int m_outside = 0; // track points out of view since the last zoom
    CString m_moduleFolder;
    CArray<MagneticPlotPoint> m_track;
    CArray<MagneticPlotPoint> m_centers;
};

/// The Euclidean distance between two pixels, truncated toward zero.
int PixelDistance(CPoint p, CPoint q);

} // namespace tiltpole::controls
