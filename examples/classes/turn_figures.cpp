// SPDX-License-Identifier: MIT
//
// quality::TurnFigures: how a turn was made, for the operator who has to make the next one better.
#include "quality/TurnFigures.h"

#include "Turn.h"
#include "quality/CalibrationReport.h"
#include "quality/SolverRun.h"

#include <cstdio>

int main()
{
    quality::CalibrationTurns turns;
    turns.horizontal = turn::Record(turn::Axis::Z);
    turns.vertical = turn::Record(turn::Axis::Y);
    // Nobody turned between 100 and 160 degrees of the first turn: samples are 2 degrees apart.
    turns.horizontal.erase(turns.horizontal.begin() + 50, turns.horizontal.begin() + 80);

    const quality::TurnFigures figures =
        quality::AssessCalibration(quality::RunJointFit(turns)).horizontal;
    std::printf("%d samples, %d used, %.0f degrees covered\n", figures.recorded, figures.used,
                figures.covered);
    std::printf("circle about %.0f %.0f, radius %.0f counts\n", figures.circle.x,
                figures.circle.second, figures.circle.radius);
    for (const quality::MissingSector& sector : figures.missing)
        std::printf("missing %s degrees\n", sector.Name().c_str());
    std::printf("turn went back for %.0f %% of the samples\n", 100.0 * figures.turningBack);
    std::printf("accelerations were %s\n", figures.acceleration ? "recorded" : "not recorded");
}
