// SPDX-License-Identifier: MIT
//
// Angles brought into one turn that begins at 0; Angle.h has [−180, 180].
#pragma once

#include <cmath>

namespace tiltpole::survey {

/// The same angle in [0, 360) [degrees].
inline double InTurn(double degrees)
{
    const double within = std::fmod(degrees, 360.0);
    const double turned = within < 0.0 ? within + 360.0 : within;
    return turned < 360.0 ? turned : 0.0; // a tiny negative angle rounds up to the whole turn
}

} // namespace tiltpole::survey
