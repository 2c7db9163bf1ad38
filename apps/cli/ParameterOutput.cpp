// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterOutput.h"

#include "apps/tables/Errors.h"
#include "apps/tables/ReadFile.h"
#include "quality/ParameterFile.h"
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

bool IsNear(double x, double y)
{
    return std::fabs(x - y) <= kLastDigit;
}

bool IsSame(const Incline_MagneticCorrectParameter& p, const Incline_MagneticCorrectParameter& q)
{
    return IsNear(p.x0, q.x0) && IsNear(p.y0, q.y0) && IsNear(p.z0, q.z0) && IsNear(p.a, q.a)
           && IsNear(p.b, q.b) && IsNear(p.c, q.c) && IsNear(p.d, q.d) && IsNear(p.e, q.e);
}

bool IsSame(CInclineSensor_Position& p, CInclineSensor_Position& q)
{
    const Incline_MagneticTranslationParameter s = p.GetMagneticTranslationPar();
    const Incline_MagneticTranslationParameter t = q.GetMagneticTranslationPar();
    return IsSame(p.GetMagneticCorrectPar_A(), q.GetMagneticCorrectPar_A())
           && IsSame(p.GetMagneticCorrectPar_B(), q.GetMagneticCorrectPar_B()) && IsNear(s.dX, t.dX)
           && IsNear(s.dY, t.dY) && IsNear(s.dZ, t.dZ)
           && IsNear(p.GetMagneticBiasAngle_A(), q.GetMagneticBiasAngle_A())
           && IsNear(p.GetMagneticBiasAngle_B(), q.GetMagneticBiasAngle_B());
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
