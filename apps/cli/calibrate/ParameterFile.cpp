// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterOutput.h"
#include "apps/cli/calibrate/CalibrationOutput.h"

namespace cli {

std::string ParametersOf(const std::string& path, const quality::Calibration& calibration)
{
    CInclineSensor_Position position;
    position.SetMagneticCorrectPar_A(calibration.correctionA);
    position.SetMagneticCorrectPar_B(calibration.correctionB);
    position.SetMagneticTranslationPar(calibration.translation);
    position.SetMagneticBiasAngle_A(calibration.biasAngleA);
    position.SetMagneticBiasAngle_B(calibration.biasAngleB);
    return ParameterText(path, position);
}

} // namespace cli
