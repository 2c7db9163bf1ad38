// SPDX-License-Identifier: MIT
#include "apps/cli/calibrate/CalibrationOutput.h"
#include "apps/tables/Errors.h"
#include "positioning/InclineSensor_Position.h"
#include <cmath>
#include <filesystem>
#include <fmt/format.h>

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr double kLastDigit = 0.5001e-10; // half a unit of the tenth decimal

CInclineSensor_Position Holding(const quality::Calibration& c)
{
    CInclineSensor_Position position;
    position.SetMagneticCorrectPar_A(c.correctionA);
    position.SetMagneticCorrectPar_B(c.correctionB);
    position.SetMagneticTranslationPar(c.translation);
    position.SetMagneticBiasAngle_A(c.biasAngleA);
    position.SetMagneticBiasAngle_B(c.biasAngleB);
    return position;
}

bool IsSame(const Incline_MagneticCorrectParameter& p, const Incline_MagneticCorrectParameter& q)
{
    const double differences[] = {p.x0 - q.x0, p.y0 - q.y0, p.z0 - q.z0, p.a - q.a,
                                  p.b - q.b,   p.c - q.c,   p.d - q.d,   p.e - q.e};
    for (const double d : differences)
        if (!(std::fabs(d) <= kLastDigit)) return false;
    return true;
}

bool ComesBack(const std::string& path, const quality::Calibration& c)
{
    CInclineSensor_Position read;
    if (read.ConfigRead(path.c_str()) != 1) return false;
    const Incline_MagneticTranslationParameter t = read.GetMagneticTranslationPar();
    return IsSame(read.GetMagneticCorrectPar_A(), c.correctionA)
           && IsSame(read.GetMagneticCorrectPar_B(), c.correctionB)
           && std::fabs(t.dX - c.translation.dX) <= kLastDigit
           && std::fabs(t.dY - c.translation.dY) <= kLastDigit
           && std::fabs(t.dZ - c.translation.dZ) <= kLastDigit
           && std::fabs(read.GetMagneticBiasAngle_A() - c.biasAngleA) <= kLastDigit
           && std::fabs(read.GetMagneticBiasAngle_B() - c.biasAngleB) <= kLastDigit;
}

// The file behind symbolic links, so that renaming replaces the file and not the link.
fs::path TargetOf(const std::string& path)
{
    std::error_code error;
    const fs::path target = fs::canonical(path, error);
    return error ? fs::path(path) : target;
}

} // namespace

void SaveParameters(const std::string& path, const quality::Calibration& calibration)
{
    const fs::path target = TargetOf(path);
    fs::path sibling = target;
    sibling += ".new";
    const std::string beside = sibling.string();
    if (Holding(calibration).ConfigSave(beside.c_str()) != 1) {
        throw tables::InputError(path, "cannot be written, or a value is not finite");
    }
    std::error_code error;
    if (!ComesBack(beside, calibration)) {
        fs::remove(sibling, error);
        throw tables::InputError(
            path, "was left unchanged, because reading the new file back gave other values");
    }
    fs::rename(sibling, target, error);
    if (error) {
        const std::string reason = error.message();
        fs::remove(sibling, error);
        throw tables::InputError(path, reason);
    }
}

} // namespace cli
