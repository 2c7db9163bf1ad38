// SPDX-License-Identifier: MIT
#include "controls/GraphMagnetic_XY.h"

IMPLEMENT_DYNAMIC(CGraphMagnetic_XY, CWnd)

BEGIN_MESSAGE_MAP(CGraphMagnetic_XY, CWnd)
ON_WM_PAINT()
END_MESSAGE_MAP()

CGraphMagnetic_XY::CGraphMagnetic_XY() : m_plot(*this, tiltpole::controls::kPlaneXY) {}
CGraphMagnetic_XY::~CGraphMagnetic_XY() = default;

BOOL CGraphMagnetic_XY::Create(LPCTSTR, LPCTSTR, DWORD style, const RECT& rect, CWnd* parent,
                               UINT id, CCreateContext*)
{
    m_plot.CreateWindow(style, rect, parent, id);
    return TRUE;
}

void CGraphMagnetic_XY::AddTrackPoint(int a, int b, int c)
{
    m_plot.AddTrackPoint({a, b, c});
}
void CGraphMagnetic_XY::AddCenterPoint(int a, int b, int c)
{
    m_plot.AddCenterPoint({a, b, c});
}
void CGraphMagnetic_XY::Clear()
{
    m_plot.Clear();
}
void CGraphMagnetic_XY::ZoomAll()
{
    m_plot.ZoomAll();
}
int CGraphMagnetic_XY::GetDistance(CPoint p, CPoint q)
{
    return tiltpole::controls::PixelDistance(p, q);
}
void CGraphMagnetic_XY::DrawTrackPoints(CDC* dc)
{
    m_plot.DrawTrackPoints(dc);
}
void CGraphMagnetic_XY::DrawCenterPoints(CDC* dc)
{
    m_plot.DrawCenterPoints(dc);
}
void CGraphMagnetic_XY::InvalidateCtrl()
{
    m_plot.RebuildLayers();
}
void CGraphMagnetic_XY::OnPaint()
{
    m_plot.Paint();
}
BOOL CGraphMagnetic_XY::ConfigSave()
{
    return m_plot.SaveView();
}
BOOL CGraphMagnetic_XY::ConfigRead()
{
    return m_plot.ReadView();
}

void CGraphMagnetic_XY::WorldToClient(long wx, long wy, long& cx, long& cy)
{
    m_plot.View().ToClient(m_plot.Client(), wx, wy, cx, cy);
}

void CGraphMagnetic_XY::ClientToWorld(long, long cy, long& wx, long& wy)
{
    m_plot.View().ToWorld(m_plot.Client(), cy, wx, wy);
}
