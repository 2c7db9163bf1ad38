// SPDX-License-Identifier: MIT
#include "controls/GraphIncline_Right.h"

IMPLEMENT_DYNAMIC(CGraphIncline_Right, CStatic)

BEGIN_MESSAGE_MAP(CGraphIncline_Right, CStatic)
ON_WM_PAINT()
ON_WM_ERASEBKGND()
END_MESSAGE_MAP()

CGraphIncline_Right::CGraphIncline_Right() : m_gauge(*this, tiltpole::controls::kRightScale) {}
CGraphIncline_Right::~CGraphIncline_Right() = default;

void CGraphIncline_Right::SetValue(double degrees)
{
    m_gauge.SetValue(degrees);
}
double CGraphIncline_Right::GetValue() const
{
    return m_gauge.Face().value;
}
void CGraphIncline_Right::SetMeterBackColor(COLORREF color)
{
    m_gauge.SetBackColor(color);
}
COLORREF CGraphIncline_Right::GetMeterBackColor() const
{
    return m_gauge.Face().backColor;
}
void CGraphIncline_Right::ReconstructControl()
{
    m_gauge.Reconstruct();
}
void CGraphIncline_Right::SetFix(int degrees)
{
    m_gauge.SetFix(degrees);
}
void CGraphIncline_Right::ClearFix()
{
    m_gauge.ClearFix();
}

void CGraphIncline_Right::DrawBackground(CDC* dc, CRect& rect)
{
    m_gauge.DrawBackground(dc, rect);
}
void CGraphIncline_Right::DrawPointer(CDC* dc, double degrees)
{
    m_gauge.DrawPointer(dc, degrees);
}
void CGraphIncline_Right::DrawFixSign(CDC* dc)
{
    m_gauge.DrawFixSign(dc);
}

void CGraphIncline_Right::OnPaint()
{
    m_gauge.Paint();
}
BOOL CGraphIncline_Right::OnEraseBkgnd(CDC*)
{
    return FALSE;
}
void CGraphIncline_Right::PreSubclassWindow()
{
    m_gauge.TakeWindow();
}
