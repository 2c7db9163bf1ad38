// SPDX-License-Identifier: MIT
//
// Intersection of three spheres: a point at known distances from three known points.
//
// Survey frame: x north, y east, z up [m]. In coordinates relative to the center of the first
// sphere the differences of the sphere equations are linear,
//
//   y = c1 − m1·x        z = c2 − m2·x
//
// and substituting them into the first equation gives A·x² + B·x + C = 0. With absolute coordinates
// of survey size the roots would be off by meters. Derivation: docs/formulas.md, "Point at three
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
/// @return nothing if B² − 4·A·C < 1e-9 (the spheres are apart or barely touch), or if the linear
///         equations do not determine y and z: all centers in one plane parallel to the x axis, for
///         example in a line or at one height
std::optional<survey::Point3> LowerMeetingPoint(const Sphere& first, const Sphere& second,
                                                const Sphere& third);

} // namespace tiltpole::positioning
