// SPDX-License-Identifier: MIT
#include "quality/SolverRun.h"

#include "calibration/InclineSensor_Filter_XY.h"
#include "calibration/InclineSensor_Filter_XZ.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "quality/JointFit.h"

#include <memory>
#include <new>
#include <utility>

namespace quality {
namespace {

template <class TurnFilter>
std::vector<PoseSensorData> Screened(const std::vector<PoseSensorData>& samples, int select)
{
    using Samples = typename TurnFilter::Samples;
    TurnFilter filter;
    for (const PoseSensorData& s : samples) {
        auto copy = std::make_unique<PoseSensorData>(s);
        filter.Add(copy.get()); // throws only before it has taken the sample
        (void)copy.release();   // now the filter's
    }
    std::unique_ptr<Samples> kept(filter.Filter());
    if (select > 0) kept.reset(filter.Select(kept.get(), select));

    std::vector<PoseSensorData> copies;
    if (!kept) return copies;
    for (int i = 0; i < kept->GetSize(); ++i) {
        if (const PoseSensorData* s = kept->GetAt(i)) copies.push_back(*s);
    }
    return copies;
}

// A sample for which memory was short is left out without a word.
void CheckTaken(int isTaken)
{
    if (isTaken == 0) throw std::bad_alloc();
}

void Solve(CalibrationRun& run)
{
    CInclineSensor_MagneticAdjust adjust;
    for (const PoseSensorData& s : run.used.horizontal)
        adjust.Horizontal_Add(&s);
    for (const PoseSensorData& s : run.used.vertical)
        adjust.Vertical_Add(&s);
    PoseSensorData last;
    if (const std::size_t n = run.used.horizontal.size(); n > 0)
        CheckTaken(adjust.Horizontal_Get(static_cast<int>(n) - 1, last));
    if (const std::size_t n = run.used.vertical.size(); n > 0)
        CheckTaken(adjust.Vertical_Get(static_cast<int>(n) - 1, last));
    run.solverAnswer = adjust.Adjust();
    run.calibration.correctionA = adjust.GetCorrectPar_A();
    run.calibration.correctionB = adjust.GetCorrectPar_B();
    run.calibration.translation = adjust.GetCoorTrans();
}

} // namespace

CalibrationTurns ScreenTurns(const CalibrationTurns& recorded, int select)
{
    return {Screened<CInclineSensor_Filter_XY>(recorded.horizontal, select),
            Screened<CInclineSensor_Filter_XZ>(recorded.vertical, select)};
}

CalibrationRun RunSolver(CalibrationTurns recorded, int sensorType, int select)
{
    CalibrationRun run;
    run.sensorType = sensorType;
    run.recorded = std::move(recorded);
    run.used = ScreenTurns(run.recorded, select);
    Solve(run);
    return run;
}

CalibrationRun RunSolverUnscreened(CalibrationTurns used, int sensorType)
{
    CalibrationRun run;
    run.sensorType = sensorType;
    run.recorded = used;
    run.used = std::move(used);
    Solve(run);
    return run;
}

CalibrationRun RunJointFit(CalibrationTurns recorded, int sensorType, int select)
{
    CalibrationRun run;
    run.isJoint = true;
    run.sensorType = sensorType;
    run.recorded = std::move(recorded);
    JointFit fit = FitJointly(run.recorded, sensorType);
    const bool fitted = fit.outcome == JointFitOutcome::Fitted;
    run.solverAnswer = fitted ? 1 : 0;
    if (fitted) {
        run.calibration = fit.calibration;
        run.used = std::move(fit.used);
    } else {
        run.used = ScreenTurns(run.recorded, select);
    }
    return run;
}

} // namespace quality
