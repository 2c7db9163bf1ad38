// SPDX-License-Identifier: MIT
//
// The report and the joint fit on turns of 500 samples, beside the solver alone.
#include "quality/CalibrationReport.h"
#include "quality/SolverRun.h"
#include "tests/quality/TurnMaker.h"

#include <benchmark/benchmark.h>

namespace {

quality::CalibrationTurns Turns(const benchmark::State& state)
{
    turnmaker::World world = turnmaker::DistortedWorld();
    world.noise = 1.0;
    world.tiltNoise = 0.1;
    turnmaker::Plan horizontal = turnmaker::HorizontalPlan();
    turnmaker::Plan vertical = turnmaker::VerticalPlan();
    horizontal.samples = vertical.samples = static_cast<int>(state.range(0));
    return turnmaker::MakeTurns(world, horizontal, vertical);
}

void Solver(benchmark::State& state)
{
    const quality::CalibrationTurns turns = Turns(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(quality::RunSolverUnscreened(turns));
}
BENCHMARK(Solver)->Arg(500)->Unit(benchmark::kMillisecond);

void JointFit(benchmark::State& state)
{
    const quality::CalibrationTurns turns = Turns(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(quality::FitJointly(turns));
}
BENCHMARK(JointFit)->Arg(100)->Arg(500)->Arg(2000)->Arg(8000)->Unit(benchmark::kMillisecond);

void Report(benchmark::State& state)
{
    const quality::CalibrationRun run = quality::RunSolverUnscreened(Turns(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(quality::AssessCalibration(run));
}
BENCHMARK(Report)->Arg(100)->Arg(500)->Arg(2000)->Arg(8000)->Unit(benchmark::kMillisecond);

} // namespace
