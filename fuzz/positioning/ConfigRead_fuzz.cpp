// SPDX-License-Identifier: MIT
//
// Reading a parameter file of any content never crashes and yields finite numbers, and one pass for
// all keys finds what a lookup of each key finds.
#include "framework/core/File.h"
#include "positioning/InclineSensor_Position.h"
#include "positioning/detail/KeyedTextFile.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

void Require(bool condition)
{
    if (!condition) std::abort();
}

const CString& Path()
{
    static const CString path(("/dev/shm/tiltpole-fuzz-" + std::to_string(::getpid())).c_str());
    return path;
}

void CheckBothReaders(const std::string& content)
{
    constexpr std::array<const char*, 4> keys = {"MagneticA.a", "MagneticA.x0", "CoorTrans.dX",
                                                 "MagneticBiasAngle_A"};
    tiltpole::positioning::KeyedTextFile file;
    file.SetContent(content);
    std::array<double, keys.size()> together{};
    std::array<double, keys.size()> apart{};
    std::array<tiltpole::positioning::KeyedDouble, keys.size()> wanted;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        wanted[i] = {keys[i], &together[i]};
        file.ReadDouble(keys[i], apart[i]);
    }
    file.ReadDoubles(wanted);
    Require(together == apart);

    int integer = 0;
    CString text;
    file.ReadInteger("MagneticA.a", integer);
    file.ReadString("MagneticA.a", text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string content(reinterpret_cast<const char*>(data), size);
    CheckBothReaders(content);

    CFile file;
    Require(file.Open(Path(), CFile::modeCreate | CFile::modeWrite));
    file.Write(content.data(), static_cast<UINT>(content.size()));
    file.Close();
    CInclineSensor_Position sensor;
    Require(sensor.ConfigRead(Path()) == 1);
    Require(std::isfinite(sensor.GetMagneticBiasAngle_A()));
    Require(std::isfinite(sensor.GetMagneticCorrectPar_B().e));
    CFile::Remove(Path());
    return 0;
}
