// SPDX-License-Identifier: MIT
//
// Selects a drawing object for a scope: the previous one is back at the closing brace.
#pragma once

#include "framework/gui/DeviceContext.h"

namespace tiltpole::controls {

template <class Object>
class Selected
{
public:
    Selected(CDC& dc, Object& object) : m_dc(dc), m_previous(dc.SelectObject(&object)) {}
    ~Selected()
    {
        if (m_previous) m_dc.SelectObject(m_previous);
    }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

private:
    CDC& m_dc;
    Object* m_previous;
};

inline void DrawSegment(CDC& dc, CPoint from, CPoint to)
{
    dc.MoveTo(from);
    dc.LineTo(to);
}

} // namespace tiltpole::controls
