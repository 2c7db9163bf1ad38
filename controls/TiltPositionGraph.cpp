// SPDX-License-Identifier: MIT
#include "controls/TiltPositionGraph.h"

#include "controls/drawing/Pixel.h"
#include "controls/drawing/Segment.h"
#include "framework/gui/Borrowed.h"
#include "framework/gui/Selected.h"
#include "survey/Angle.h"

#include <algorithm>
#include <cmath>
#include <utility>

using framework::Borrowed;
using framework::Selected;
using tiltpole::controls::DrawSegment;
using tiltpole::controls::Shifted;
using tiltpole::controls::ToInt;
using tiltpole::controls::ToPixel;

namespace {

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kGreen = RGB(0, 255, 0);
constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr int kMarkPen = 2;            // pixels
constexpr int kCurrentRadius = 8;      // pixels
constexpr int kAxisInset = 10;         // pixels
constexpr int kSmallestClient = 10;    // pixels per side
constexpr int kLargestRadius = 65536;  // pixels; more chords than a picture can show
constexpr double kCenterRadius = 0.15; // meters
constexpr double kSingleScale = 0.01;  // meters per pixel

bool IsConfirmed(const TiltPoint_Sensor& point)
{
    return point.nSet != 0 && point.nConfirmed != 0;
}

} // namespace

CTiltPositionGraph::CTiltPositionGraph() = default;
CTiltPositionGraph::~CTiltPositionGraph() = default;

void CTiltPositionGraph::SetView(CView* view)
{
    m_view = view;
}

void CTiltPositionGraph::WorldToClient(double x, double y, long& cx, long& cy)
{
    m_world.ToClient(m_client, x, y, cx, cy);
}

void CTiltPositionGraph::ClientToWorld(long row, long column, double& x, double& y)
{
    m_world.ToWorld(m_client, row, column, x, y);
}

CPoint CTiltPositionGraph::PixelOf(const TiltPoint_Sensor& point) const
{
    long x = 0;
    long y = 0;
    m_world.ToClient(m_client, point.dX, point.dY, x, y);
    return {static_cast<int>(x), static_cast<int>(y)};
}

void CTiltPositionGraph::AddPoint(TiltPoint_Sensor point)
{
    const INT_PTR added = m_points.Add(point);
    const tiltpole::controls::TiltView world = m_world;
    try {
        ShowLast();
    } catch (...) {
        m_points.RemoveAt(added);
        m_world = world;
        m_layers.isUnfinished = true;
        throw;
    }
}

void CTiltPositionGraph::ShowLast()
{
    const CPoint at = PixelOf(m_points[m_points.GetUpperBound()]);
    if (!m_client.PtInRect(at)) {
        ZoomAll();
        return;
    }
    {
        CPen pen(PS_SOLID, kMarkPen, kWhite);
        const Selected usePen(m_layers.points.dc, pen);
        tiltpole::controls::DrawCross(m_layers.points.dc, at);
    }
    ReDraw();
    if (tiltpole::controls::ZoomsAt(static_cast<int>(m_points.GetSize()))) {
        ZoomAll();
        return;
    }
    InvalidateCtrl();
    ReDraw();
}

void CTiltPositionGraph::SetCenterPoint(int index, TiltPoint_Sensor point)
{
    const Borrowed context(m_view);
    if (!context || index < 1 || index > 3) return;
    DrawCircle(context.Get(), point);
    m_centers[index - 1] = std::move(point);
}

void CTiltPositionGraph::Clear()
{
    m_points.RemoveAll();
    for (TiltPoint_Sensor& center : m_centers) {
        center.nSet = 0;
        center.nConfirmed = 0;
    }
    InvalidateCtrl();
    ReDraw();
}

void CTiltPositionGraph::ZoomAll()
{
    if (m_points.IsEmpty()) return;
    const TiltPoint_Sensor& first = m_points[0];
    if (m_points.GetSize() == 1) {
        m_world.scale = kSingleScale;
        m_world.originX = first.dX - m_client.Height() * kSingleScale / 2;
        m_world.originY = first.dY - m_client.Width() * kSingleScale / 2;
    } else if (!m_client.IsRectEmpty()) {
        tiltpole::controls::TiltExtent extent{first.dX, first.dX, first.dY, first.dY};
        for (INT_PTR i = 1; i < m_points.GetSize(); ++i)
            extent.Include(m_points[i].dX, m_points[i].dY);
        m_world = extent.FitInto(m_client);
    }
    InvalidateCtrl();
}

void CTiltPositionGraph::InvalidateCtrl()
{
    const Borrowed context(m_view);
    if (!context) return;
    m_layers.isUnfinished = true;
    m_view->GetClientRect(&m_client);
    m_layers.grid.Refill(*context, m_client, m_backColor);
    const tiltpole::controls::AxisGlyph axes{
        {m_client.left + kAxisInset, m_client.bottom - kAxisInset},
        m_axisColor,
        m_textColor,
        L'x',
        L'y'
    };
    axes.Draw(m_layers.grid.dc);
    m_layers.points.Refill(*context, m_client, m_backColor);
    DrawPointsLayer();
    m_layers.isUnfinished = false;
}

void CTiltPositionGraph::DrawPointsLayer()
{
    CDC* const dc = &m_layers.points.dc;
    DrawPoints(dc);
    DrawCircles(dc);
    DrawLinkLine(dc);
    if (!m_points.IsEmpty()) DrawLinkDistance(dc, m_points[m_points.GetUpperBound()]);
    if (m_current.nSet != 0) DrawCurrentPt(dc, m_current);
}

void CTiltPositionGraph::DrawAll()
{
    if (m_layers.isUnfinished) InvalidateCtrl();
    const Borrowed context(m_view);
    if (!context) return;
    m_view->GetClientRect(&m_client);
    if (m_client.Width() < kSmallestClient || m_client.Height() < kSmallestClient) return;
    m_layers.Present(*context, m_client, [](CDC&) {});
}

void CTiltPositionGraph::ReDraw()
{
    DrawAll();
}

void CTiltPositionGraph::DrawPoints(CDC* dc)
{
    if (!dc) return;
    CPen pen(PS_SOLID, kMarkPen, kWhite);
    const Selected usePen(*dc, pen);
    for (INT_PTR i = 0; i < m_points.GetSize(); ++i)
        tiltpole::controls::DrawCross(*dc, PixelOf(m_points[i]));
}

void CTiltPositionGraph::DrawCenter(CDC& dc, const TiltPoint_Sensor& center, COLORREF color)
{
    CPen pen(PS_SOLID, kMarkPen, color);
    const Selected usePen(dc, pen);
    DrawCircle(&dc, PixelOf(center), ToPixel(kCenterRadius / m_world.scale));
}

void CTiltPositionGraph::DrawCircles(CDC* dc)
{
    if (!dc) return;
    for (const TiltPoint_Sensor& center : m_centers)
        if (center.nSet != 0) DrawCenter(*dc, center, center.nConfirmed != 0 ? kGreen : kRed);
}

void CTiltPositionGraph::DrawCircle(CDC* dc, TiltPoint_Sensor point)
{
    if (dc && IsConfirmed(point)) DrawCenter(*dc, point, kGreen);
}

void CTiltPositionGraph::DrawCircle(CDC* dc, POINT center, int radius)
{
    if (!dc) return;
    const int r = std::min(radius, kLargestRadius);
    const int chords = ToInt(2.0 * r * tiltpole::survey::kPi);
    if (chords < 1) return;
    const auto corner = [&](int k) {
        const double angle = 2.0 * k * tiltpole::survey::kPi / chords;
        return CPoint(ToPixel(center.x + r * std::cos(angle)),
                      ToPixel(center.y - r * std::sin(angle)));
    };
    const CPoint first = corner(0);
    dc->MoveTo(first);
    for (int k = 1; k < chords; ++k)
        dc->LineTo(corner(k));
    dc->LineTo(first);
}

void CTiltPositionGraph::DrawLine(CDC& dc, const TiltPoint_Sensor& from, const TiltPoint_Sensor& to,
                                  COLORREF color) const
{
    CPen pen(PS_SOLID, kMarkPen, color);
    const Selected usePen(dc, pen);
    DrawSegment(dc, PixelOf(from), PixelOf(to));
}

void CTiltPositionGraph::DrawLinkLine(CDC* dc)
{
    const auto& [one, two, three] = m_centers;
    if (!dc || !IsConfirmed(one) || !IsConfirmed(two)) return;
    DrawLine(*dc, one, two, kGreen);
    if (!IsConfirmed(three)) return;
    DrawLine(*dc, one, three, kGreen);
    DrawLine(*dc, two, three, kGreen);
}

// The stored position of center 2 is used even if that center is not set.
void CTiltPositionGraph::DrawLinkDistance(CDC* dc, TiltPoint_Sensor point)
{
    const auto& [one, two, three] = m_centers;
    if (!dc || m_points.IsEmpty() || !IsConfirmed(one)) return;
    if (two.nConfirmed != 0 && three.nConfirmed != 0) return;
    if (two.nSet == 0 && two.nConfirmed == 0) DrawLine(*dc, one, point, kRed);
    DrawLine(*dc, one, point, kRed);
    DrawLine(*dc, two, point, kRed);
}

void CTiltPositionGraph::DrawCurrentPt(CDC* dc, TiltPoint_Sensor point)
{
    const Borrowed own(dc ? nullptr : m_view);
    CDC* const target = dc ? dc : own.Get();
    if (!target) return;
    CPen pen(PS_SOLID, kMarkPen, kRed);
    const Selected usePen(*target, pen);
    m_current = std::move(point);
    const CPoint at = PixelOf(m_current);
    DrawCircle(target, at, kCurrentRadius);
    DrawSegment(*target, {at.x, Shifted(at.y, -kCurrentRadius)},
                {at.x, Shifted(at.y, kCurrentRadius)});
    DrawSegment(*target, {Shifted(at.x, -kCurrentRadius), at.y},
                {Shifted(at.x, kCurrentRadius), at.y});
}
