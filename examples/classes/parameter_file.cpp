// SPDX-License-Identifier: MIT
//
// quality::LoadParameters: a parameter file that is checked before anything of it is used.
#include "quality/ParameterFile.h"

#include <cstdio>
#include <string>

int main()
{
    CInclineSensor_Position saved;
    saved.SetMagneticBiasAngle_A(5.25); // [degrees]
    if (saved.ConfigSave(L"pole.cfg") != 1) return 1;

    CInclineSensor_Position pole;
    const auto problems = quality::LoadParameters(L"pole.cfg", pole);
    std::printf("pole.cfg: %zu problems, bias %.2f degrees\n", problems.size(),
                pole.GetMagneticBiasAngle_A());

    // The same for a text that the host has read itself. Damaged like this one it loads nothing.
    const std::string damaged = "[MagneticA.a]0.1\r\n[MagneticA.b]40\r\n[MagneticBiasAngle_A]x\r\n";
    for (const auto& problem :
         quality::LoadParameterText(damaged, pole, quality::ParameterKeys::Some))
        std::printf("damaged: %s\n", ToText(problem).c_str());
    std::printf("bias still %.2f degrees\n", pole.GetMagneticBiasAngle_A());
    std::printf("keys missing: %zu\n",
                quality::CheckParameterText(damaged, quality::ParameterKeys::All).size() - 2);
}
