// SPDX-License-Identifier: MIT
#include "quality/SolverRun.h"

#include "framework/core/MessageBox.h"
#include "tests/quality/TurnMaker.h"
#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <new>

namespace {

class SolverRun : public testing::Test
{
protected:
    void SetUp() override
    {
        m_before = framework::SetMessageBoxHandler(
            [](const wchar_t*, const wchar_t*, unsigned) { return IDOK; });
    }
    void TearDown() override { framework::SetMessageBoxHandler(m_before); }

private:
    framework::MessageBoxHandler m_before;
};

TEST_F(SolverRun, ThinsEachScreenedTurn)
{
    turnmaker::Plan horizontal = turnmaker::HorizontalPlan();
    turnmaker::Plan vertical = turnmaker::VerticalPlan();
    horizontal.samples = vertical.samples = 1000;
    const quality::CalibrationTurns turns =
        turnmaker::MakeTurns(turnmaker::TriangularWorld(), horizontal, vertical);
    const quality::CalibrationRun all = quality::RunSolver(turns);
    const quality::CalibrationRun few = quality::RunSolver(turns, 1, 20);
    EXPECT_EQ(all.recorded.horizontal.size(), turns.horizontal.size());
    EXPECT_GT(all.used.horizontal.size(), 40U);
    EXPECT_GT(all.used.vertical.size(), 40U);
    EXPECT_NEAR(static_cast<double>(few.used.horizontal.size()), 20.0, 6.0);
    EXPECT_NEAR(static_cast<double>(few.used.vertical.size()), 20.0, 6.0);
}

TEST_F(SolverRun, UsesAllSamplesUnscreened)
{
    const quality::CalibrationTurns turns = turnmaker::MakeTurns(turnmaker::TriangularWorld());
    const quality::CalibrationRun run = quality::RunSolverUnscreened(turns, 2);
    EXPECT_EQ(run.used.horizontal.size(), turns.horizontal.size());
    EXPECT_EQ(run.recorded.vertical.size(), turns.vertical.size());
    EXPECT_EQ(run.sensorType, 2);
    EXPECT_EQ(run.solverAnswer, 1);
}

TEST_F(SolverRun, FreesEverySampleWhenMemoryRunsOut)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "allocations cannot be made to fail";
    turnmaker::Plan horizontal = turnmaker::HorizontalPlan();
    turnmaker::Plan vertical = turnmaker::VerticalPlan();
    horizontal.samples = vertical.samples = 30;
    const quality::CalibrationTurns turns =
        turnmaker::MakeTurns(turnmaker::TriangularWorld(), horizontal, vertical);
    const auto failEach = [&turns] {
        return reference::ForEveryFailingAllocation([&turns](reference::AllocationRound& round) {
            try {
                round.Run([&turns] { return quality::RunSolver(turns).solverAnswer; });
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(round.HasFailed());
            }
        });
    };
    failEach(); // what is allocated once for good
    const long held = reference::HeldBlocks();
    EXPECT_GT(failEach(), 60) << "two turns of 30 samples";
    EXPECT_EQ(reference::HeldBlocks(), held);
}

} // namespace
