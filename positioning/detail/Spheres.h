// SPDX-License-Identifier: MIT
//
// Where three spheres meet: a point at known distances from three known points.
//
// Survey frame: x north, y east, z up [m]. In coordinates relative to the center of the first sphere
// the differences of the sphere equations are linear,
//
//   y = c1 − m1·x        z = c2 − m2·x
//
// and put into the first equation they leave A·x² + B·x + C = 0. With coordinates of survey size,
// not relative ones, the roots would be off by meters. Derivation: docs/formulas.md, "Point at three
// distances".
#pragma once

#include "survey/Point.h"

#include <optional>

namespace tiltpole::positioning {

struct Sphere
{
    survey::Point3 center; // [m]
    double radius;         // [m]
};

/// The lower of the two points that lie on all three spheres.
///
/// @return nothing where B² − 4·A·C < 1e-9 (the spheres are apart, touch or nearly so), or the linear
///         equations do not determine y and z: all centers in one plane parallel to the x axis, such
///         as in a line or at equal height
std::optional<survey::Point3> LowerMeetingPoint(const Sphere& first, const Sphere& second,
                                                const Sphere& third);

} // namespace tiltpole::positioning
