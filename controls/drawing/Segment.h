// SPDX-License-Identifier: MIT
#pragma once

#include "framework/gui/DeviceContext.h"

namespace tiltpole::controls {

/// Draws one line with the pen selected into `dc`.
inline void DrawSegment(CDC& dc, CPoint from, CPoint to)
{
    dc.MoveTo(from);
    dc.LineTo(to);
}

} // namespace tiltpole::controls
