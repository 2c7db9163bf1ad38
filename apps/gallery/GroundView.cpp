// SPDX-License-Identifier: MIT
#include "apps/gallery/GroundView.h"

#include <algorithm>
#include <cstdlib>

namespace gallery {
namespace {

constexpr long kReach = 4; // pixels from the middle of a cross
constexpr int kInset = 4;  // pixels

} // namespace

int HoverGraph::ObservationAt(CPoint at)
{
    int nearest = 0;
    long least = kReach + 1;
    for (INT_PTR i = 0; i < m_points.GetSize(); ++i) {
        long x = 0;
        long y = 0;
        WorldToClient(m_points[i].dX, m_points[i].dY, x, y);
        const long distance = std::max(std::labs(x - at.x), std::labs(y - at.y));
        if (distance >= least) continue;
        least = distance;
        nearest = static_cast<int>(i) + 1;
    }
    return nearest;
}

CString HoverGraph::Describe(int observation) const
{
    CString text;
    if (observation < 1 || observation > m_points.GetSize()) return text;
    const TiltPoint_Sensor& point = m_points[observation - 1];
    text.Format(L"observation %d:  N %.3f  E %.3f  H %.3f m", observation, point.dX, point.dY,
                point.dH);
    return text;
}

BEGIN_MESSAGE_MAP(GroundView, CView)
ON_WM_MOUSEMOVE()
ON_WM_MOUSELEAVE()
END_MESSAGE_MAP()

void GroundView::Renew()
{
    m_hovered = 0;
    graph.emplace();
    graph->SetView(this);
    graph->InvalidateCtrl();
}

void GroundView::Show()
{
    if (!graph) return;
    graph->ReDraw();
    const CString text = graph->Describe(m_hovered);
    if (text.IsEmpty()) return;
    CClientDC dc(this);
    dc.SetTextColor(RGB(255, 255, 255));
    dc.SetBkColor(RGB(0, 0, 0));
    dc.TextOut(kInset, kInset, text);
}

void GroundView::OnDraw(CDC*)
{
    Show();
}

void GroundView::Hover(int observation)
{
    if (observation == m_hovered) return;
    m_hovered = observation;
    Show();
}

void GroundView::OnMouseMove(UINT, CPoint point)
{
    TRACKMOUSEEVENT request{sizeof(TRACKMOUSEEVENT), TME_LEAVE, GetSafeHwnd(), 0};
    TrackMouseEvent(&request);
    if (graph) Hover(graph->ObservationAt(point));
}

void GroundView::OnMouseLeave()
{
    Hover(0);
}

} // namespace gallery
