// SPDX-License-Identifier: MIT
//
// A parameter file of any content: what is loaded is in range and is what the reader without checks reads;
// where there is a problem, nothing changes.
#include "fuzz/MemoryFile.h"
#include "quality/ParameterFile.h"

#include <array>

namespace {

using fuzz::Input;
using fuzz::Require;

constexpr const char* kKeys[] = {
    "MagneticA.a",         "MagneticA.b",  "MagneticA.c",  "MagneticA.d",  "MagneticA.e",
    "MagneticA.x0",        "MagneticA.y0", "MagneticA.z0", "MagneticB.a",  "MagneticB.b",
    "MagneticB.c",         "MagneticB.d",  "MagneticB.e",  "MagneticB.x0", "MagneticB.y0",
    "MagneticB.z0",        "CoorTrans.dX", "CoorTrans.dY", "CoorTrans.dZ", "MagneticBiasAngle_A",
    "MagneticBiasAngle_B",
};

std::array<double, 21> ValuesOf(const CInclineSensor_Position& pole)
{
    const auto a = pole.GetMagneticCorrectPar_A();
    const auto b = pole.GetMagneticCorrectPar_B();
    const auto t = pole.GetMagneticTranslationPar();
    return {a.a,
            a.b,
            a.c,
            a.d,
            a.e,
            a.x0,
            a.y0,
            a.z0,
            b.a,
            b.b,
            b.c,
            b.d,
            b.e,
            b.x0,
            b.y0,
            b.z0,
            t.dX,
            t.dY,
            t.dZ,
            pole.GetMagneticBiasAngle_A(),
            pole.GetMagneticBiasAngle_B()};
}

// A whole file with something of its own here and there.
std::string WholeFile(Input& input)
{
    std::string text;
    for (const char* key : kKeys) {
        const int kind = input.Below(128);
        if (kind == 127) continue;
        text += '[' + std::string(key) + ']';
        text += kind == 126   ? std::to_string(input.Number())
                : kind == 125 ? std::string(1, static_cast<char>(input.Byte()))
                              : std::to_string(input.Between(0.1, 4.0));
        text += kind == 124 ? "\n" : "\r\n";
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int kind = input.Below(4);
    const std::string content = kind < 3 ? WholeFile(input) : std::string(input.Rest());
    const auto keys = kind == 0 ? quality::ParameterKeys::Some : quality::ParameterKeys::All;
    CInclineSensor_Position pole;
    const auto before = ValuesOf(pole);
    const auto problems = quality::LoadParameterText(content, pole, keys);
    Require(quality::CheckParameterText(content, keys).size() == problems.size());
    for (const auto& problem : problems)
        Require(!ToText(problem).empty());
    if (!problems.empty()) {
        Require(ValuesOf(pole) == before);
        return 0;
    }

    static const fuzz::MemoryFile file;
    file.Set(content);
    CInclineSensor_Position plain;
    Require(plain.ConfigRead(file.Path().c_str()) == 1);
    Require(ValuesOf(plain) == ValuesOf(pole));
    for (const double value : ValuesOf(pole))
        Require(std::fabs(value) <= 1e6);
    const auto a = pole.GetMagneticCorrectPar_A();
    Require(a.b >= 0.1 && a.b <= 10.0 && a.e >= 0.1 && a.e <= 10.0);
    return 0;
}
