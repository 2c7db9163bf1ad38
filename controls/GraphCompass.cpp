// SPDX-License-Identifier: MIT
#include "controls/GraphCompass.h"

#include "controls/drawing/Segment.h"
#include "framework/gui/Borrowed.h"
#include "framework/gui/Selected.h"

#include <cmath>

IMPLEMENT_DYNAMIC(CGraphCompass, CStatic)

BEGIN_MESSAGE_MAP(CGraphCompass, CStatic)
ON_WM_PAINT()
ON_WM_ERASEBKGND()
END_MESSAGE_MAP()

using framework::Selected;
using tiltpole::controls::DrawSegment;

namespace {

constexpr int kLabelInset = 35; // from the inner ring to the labels' centers, pixels

void DrawRing(CDC& dc, CPoint center, int radius, COLORREF color)
{
    CPen pen(PS_SOLID, tiltpole::controls::kRingPen, color);
    const Selected usePen(dc, pen);
    dc.Ellipse(center.x - radius, center.y - radius, center.x + radius, center.y + radius);
}

// Draws an edge along three corners of the needle.
void DrawEdge(CDC& dc, int width, COLORREF color, const POINT& tip, const POINT& side,
              const POINT& tail)
{
    CPen pen(PS_SOLID, width, color);
    const Selected usePen(dc, pen);
    dc.MoveTo(tip);
    dc.LineTo(side);
    dc.LineTo(tail);
}

} // namespace

CGraphCompass::CGraphCompass() = default;
CGraphCompass::~CGraphCompass() = default;

void CGraphCompass::SetValue(double degrees)
{
    m_face.value = degrees;
    if (!m_face.CanCompose()) return;
    if (const framework::Borrowed dc(*this); dc) Compose(*dc);
}

double CGraphCompass::GetValue() const
{
    return m_face.value;
}

void CGraphCompass::SetMeterBackColor(COLORREF color)
{
    m_face.backColor = color;
    ReconstructControl();
}

COLORREF CGraphCompass::GetMeterBackColor() const
{
    return m_face.backColor;
}

void CGraphCompass::ReconstructControl()
{
    m_face.DropBackground();
    Invalidate();
}

void CGraphCompass::SetFix(int degrees)
{
    m_face.AddFix(degrees, [this, degrees] {
        CDC* const dc = m_face.FixContext(*this);
        if (!dc) return;
        CPen pen(PS_SOLID, tiltpole::controls::kFixPen, tiltpole::controls::kFixColor);
        const Selected usePen(*dc, pen);
        const auto mark = tiltpole::controls::FixLine::Of(m_face.center, m_rings, degrees);
        DrawSegment(*dc, mark.outer, mark.inner);
    });
}

void CGraphCompass::ClearFix()
{
    m_face.fixes.RemoveAll();
    Invalidate(FALSE);
}

void CGraphCompass::DrawBackground(CDC* dc, CRect& rect)
{
    if (!dc) return;
    m_face.FillAndMeasure(*dc, rect);
    m_rings = tiltpole::controls::DialRings::Of(m_face.diameter);
    DrawRings(*dc);
    DrawTicks(*dc);
}

// Each ring is a filled disc drawn over the previous one.
void CGraphCompass::DrawRings(CDC& dc) const
{
    CBrush face(tiltpole::controls::kFaceColor);
    const Selected useBrush(dc, face);
    DrawRing(dc, m_face.center, m_rings.outer, tiltpole::controls::kOuterColor);
    DrawRing(dc, m_face.center, m_rings.middle, tiltpole::controls::kMiddleColor);
    DrawRing(dc, m_face.center, m_rings.inner, tiltpole::controls::kOuterColor);
}

void CGraphCompass::DrawTicks(CDC& dc) const
{
    CPen pen(PS_SOLID, tiltpole::controls::kRingPen, tiltpole::controls::kTickColor);
    CFont font;
    tiltpole::controls::MakeLabelFont(font);
    const Selected usePen(dc, pen);
    const Selected useFont(dc, font);
    dc.SetBkMode(TRANSPARENT);
    dc.SetTextColor(tiltpole::controls::kLabelColor);

    const double tick = std::fabs(m_face.diameter / 30.0);
    const double labels = m_rings.inner - kLabelInset;
    for (int heading = 0; heading < 360; heading += 10) {
        const bool isMajor = heading % 30 == 0;
        const double angle = tiltpole::controls::DialAngle(heading);
        const double inner = isMajor ? m_rings.inner - tick : m_rings.inner - tick / 2;
        DrawSegment(dc, tiltpole::controls::OnDial(m_face.center, m_rings.inner, angle),
                    tiltpole::controls::OnDial(m_face.center, inner, angle));
        if (isMajor)
            tiltpole::controls::DrawLabel(
                dc, tiltpole::controls::OnDial(m_face.center, labels, angle), heading);
    }
}

void CGraphCompass::DrawPointer(CDC* dc, double degrees)
{
    if (!dc) return;
    const auto needle = tiltpole::controls::NeedleShape::Of(m_face.center, m_face.diameter,
                                                            m_face.needleUnit, degrees);
    const auto& [left, tip, right, tail] = needle.corners;
    {
        CBrush brush(m_face.needleColor);
        CPen pen(PS_SOLID, 1, m_face.needleColor);
        const Selected useBrush(*dc, brush);
        const Selected usePen(*dc, pen);
        dc->Polygon(needle.corners, 4);
    }
    // The light changes sides at 90 degrees only.
    const bool lightFromRight = degrees > 90.0;
    DrawEdge(*dc, 2, m_face.needleShadowColor, tip, lightFromRight ? left : right, tail);
    DrawEdge(*dc, 1, m_face.needleLightColor, tip, lightFromRight ? right : left, tail);

    CBrush black(RGB(0, 0, 0));
    const Selected useBrush(*dc, black);
    const CPoint& hub = m_face.center;
    dc->Ellipse(hub.x - 2, hub.y - 2, hub.x + 3, hub.y + 3);
}

void CGraphCompass::DrawFixSign(CDC* dc)
{
    if (!dc) return;
    CPen pen(PS_SOLID, tiltpole::controls::kFixPen, tiltpole::controls::kFixColor);
    const Selected usePen(*dc, pen);
    for (INT_PTR i = 0; i < m_face.fixes.GetSize(); ++i) {
        const auto mark =
            tiltpole::controls::FixLine::Of(m_face.center, m_rings, m_face.fixes.GetAt(i));
        DrawSegment(*dc, mark.outer, mark.inner);
    }
}

void CGraphCompass::Compose(CDC& target)
{
    m_face.Compose(target, [this](CDC& memory) {
        DrawPointer(&memory, m_face.value);
        DrawFixSign(&memory);
    });
}

void CGraphCompass::OnPaint()
{
    CPaintDC dc(this);
    if (!dc.GetSafeHdc()) return; // the window ended while it was erased
    CRect client;
    GetClientRect(&client);
    m_face.PrepareBackground(dc, client,
                             [this] { DrawBackground(&m_face.background, m_face.client); });
    Compose(dc);
}

BOOL CGraphCompass::OnEraseBkgnd(CDC*)
{
    return FALSE;
}

void CGraphCompass::PreSubclassWindow()
{
    m_face.TakeWindow(*this);
}
