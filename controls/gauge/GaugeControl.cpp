// SPDX-License-Identifier: MIT
#include "controls/gauge/GaugeControl.h"

#include "framework/gui/Borrowed.h"

namespace tiltpole::controls {

void GaugeControl::SetValue(double angle)
{
    if (!m_scale.Holds(angle)) return;
    m_gauge.face.value = angle;
    if (!m_gauge.face.CanCompose()) return;
    if (const framework::Borrowed dc(m_window); dc) Compose(*dc);
}

void GaugeControl::SetFix(int angle)
{
    if (!m_scale.Holds(angle)) return;
    m_gauge.face.AddFix(angle, [this, angle] {
        if (CDC* const dc = m_gauge.face.FixContext(m_window)) m_gauge.DrawFix(*dc, m_scale, angle);
    });
}

void GaugeControl::ClearFix()
{
    m_gauge.face.fixes.RemoveAll();
    m_window.Invalidate(FALSE);
}

void GaugeControl::SetBackColor(COLORREF color)
{
    m_gauge.face.backColor = color;
    Reconstruct();
}

void GaugeControl::Reconstruct()
{
    m_gauge.face.DropBackground();
    m_window.Invalidate();
}

void GaugeControl::Paint()
{
    CPaintDC dc(&m_window);
    if (!dc.GetSafeHdc()) return; // the window ended while it was erased
    CRect client;
    m_window.GetClientRect(&client);
    MeterFace& face = m_gauge.face;
    face.PrepareBackground(dc, client,
                           [this, &face] { m_gauge.DrawBackground(face.background, face.client); });
    Compose(dc);
}

void GaugeControl::DrawBackground(CDC* dc, const CRect& rect)
{
    if (dc) m_gauge.DrawBackground(*dc, rect);
}

void GaugeControl::DrawPointer(CDC* dc, double angle) const
{
    if (dc) m_gauge.DrawPointer(*dc, m_scale, angle);
}

void GaugeControl::DrawFixSign(CDC* dc) const
{
    if (dc) m_gauge.DrawFixes(*dc, m_scale);
}

void GaugeControl::Compose(CDC& target)
{
    m_gauge.face.Compose(target, [this](CDC& memory) {
        m_gauge.DrawPointer(memory, m_scale, m_gauge.face.value);
        m_gauge.DrawFixes(memory, m_scale);
    });
}

} // namespace tiltpole::controls
