// SPDX-License-Identifier: MIT
#include "positioning/InclineSensor_Position.h"

#include "positioning/detail/KeyedTextFile.h"

#include <array>
#include <new>

namespace positioning = tiltpole::positioning;

namespace {

using Correction = Incline_MagneticCorrectParameter;
using Translation = Incline_MagneticTranslationParameter;

// The values of the parameter file, in the order of their lines.
std::array<positioning::KeyedDouble, 21>
ParameterLines(Correction& a, Correction& b, Translation& t, double& biasA, double& biasB)
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

} // namespace

int CInclineSensor_Position::ConfigSave(CString path)
{
    try {
        positioning::KeyedTextFile file;
        if (!file.OpenForWriting(path)) return 0;
        for (const auto& [key, value] : ParameterLines(
                 m_MagneticCorrectPar_A, m_MagneticCorrectPar_B, m_MagneticTranslationPar,
                 m_dMagneticBiasAngle_A, m_dMagneticBiasAngle_B))
            file.WriteDouble(key, *value);
        return file.Close();
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CInclineSensor_Position::ConfigRead(CString path)
{
    try {
        positioning::KeyedTextFile file;
        if (!file.OpenForReading(path)) return 0;
        // Allocates before it assigns, so a call that fails changes nothing.
        file.ReadDoubles(ParameterLines(m_MagneticCorrectPar_A, m_MagneticCorrectPar_B,
                                        m_MagneticTranslationPar, m_dMagneticBiasAngle_A,
                                        m_dMagneticBiasAngle_B));
    } catch (const std::bad_alloc&) {
        return 0;
    }
    SetMagneticBiasAngle_A(m_dMagneticBiasAngle_A);
    return 1;
}
