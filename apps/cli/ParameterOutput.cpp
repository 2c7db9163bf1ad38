// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterOutput.h"

#include "apps/tables/Errors.h"
#include "apps/tables/ReadFile.h"
#include "quality/ParameterFile.h"
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>
#include <vector>

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

// Every value that a parameter file has.
std::vector<double> ValuesOf(CInclineSensor_Position& p)
{
    const Incline_MagneticTranslationParameter t = p.GetMagneticTranslationPar();
    std::vector<double> values{t.dX, t.dY, t.dZ, p.GetMagneticBiasAngle_A(),
                               p.GetMagneticBiasAngle_B()};
    for (const Incline_MagneticCorrectParameter& m :
         {p.GetMagneticCorrectPar_A(), p.GetMagneticCorrectPar_B()})
        for (const double value : {m.x0, m.y0, m.z0, m.a, m.b, m.c, m.d, m.e})
            values.push_back(value);
    return values;
}

bool IsSame(CInclineSensor_Position& p, CInclineSensor_Position& q)
{
    return std::ranges::equal(ValuesOf(p), ValuesOf(q),
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
