// SPDX-License-Identifier: MIT
//
// Whichever allocation fails: no exception escapes, nothing leaks, and a call that reports success
// has the same result as with enough memory.
#include "calibration/KFilter.h"
#include "tests/calibration/AdjustTools.h"
#include "tests/calibration/FilterTwin.h"
#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

using reference::AllocationRound;
using reference::ForEveryFailingAllocation;
using turns::TurnAxis;

// Handles message boxes without allocating.
class SilentBoxes
{
public:
    SilentBoxes()
        : m_before(framework::SetMessageBoxHandler(
            [](const wchar_t*, const wchar_t*, unsigned) { return IDOK; }))
    {}
    ~SilentBoxes() { framework::SetMessageBoxHandler(m_before); }
    SilentBoxes(const SilentBoxes&) = delete;
    SilentBoxes& operator=(const SilentBoxes&) = delete;

private:
    framework::MessageBoxHandler m_before;
};

std::vector<PoseSensorData*> EntriesOf(const turns::Samples& samples)
{
    return {samples.GetData(), samples.GetData() + samples.GetSize()};
}

class WithFailingAllocations : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!reference::CanFailAllocations()) GTEST_SKIP() << "another allocator is in place";
    }
};

template <class Filter>
class ShortOfMemory : public WithFailingAllocations
{
protected:
    // A filter with the recorded readings, whose azimuths repeat.
    void Fill()
    {
        for (const PoseSensorData& sample : turns::Recorded()) {
            filter.Add(new PoseSensorData(sample));
            if (array.GetSize() < 300) array.Add(new PoseSensorData(sample));
        }
        filter.IsComplete(&array);
    }

    void TearDown() override
    {
        for (INT_PTR i = 0; i < array.GetSize(); ++i)
            delete array[i];
    }

    // `stage` returns null, or the same result as with enough memory.
    template <class Stage>
    void CheckStage(Stage stage)
    {
        const std::unique_ptr<turns::Samples> whole(stage());
        ASSERT_NE(whole, nullptr);
        const std::vector<PoseSensorData*> expected = EntriesOf(*whole);
        const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
            const std::unique_ptr<turns::Samples> result(round.Run(stage));
            EXPECT_TRUE(result != nullptr || round.HasFailed());
            if (result != nullptr) {
                EXPECT_EQ(EntriesOf(*result), expected);
            }
        });
        EXPECT_GT(failures, 0);
    }

    Reach<Filter> filter;
    turns::Samples array;
};

using Filters = ::testing::Types<CInclineSensor_Filter_XY, CInclineSensor_Filter_XZ>;
TYPED_TEST_SUITE(ShortOfMemory, Filters);

TYPED_TEST(ShortOfMemory, AddFreesASampleThatItCannotRecord)
{
    const long failures = ForEveryFailingAllocation([](AllocationRound& round) {
        TypeParam fresh;
        std::vector<PoseSensorData*> samples;
        for (const auto& [x, v] : turns::kSquare)
            samples.push_back(new PoseSensorData(turns::At(x, v)));
        round.Run([&] {
            for (PoseSensorData* sample : samples)
                fresh.Add(sample);
        });
        EXPECT_EQ(fresh.GetCenterPar().nValid, round.HasFailed() ? 0 : 1)
            << "the tenth recorded sample makes the center valid";
    });
    EXPECT_GT(failures, 0);
}

TYPED_TEST(ShortOfMemory, FilterAndItsStagesReturnNull)
{
    this->Fill();
    const auto n = static_cast<int>(this->array.GetSize());
    this->CheckStage([&] { return this->filter.Filter(); });
    this->CheckStage([&] { return this->filter.Filter_ByTime(&this->array); });
    this->CheckStage([&] { return this->filter.Filter_ByDistance(&this->array); });
    this->CheckStage([&] { return this->filter.Filter_ByAzimuth(&this->array); });
    this->CheckStage([&] { return this->filter.Select(&this->array, n / 3); });
    this->CheckStage([&] { return this->filter.Select(&this->array, n + 1); });
}

TYPED_TEST(ShortOfMemory, SortLeavesTheArrayAsItWas)
{
    this->Fill();
    const std::vector<PoseSensorData*> before = EntriesOf(this->array);
    std::vector<PoseSensorData*> mirror = before;
    literal::Filter::Sort(mirror);
    const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
        turns::Samples samples;
        samples.Copy(this->array);
        round.Run([&] { this->filter.Sort_ByAzimuth(&samples); });
        const std::vector<PoseSensorData*> after = EntriesOf(samples);
        EXPECT_TRUE(after == mirror || (round.HasFailed() && after == before));
    });
    EXPECT_GT(failures, 0);
}

class AdjustShortOfMemory : public WithFailingAllocations
{
protected:
    using Turn = std::vector<PoseSensorData>;

    // Adjust returns 0, or 1 with the same results as with enough memory.
    static void CheckAdjust(const Turn& horizontal, const Turn& vertical)
    {
        const OwnDataFolder folder;
        const SilentBoxes silent;
        CInclineSensor_MagneticAdjust expected;
        Load(expected, horizontal, vertical);
        const int solved = expected.Adjust();
        const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
            CInclineSensor_MagneticAdjust adjust;
            Load(adjust, horizontal, vertical);
            const int result = round.Run([&] { return adjust.Adjust(); });
            EXPECT_TRUE(result == solved || round.HasFailed());
            if (result == 0) return;
            EXPECT_EQ(adjust.GetCorrectPar_A().z0, expected.GetCorrectPar_A().z0);
            EXPECT_EQ(adjust.GetCorrectPar_B().y0, expected.GetCorrectPar_B().y0);
            EXPECT_EQ(adjust.GetCorrectPar_B().z0, expected.GetCorrectPar_B().z0);
            EXPECT_EQ(adjust.GetCoorTrans().dX, expected.GetCoorTrans().dX);
        });
        EXPECT_GT(failures, 0);
    }
};

TEST_F(AdjustShortOfMemory, ReportsAFailure)
{
    CheckAdjust(turns::Make({.samples = 60}, TurnAxis::Horizontal),
                turns::Make({.samples = 60}, TurnAxis::Vertical));
}

// The readings are so far from the origin that the sums over the turn are not used.
TEST_F(AdjustShortOfMemory, ReportsAFailureOfTheFitsToo)
{
    const turns::Shape far{.samples = 60, .offset = 9000};
    CheckAdjust(turns::Make(far, TurnAxis::Horizontal), turns::Make(far, TurnAxis::Vertical));
}

TEST_F(AdjustShortOfMemory, SurvivesItsDump)
{
    CheckAdjust(Turn(3), Turn(3));
}

TEST_F(AdjustShortOfMemory, AddLeavesASampleOut)
{
    const PoseSensorData sample;
    const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
        CInclineSensor_MagneticAdjust adjust;
        round.Run([&] { adjust.Horizontal_Add(&sample); });
        PoseSensorData out;
        EXPECT_EQ(adjust.Horizontal_Get(0, out), round.HasFailed() ? 0 : 1);
    });
    EXPECT_GT(failures, 0);
}

TEST_F(AdjustShortOfMemory, MatrixFilterKeepsTheSmoothedRows)
{
    CSZMatrix readings(60, 6);
    for (int r = 0; r < 60; ++r)
        for (int c = 0; c < 6; ++c)
            readings.SetData(r, c, 1000 * std::sin(r * 0.1 + c));
    CSZMatrix smoothed = readings, thinned = readings;
    CInclineSensor_MagneticAdjust().DataFilter(smoothed);
    CInclineSensor_MagneticAdjust().MatrixFilter(thinned);
    const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
        CSZMatrix given = readings;
        CInclineSensor_MagneticAdjust adjust;
        round.Run([&] { adjust.MatrixFilter(given); });
        const CSZMatrix& expected = round.HasFailed() ? smoothed : thinned;
        ASSERT_EQ(given.getRowSize(), expected.getRowSize());
        for (int r = 0; r < given.getRowSize(); ++r)
            ASSERT_EQ(given.GetData(r, 3), expected.GetData(r, 3)) << r;
    });
    EXPECT_GT(failures, 0);
}

// Matrices of order 8 need the heap.
TEST_F(AdjustShortOfMemory, KalmanFilterTakesTheStepOrNone)
{
    const SilentBoxes silent;
    const CSZMatrix I(8, 8, MatIdentity), O(8, 8), x0(8, 1), u(8, 1), z(8, 1, MatOnes);
    const CSZMatrix variance(8, 1, MatOnes);
    for (const bool asColumn : {false, true}) {
        const auto step = [&](CKFilter& filter) {
            filter.SetMatrixOrder(8, 8);
            filter.SetSystemMatrix(I, O, I, I, O);
            filter.SetNoise(I, I);
            filter.SetInitialData(x0, I);
            if (asColumn) filter.SetInitialVariance(variance);
            CKFilter copy(filter);
            return copy.Filter(z, u);
        };
        CKFilter whole;
        const double expected = step(whole).GetData(0, 0);
        const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
            CKFilter filter;
            const CSZMatrix estimate = round.Run([&] { return step(filter); });
            EXPECT_TRUE(estimate.GetData(0, 0) == expected || round.HasFailed());
            for (int i = 1; i < estimate.getRowSize(); ++i)
                EXPECT_EQ(estimate.GetData(i, 0), estimate.GetData(0, 0)) << "all are alike";
        });
        EXPECT_GT(failures, 0);
    }
}

} // namespace
