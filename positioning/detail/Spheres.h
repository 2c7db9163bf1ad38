// SPDX-License-Identifier: MIT
//
// Where three spheres meet: a point at known distances from three known points.
#pragma once

#include "positioning/PoseSensorData.h"

namespace tiltpole::positioning {

struct Sphere
{
    xyhCoordinate center; // [m]
    double radius;        // [m]
};

/// The lower of the two points that lie on all three spheres.
///
/// The differences of the sphere equations give y and h as linear functions of x; put into the
/// first equation they leave A·x² + B·x + C = 0. All of it is formed relative to the first centre:
/// coordinates of survey size would cost metres otherwise. Derivation: docs/formulas.md, "Point at
/// three distances".
///
/// @return false, with `result` as it was, where B² − 4·A·C < 1e-9 (apart, touching or nearly so),
///         or the linear equations do not determine y and h (centres in a line, or in a plane that
///         contains the x direction only by its slope: all of equal height, for example)
bool LowerMeetingPoint(const Sphere& first, const Sphere& second, const Sphere& third,
                       xyhCoordinate& result);

} // namespace tiltpole::positioning
