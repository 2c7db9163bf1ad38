// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/SpotSetup.h"

namespace cli {

void UseSpotCalibration(OccupySetup& setup)
{
    const quality::Calibration found = CalibrationOf(setup.spot.result);
    setup.position.SetMagneticCorrectPar_A(found.correctionA);
    setup.position.SetMagneticCorrectPar_B(found.correctionB);
    setup.position.SetMagneticBiasAngle_A(found.biasAngleA);
    setup.position.SetMagneticBiasAngle_B(found.biasAngleB);
    setup.occupation = WithCalibration(setup.occupation, setup.spot.result);
    setup.occupation.magneticBias = setup.position.GetMagneticBiasAngle_A();
    const field::SpotMagnetometer& a = setup.spot.result.a;
    if (a.found) setup.field = {a.strength, a.dip};
    setup.fieldByB = setup.spot.result.b.found;
    if (setup.delay != 0.0) setup.occupation.delay = 0.0;
}

} // namespace cli
