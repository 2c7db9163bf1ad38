// SPDX-License-Identifier: MIT
#include "controls/GraphMagnetic_XZ.h"

IMPLEMENT_DYNAMIC(CGraphMagnetic_XZ, CWnd)

BEGIN_MESSAGE_MAP(CGraphMagnetic_XZ, CWnd)
ON_WM_PAINT()
END_MESSAGE_MAP()

CGraphMagnetic_XZ::CGraphMagnetic_XZ() : m_plot(*this, tiltpole::controls::kPlaneXZ) {}
CGraphMagnetic_XZ::~CGraphMagnetic_XZ() = default;

BOOL CGraphMagnetic_XZ::Create(LPCTSTR, LPCTSTR, DWORD style, const RECT& rect, CWnd* parent,
                               UINT id, CCreateContext*)
{
    m_plot.CreateWindow(style, rect, parent, id);
    return TRUE;
}

void CGraphMagnetic_XZ::AddTrackPoint(int a, int b, int c)
{
    m_plot.AddTrackPoint({a, b, c});
}
void CGraphMagnetic_XZ::AddCenterPoint(int a, int b, int c)
{
    m_plot.AddCenterPoint({a, b, c});
}
void CGraphMagnetic_XZ::Clear()
{
    m_plot.Clear();
}
void CGraphMagnetic_XZ::ZoomAll()
{
    m_plot.ZoomAll();
}
int CGraphMagnetic_XZ::GetDistance(CPoint p, CPoint q)
{
    return tiltpole::controls::PixelDistance(p, q);
}
void CGraphMagnetic_XZ::DrawTrackPoints(CDC* dc)
{
    m_plot.DrawTrackPoints(dc);
}
void CGraphMagnetic_XZ::DrawCenterPoints(CDC* dc)
{
    m_plot.DrawCenterPoints(dc);
}
void CGraphMagnetic_XZ::InvalidateCtrl()
{
    m_plot.RebuildLayers();
}
void CGraphMagnetic_XZ::OnPaint()
{
    m_plot.Paint();
}
BOOL CGraphMagnetic_XZ::ConfigSave()
{
    return m_plot.SaveView();
}
BOOL CGraphMagnetic_XZ::ConfigRead()
{
    return m_plot.ReadView();
}

void CGraphMagnetic_XZ::WorldToClient(long wx, long wy, long& cx, long& cy)
{
    m_plot.View().ToClient(m_plot.Client(), wx, wy, cx, cy);
}

void CGraphMagnetic_XZ::ClientToWorld(long, long cy, long& wx, long& wy)
{
    m_plot.View().ToWorld(m_plot.Client(), cy, wx, wy);
}
