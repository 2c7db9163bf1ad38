// SPDX-License-Identifier: MIT
//
// quality::FitJointly: a calibration by another way than the solver's, which needs pitch and roll and
// does not mind about which axis the pole was turned.
#include "quality/JointFit.h"

#include "Turn.h"

#include <cstdio>
#include <string>

int main()
{
    quality::CalibrationTurns turns;
    turns.horizontal = turn::Record(turn::Axis::Z);
    turns.vertical = turn::Record(turn::Axis::Y);

    const quality::JointFit fit = quality::FitJointly(turns);
    std::printf("%s\n", fit.outcome == quality::JointFitOutcome::Fitted
                            ? "fitted"
                            : std::string(quality::Describe(fit.outcome)).c_str());
    const Incline_MagneticCorrectParameter& a = fit.calibration.correctionA;
    std::printf("A: offset %.0f %.0f %.0f counts, share of x in y %.2f, in z %.2f\n", a.x0, a.y0,
                a.z0, a.a, a.c);
    std::printf("heading lost by eight values: A %.2f, B %.2f degrees\n", fit.lossA, fit.lossB);

    turns.vertical.resize(100); // 200 degrees of the turn
    const quality::JointFit none = quality::FitJointly(turns);
    std::printf("200 degrees: %s\n", std::string(quality::Describe(none.outcome)).c_str());
}
