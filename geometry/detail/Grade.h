// SPDX-License-Identifier: MIT
//
// The grade of a tip from the figures of its search.
#pragma once

#include "geometry/TiltPoint.h"

#include <cmath>

namespace tiltpole::geometry {

/// Status of the figures in `s`: every bound is exclusive, and the first rule that holds decides.
inline int GradeFigures(const TiltPoint_State& s)
{
    if (s.dPointError > 0.05 || s.dGeometryFigure > 2.0) return kTiltPointPoor;
    if (s.dPointError > 0.04 && s.dGeometryFigure > 1.0) return kTiltPointError40;
    if (s.dPointError > 0.035 && s.dGeometryFigure > 1.2) return kTiltPointError35;
    if (s.dPointError > 0.03 && s.dGeometryFigure > 1.5) return kTiltPointError30;
    if (s.dPointError > 0.02 && s.dGeometryFigure > 1.2 && std::fabs(s.dRadiusExcess) > 0.04)
        return kTiltPointRadius;
    return kTiltPointAccepted;
}

} // namespace tiltpole::geometry
