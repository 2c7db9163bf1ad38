// SPDX-License-Identifier: MIT
//
// The correction of a magnetometer, as MagneticParameters.h defines its eight values.
#pragma once

#include "positioning/MagneticParameters.h"
#include "survey/Reading.h"

namespace tiltpole::survey {

/// The corrected reading, every line from the raw values:
///
///   x' =   x                 − x0
///   y' = a·x + b·y           − y0
///   z' = c·x + d·y + e·z     − z0
inline Reading Corrected(const Incline_MagneticCorrectParameter& par, const Reading& raw)
{
    return {raw.x - par.x0, par.a * raw.x + par.b * raw.y - par.y0,
            par.c * raw.x + par.d * raw.y + par.e * raw.z - par.z0};
}

} // namespace tiltpole::survey
