// SPDX-License-Identifier: MIT
#include "positioning/InclineSensor_Position.h"

#include "positioning/detail/KeyedTextFile.h"
#include "positioning/detail/ParameterLines.h"

#include <new>

namespace positioning = tiltpole::positioning;

int CInclineSensor_Position::ConfigSave(CString path)
{
    try {
        positioning::KeyedTextFile file;
        if (!file.OpenForWriting(path)) return 0;
        for (const auto& [key, value] : positioning::ParameterLines(
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
        file.ReadDoubles(positioning::ParameterLines(
            m_MagneticCorrectPar_A, m_MagneticCorrectPar_B, m_MagneticTranslationPar,
            m_dMagneticBiasAngle_A, m_dMagneticBiasAngle_B));
    } catch (const std::bad_alloc&) {
        return 0;
    }
    SetMagneticBiasAngle_A(m_dMagneticBiasAngle_A);
    return 1;
}
