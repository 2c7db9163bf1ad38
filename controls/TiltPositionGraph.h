// SPDX-License-Identifier: MIT
/// @class CTiltPositionGraph
/// The antenna positions of the multi-position solution, drawn on a view of the host: every
/// observation a white cross, up to three marked centers as circles of 0.15 m joined by lines, and
/// the current observation as a red circle with a cross.
///
/// Northing (x) points up, easting (y) right. The graph zooms to fit the observations. Members that
/// draw immediately say so; the host calls ReDraw when its view paints.
///
///     CTiltPositionGraph graph;
///     graph.SetView(&view); // a CView of the host
///     graph.InvalidateCtrl();
///     graph.AddPoint(observation); // a TiltPoint_Sensor, meters
#pragma once

#include "controls/drawing/Layers.h"
#include "controls/tilt/TiltView.h"

#include "framework/core/Array.h"
#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "framework/gui/View.h"
#include "geometry/TiltPoint.h"

class TILTPOLE_API CTiltPositionGraph
{
public:
    CTiltPositionGraph();
    virtual ~CTiltPositionGraph();
    CTiltPositionGraph(const CTiltPositionGraph&) = delete;
    CTiltPositionGraph& operator=(const CTiltPositionGraph&) = delete;

    /// Sets the view to draw on, which is not owned; nothing is drawn yet.
    void SetView(CView* view);

    /// Adds an observation. One inside the picture is shown at once, and the view zooms at the 2nd,
    /// 4th, 6th, 8th, 10th, 15th ... 30th, 40th, 50th, 60th, 120th ...; one outside zooms the view
    /// and is shown at the next ReDraw.
    void AddPoint(TiltPoint_Sensor point);
    /// Marks center 1, 2 or 3 and draws its circle at once if it is set and confirmed. Ignored for
    /// any other index, or without a view.
    void SetCenterPoint(int index, TiltPoint_Sensor point);
    /// Removes observations and centers; keeps the current observation and the view.
    void Clear();

    /// Fits the view to the observations and redraws the layers without showing them. With several
    /// observations the view is kept while the client area is empty.
    void ZoomAll();
    /// Redraws both layers. Does nothing without a view.
    void InvalidateCtrl();
    /// @{ Shows the layers. Does nothing below 10 x 10 pixels.
    void DrawAll();
    void ReDraw();
    /// @}

    /// @{ Drawing steps. Nothing is drawn without a context.
    void DrawPoints(CDC* dc);
    /// The circles of all centers that are set: green if confirmed, otherwise red.
    void DrawCircles(CDC* dc);
    /// The lines between confirmed centers.
    void DrawLinkLine(CDC* dc);
    /// The lines from centers to `point`, while not all three centers are confirmed.
    void DrawLinkDistance(CDC* dc, TiltPoint_Sensor point);
    /// The circle of a center that is set and confirmed.
    void DrawCircle(CDC* dc, TiltPoint_Sensor point);
    /// A circle of trunc(2·radius·π) chords, drawn with the context's pen. The radius is limited to
    /// 65536.
    void DrawCircle(CDC* dc, POINT center, int radius);
    /// @}

    /// Makes `point` the current observation and draws it, on the view if there is no context.
    void DrawCurrentPt(CDC* dc, TiltPoint_Sensor point);

protected:
    /// (0, 0) for a scale below 1e-6.
    void WorldToClient(double x, double y, long& cx, long& cy);
    /// The first argument is the row, the second the column.
    void ClientToWorld(long row, long column, double& x, double& y);

    CRect m_client;
    tiltpole::controls::Layers m_layers;
    tiltpole::controls::TiltView m_world;
    CString m_spareText; // never read
    TiltPoint_Sensor m_current;
    CArray<TiltPoint_Sensor> m_points;
    CView* m_view = nullptr;
    COLORREF m_backColor = RGB(0, 0, 0);
    COLORREF m_axisColor = RGB(56, 104, 169);
    COLORREF m_reservedColor = RGB(0, 0, 255); // never read
    COLORREF m_textColor = RGB(122, 122, 122);
    TiltPoint_Sensor m_centers[3];

private:
    CPoint PixelOf(const TiltPoint_Sensor& point) const;
    void DrawCenter(CDC& dc, const TiltPoint_Sensor& center, COLORREF color);
    void DrawLine(CDC& dc, const TiltPoint_Sensor& from, const TiltPoint_Sensor& to,
                  COLORREF color) const;
    void DrawPointsLayer();
    void ShowLast();
};
