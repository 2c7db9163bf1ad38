// SPDX-License-Identifier: MIT
//
// quality::RunSolver: a calibration as hosts run it, screening and solver in one call.
#include "quality/SolverRun.h"

#include "Turn.h"

#include <cstdio>
#include <utility>

int main()
{
    quality::CalibrationTurns turns;
    turns.horizontal = turn::Record(turn::Axis::Z);
    turns.vertical = turn::Record(turn::Axis::Y);

    const quality::CalibrationRun run = quality::RunSolver(std::move(turns));
    std::printf("solver %s\n", run.solverAnswer == 1 ? "found a calibration" : "failed");
    std::printf("horizontal turn: %zu of %zu samples used\n", run.used.horizontal.size(),
                run.recorded.horizontal.size());
    std::printf("vertical turn: %zu of %zu samples used\n", run.used.vertical.size(),
                run.recorded.vertical.size());

    const Incline_MagneticCorrectParameter& a = run.calibration.correctionA;
    std::printf("A: offset %.0f %.0f %.0f counts\n", a.x0, a.y0, a.z0);
}
