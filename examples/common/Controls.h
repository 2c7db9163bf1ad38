// SPDX-License-Identifier: MIT
//
// The controls of both example hosts: they draw themselves anew in every size that they get.
#pragma once

#include "Replay.h"

#include "controls/GraphCompass.h"
#include "controls/GraphIncline_Left.h"
#include "controls/GraphIncline_Right.h"
#include "controls/GraphMagnetic_XY.h"
#include "controls/GraphMagnetic_XZ.h"
#include "controls/TiltPositionGraph.h"
#include "framework/gui/gui.h"

#include <cmath>
#include <vector>

// The pictures of a plot and of the tilt graph keep the size of their first use: windows are made
// as large as they may ever be and then placed.
inline const CRect kLargest(0, 0, 1600, 1200);

/// A dial or gauge.
template <class Meter>
class FollowingMeter : public Meter
{
protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        const LRESULT result = Meter::WindowProc(message, wParam, lParam);
        if (message == WM_SIZE) this->ReconstructControl();
        return result;
    }
};

/// A plot.
template <class Plot>
class FollowingPlot : public Plot
{
protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        const LRESULT result = Plot::WindowProc(message, wParam, lParam);
        if (message == WM_SIZE) {
            this->InvalidateCtrl();
            this->ZoomAll();
        }
        return result;
    }
};

/// The view of the tilt graph.
class GroundView : public CView
{
public:
    CTiltPositionGraph m_graph;

protected:
    void OnDraw(CDC*) override { m_graph.ReDraw(); }

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        const LRESULT result = CView::WindowProc(message, wParam, lParam);
        if (message == WM_SIZE) {
            m_graph.SetView(this);
            m_graph.InvalidateCtrl();
            m_graph.ZoomAll();
        }
        return result;
    }
};

/// All of them, and what a sample shows on them.
struct Controls
{
    FollowingMeter<CGraphCompass> dial;
    FollowingMeter<CGraphIncline_Left> left;
    FollowingMeter<CGraphIncline_Right> right;
    FollowingPlot<CGraphMagnetic_XY> horizontal;
    FollowingPlot<CGraphMagnetic_XZ> vertical;
    GroundView ground;

    void Show(const replay::Sample& sample)
    {
        const PoseSensorData& pose = sample.pose;
        dial.SetValue(pose.dYaw);
        left.SetValue(90.0 + pose.dPitch);
        right.SetValue(270.0 + pose.dRoll);
        const int a = static_cast<int>(std::lround(pose.dMag_x));
        const int b = static_cast<int>(std::lround(pose.dMag_y));
        const int c = static_cast<int>(std::lround(pose.dMag_z));
        horizontal.AddTrackPoint(a, b, c);
        vertical.AddTrackPoint(a, b, c);
        ShowAntenna(sample.antenna);
    }

private:
    // Observations keep 0.15 m from each other, as the multi-position solution requires.
    void ShowAntenna(const xyhCoordinate& antenna)
    {
        TiltPoint_Sensor point;
        point.nSet = 1;
        point.dX = antenna.x;
        point.dY = antenna.y;
        point.dH = antenna.h;
        bool isApart = true;
        for (const xyhCoordinate& known : m_observed)
            isApart = isApart && std::hypot(known.x - antenna.x, known.y - antenna.y) >= 0.15;
        if (isApart) {
            m_observed.push_back(antenna);
            ground.m_graph.AddPoint(point);
        }
        ground.m_graph.DrawCurrentPt(nullptr, point);
        ground.m_graph.InvalidateCtrl(); // removes the previous mark
        ground.m_graph.ReDraw();
    }

    std::vector<xyhCoordinate> m_observed;
};
