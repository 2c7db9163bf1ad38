// SPDX-License-Identifier: MIT
//
// The parameter file: which member stands under which key.
#pragma once

#include "positioning/MagneticParameters.h"
#include "positioning/detail/KeyedTextFile.h"

#include <array>

namespace tiltpole::positioning {

using ParameterEntries = std::array<KeyedDouble, 21>;

/// The keys of the parameter file and where their values are kept, in the order of the lines.
inline ParameterEntries ParameterLines(Incline_MagneticCorrectParameter& a,
                                       Incline_MagneticCorrectParameter& b,
                                       Incline_MagneticTranslationParameter& t, double& biasA,
                                       double& biasB)
{
    return {
        {
         {"MagneticA.a", &a.a}, {"MagneticA.b", &a.b},
         {"MagneticA.c", &a.c}, {"MagneticA.d", &a.d},
         {"MagneticA.e", &a.e}, {"MagneticA.x0", &a.x0},
         {"MagneticA.y0", &a.y0}, {"MagneticA.z0", &a.z0},
         {"MagneticB.a", &b.a}, {"MagneticB.b", &b.b},
         {"MagneticB.c", &b.c}, {"MagneticB.d", &b.d},
         {"MagneticB.e", &b.e}, {"MagneticB.x0", &b.x0},
         {"MagneticB.y0", &b.y0}, {"MagneticB.z0", &b.z0},
         {"CoorTrans.dX", &t.dX}, {"CoorTrans.dY", &t.dY},
         {"CoorTrans.dZ", &t.dZ}, {"MagneticBiasAngle_A", &biasA},
         {"MagneticBiasAngle_B", &biasB},
         }
    };
}

} // namespace tiltpole::positioning
