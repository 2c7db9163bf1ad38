// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterOutput.h"

#include "apps/tables/Errors.h"
#include "apps/tables/ReadFile.h"
#include "quality/ParameterFile.h"
#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace cli {

namespace {

constexpr double kLastDigit = 0.5001e-10; // half a unit of the tenth decimal

// A file that is only in memory.
class MemoryFile
{
public:
    MemoryFile() : m_file(memfd_create("parameters", MFD_CLOEXEC))
    {
        if (m_file < 0) throw std::system_error(errno, std::generic_category(), "a file in memory");
    }
    ~MemoryFile() { close(m_file); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

std::array<double, 21> ValuesOf(CInclineSensor_Position& p)
{
    const Incline_MagneticCorrectParameter a = p.GetMagneticCorrectPar_A();
    const Incline_MagneticCorrectParameter b = p.GetMagneticCorrectPar_B();
    const Incline_MagneticTranslationParameter t = p.GetMagneticTranslationPar();
    return {a.x0,
            a.y0,
            a.z0,
            a.a,
            a.b,
            a.c,
            a.d,
            a.e,
            b.x0,
            b.y0,
            b.z0,
            b.a,
            b.b,
            b.c,
            b.d,
            b.e,
            t.dX,
            t.dY,
            t.dZ,
            p.GetMagneticBiasAngle_A(),
            p.GetMagneticBiasAngle_B()};
}

bool IsSame(CInclineSensor_Position& p, CInclineSensor_Position& q)
{
    const auto values = ValuesOf(p);
    const auto others = ValuesOf(q);
    return std::equal(values.begin(), values.end(), others.begin(),
                      [](double x, double y) { return std::fabs(x - y) <= kLastDigit; });
}

} // namespace

std::string ParameterText(const std::string& path, const CInclineSensor_Position& position)
{
    const MemoryFile file;
    const CString name(file.Path().c_str());
    CInclineSensor_Position saved = position;
    if (saved.ConfigSave(name) != 1)
        throw tables::InputError(path, "was not written: a value is not finite or too long, or "
                                       "there is no room to make the file in memory");
    CInclineSensor_Position readBack;
    if (readBack.ConfigRead(name) != 1 || !IsSame(saved, readBack)) {
        throw tables::InputError(
            path, "was left unchanged, because reading the new content back gave other values");
    }
    std::string content = tables::ReadFile(file.Path());
    if (const auto problems = quality::CheckParameterText(content); !problems.empty()) {
        throw tables::InputError(path,
                                 "was left unchanged, because the calibration is implausible: "
                                     + ToText(problems.front()));
    }
    return content;
}

} // namespace cli
