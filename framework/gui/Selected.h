// SPDX-License-Identifier: MIT
//
// Selects a drawing object for a scope; the previous one is selected again at its end.
//
//   const Selected usePen(dc, pen);
#pragma once

#include "framework/gui/DeviceContext.h"

namespace framework {

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

} // namespace framework
