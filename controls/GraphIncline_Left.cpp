// SPDX-License-Identifier: MIT
#include "controls/GraphIncline_Left.h"

IMPLEMENT_DYNAMIC(CGraphIncline_Left, CStatic)

BEGIN_MESSAGE_MAP(CGraphIncline_Left, CStatic)
ON_WM_PAINT()
ON_WM_ERASEBKGND()
END_MESSAGE_MAP()

CGraphIncline_Left::CGraphIncline_Left() : m_gauge(*this, tiltpole::controls::kLeftScale) {}
CGraphIncline_Left::~CGraphIncline_Left() = default;

void CGraphIncline_Left::SetValue(double degrees)
{
    m_gauge.SetValue(degrees);
}
double CGraphIncline_Left::GetValue() const
{
    return m_gauge.Face().value;
}
void CGraphIncline_Left::SetMeterBackColor(COLORREF color)
{
    m_gauge.SetBackColor(color);
}
COLORREF CGraphIncline_Left::GetMeterBackColor() const
{
    return m_gauge.Face().backColor;
}
void CGraphIncline_Left::ReconstructControl()
{
    m_gauge.Reconstruct();
}
void CGraphIncline_Left::SetFix(int degrees)
{
    m_gauge.SetFix(degrees);
}
void CGraphIncline_Left::ClearFix()
{
    m_gauge.ClearFix();
}

void CGraphIncline_Left::DrawBackground(CDC* dc, CRect& rect)
{
    m_gauge.DrawBackground(dc, rect);
}
void CGraphIncline_Left::DrawPointer(CDC* dc, double degrees)
{
    m_gauge.DrawPointer(dc, degrees);
}
void CGraphIncline_Left::DrawFixSign(CDC* dc)
{
    m_gauge.DrawFixSign(dc);
}

void CGraphIncline_Left::OnPaint()
{
    m_gauge.Paint();
}
BOOL CGraphIncline_Left::OnEraseBkgnd(CDC*)
{
    return FALSE;
}
void CGraphIncline_Left::PreSubclassWindow()
{
    m_gauge.TakeWindow();
}
