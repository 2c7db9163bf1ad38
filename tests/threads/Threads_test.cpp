// SPDX-License-Identifier: MIT
//
// What docs/threads.md allows, done by several threads at once. ./dev tsan runs it under the thread
// sanitizer, which sees a race whatever the outcome.
#include "calibration/InclineSensor_Filter_XY.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "framework/core/MessageBox.h"
#include "positioning/InclineSensor_Position.h"
#include "tests/ScratchFolder.h"
#include "tests/geometry/PoleSets.h"
#include "tests/reference/Turns.h"
#include "tests/threads/InThreads.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>

namespace {

using threads::InThreads;
using threads::kThreads;

xyhCoordinate TipBy(CInclineSensor_Position& pole)
{
    xyhCoordinate point{100.0, 200.0, 300.0};
    for (const PoseSensorData& given : turns::Make({.samples = 200}, turns::TurnAxis::Horizontal)) {
        PoseSensorData sample = given;
        sample.dRoll = 10.0;
        pole.Position(sample, 2.0, point);
    }
    return point;
}

TEST(Threads, MeasureWithPolesOfTheirOwn)
{
    CInclineSensor_Position alone;
    const xyhCoordinate expected = TipBy(alone);
    std::array<xyhCoordinate, kThreads> tips;
    InThreads([&](int i) {
        CInclineSensor_Position pole;
        tips[static_cast<std::size_t>(i)] = TipBy(pole);
    });
    for (const xyhCoordinate& tip : tips) {
        EXPECT_EQ(tip.x, expected.x);
        EXPECT_EQ(tip.y, expected.y);
        EXPECT_EQ(tip.h, expected.h);
    }
}

TEST(Threads, LoadAParameterFileThatOthersReplace)
{
    const ScratchFolder folder;
    const CString path = folder.Path("pole.cfg").c_str();
    CInclineSensor_Position first;
    first.SetMagneticBiasAngle_A(1.0);
    first.SetMagneticBiasAngle_B(1.0);
    ASSERT_EQ(first.ConfigSave(path), 1);
    std::atomic<int> mixed{0};
    InThreads([&](int i) {
        for (int round = 1; round <= 20; ++round) {
            CInclineSensor_Position pole;
            if (i % 2 == 0) {
                pole.SetMagneticBiasAngle_A(round);
                pole.SetMagneticBiasAngle_B(round);
                mixed += pole.ConfigSave(path) == 1 ? 0 : 1;
            } else {
                mixed += pole.ConfigRead(path) == 1 ? 0 : 1;
                mixed += pole.GetMagneticBiasAngle_A() == pole.GetMagneticBiasAngle_B() ? 0 : 1;
            }
        }
    });
    EXPECT_EQ(mixed, 0);
}

TEST(Threads, FilterCalibrateAndSearchWithObjectsOfTheirOwn)
{
    const auto horizontal = turns::Make({}, turns::TurnAxis::Horizontal);
    const auto vertical = turns::Make({}, turns::TurnAxis::Vertical);
    std::array<double, kThreads> scales{};
    std::array<int, kThreads> kept{};
    std::array<int, kThreads> grades{};
    InThreads([&](int i) {
        const auto at = static_cast<std::size_t>(i);
        CInclineSensor_Filter_XY filter;
        CInclineSensor_MagneticAdjust adjust;
        for (const PoseSensorData& sample : horizontal) {
            filter.Add(new PoseSensorData(sample));
            adjust.Horizontal_Add(&sample);
        }
        for (const PoseSensorData& sample : vertical)
            adjust.Vertical_Add(&sample);
        const std::unique_ptr<turns::Samples> screened(filter.Filter());
        kept[at] = screened ? static_cast<int>(screened->GetSize()) : 0;
        if (adjust.Adjust() == 1) scales[at] = adjust.GetCorrectPar_A().b;
        grades[at] = poles::Solve(poles::Antennas({}, 7), 2.0).state.nStatus;
    });
    EXPECT_GT(kept[0], 0);
    EXPECT_GT(scales[0], 0.0);
    for (std::size_t i = 1; i < kThreads; ++i) {
        EXPECT_EQ(kept[i], kept[0]);
        EXPECT_EQ(scales[i], scales[0]);
        EXPECT_EQ(grades[i], grades[0]);
    }
}

TEST(Threads, ShowMessagesAtOnceByOneHandler)
{
    static std::atomic<int> shown{0};
    const auto before =
        framework::SetMessageBoxHandler([](const wchar_t*, const wchar_t*, unsigned) {
            ++shown;
            return IDOK;
        });
    InThreads([](int) {
        CKFilter filter;
        for (int i = 0; i < 50; ++i)
            filter.Filter(CSZMatrix(1, 1), CSZMatrix(1, 1));
    });
    framework::SetMessageBoxHandler(before);
    EXPECT_EQ(shown, kThreads * 50);
}

// One matrix and one set of texts that nobody changes.
TEST(Threads, ReadWhatNobodyChanges)
{
    const CSZMatrix matrix(12, 12, MatIdentity);
    const CString text(L"a;b;c");
    std::atomic<int> wrong{0};
    InThreads([&](int) {
        for (int i = 0; i < 50; ++i) {
            wrong += (matrix * matrix).trace() == 12.0 ? 0 : 1;
            int start = 0;
            wrong += text.Tokenize(L";", start) == L"a" ? 0 : 1;
        }
    });
    EXPECT_EQ(wrong, 0);
}

} // namespace
