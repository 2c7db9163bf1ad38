// SPDX-License-Identifier: MIT
#pragma once

#include "framework/gui/DeviceContext.h"

namespace tiltpole::controls {

/// One line with the pen that `dc` has selected.
inline void DrawSegment(CDC& dc, CPoint from, CPoint to)
{
    dc.MoveTo(from);
    dc.LineTo(to);
}

} // namespace tiltpole::controls
