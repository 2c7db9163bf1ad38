// SPDX-License-Identifier: MIT
//
// Screening of reading matrices: DataFilter and MatrixFilter.
#include "tests/calibration/AdjustTools.h"

#include <gtest/gtest.h>

namespace {

// The smoother of one reading: gain and variance for a constant value, both noise variances 16.
std::vector<double> Smoothed(const std::vector<double>& readings)
{
    std::vector<double> smoothed{readings.at(0)};
    double variance = 25;
    for (std::size_t i = 1; i < readings.size(); ++i) {
        const double predicted = variance + 16;
        const double gain = predicted / (predicted + 16);
        variance = (1 - gain) * predicted;
        smoothed.push_back(smoothed.back() + gain * (readings[i] - smoothed.back()));
    }
    return smoothed;
}

// A matrix of six columns, each its own multiple of the first.
CSZMatrix SixColumns(const std::vector<double>& first)
{
    CSZMatrix matrix(static_cast<int>(first.size()), 6);
    for (int r = 0; r < matrix.getRowSize(); ++r)
        for (int c = 0; c < 6; ++c)
            matrix.SetData(r, c, first[static_cast<std::size_t>(r)] * (c + 1) + c);
    return matrix;
}

// A single-column matrix is thinned without being smoothed.
std::vector<double> Kept(const std::vector<double>& column)
{
    CSZMatrix matrix = ColumnOf(column);
    CInclineSensor_MagneticAdjust().MatrixFilter(matrix);
    std::vector<double> kept;
    for (int r = 0; r < matrix.getRowSize(); ++r)
        kept.push_back(matrix.GetData(r, 0));
    return kept;
}

TEST(DataFilter, ReplacesEveryRowByTheRunningEstimate)
{
    const std::vector<double> first{10, 14, 9, 30, 28};
    CSZMatrix matrix = SixColumns(first);
    CInclineSensor_MagneticAdjust adjust;
    adjust.DataFilter(matrix);
    const std::vector<double> expected = Smoothed(first);
    for (int r = 0; r < 5; ++r)
        for (int c = 0; c < 6; ++c)
            EXPECT_NEAR(matrix.GetData(r, c), expected[static_cast<std::size_t>(r)] * (c + 1) + c,
                        1e-11);
}

TEST(DataFilter, StartsAfreshEachTime)
{
    CSZMatrix once = SixColumns({10, 14, 9}), again = SixColumns({10, 14, 9});
    CInclineSensor_MagneticAdjust adjust;
    adjust.DataFilter(once);
    adjust.DataFilter(again);
    for (int r = 0; r < 3; ++r)
        EXPECT_EQ(once.GetData(r, 0), again.GetData(r, 0));
}

TEST(DataFilter, LeavesMatricesWithoutSixColumnsAlone)
{
    RecordedBoxes boxes;
    CInclineSensor_MagneticAdjust adjust;
    CSZMatrix three(4, 3, MatOnes), empty;
    adjust.DataFilter(three);
    adjust.DataFilter(empty);
    EXPECT_EQ(three.GetData(3, 2), 1);
    EXPECT_EQ(empty.getRowSize(), 0);
    EXPECT_TRUE(boxes.shown.empty());
}

TEST(Screening, LeavesOneRowUnchanged)
{
    CSZMatrix smoothed = SixColumns({12}), thinned = SixColumns({12});
    CInclineSensor_MagneticAdjust adjust;
    adjust.DataFilter(smoothed);
    adjust.MatrixFilter(thinned);
    for (const CSZMatrix& matrix : {smoothed, thinned}) {
        ASSERT_EQ(matrix.getRowSize(), 1);
        for (int c = 0; c < 6; ++c)
            EXPECT_EQ(matrix.GetData(0, c), 12 * (c + 1) + c);
    }
}

TEST(MatrixFilter, KeepsStepsInTheDirectionOfTheTurn)
{
    const struct
    {
        std::vector<double> given, kept;
        const char* why;
    } cases[] = {
        {{0, 10, 8, 20, 12, 14, -20, -18, -10},   {0, 10, 20, 12, -20, -10},  "up, down, up"                       },
        {{0, -10, -8, -20, -12, -14, 20, 18, 10}, {0, -10, -20, -12, 20, 10}, "down, up, down"                     },
        {{0, 2.9, 5, 6, 8},                       {0, 5, 8},                  "steps of less than 3 are dropped"   },
        {{0, 3, 6},                               {0, 3, 6},                  "a step of 3 is kept"                },
        {{5, 5, 5},                               {5},                        "all equal"                          },
        {{0, 30, 30, -30, -30, 9},                {0, 30, -30, 9},            "the first of equal extremes divides"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Kept(c.given), c.kept) << c.why;
}

TEST(MatrixFilter, SmoothsBeforeItThins)
{
    const std::vector<double> first{0, 40, 44, 90, 20, -60, -61, 10};
    CSZMatrix matrix = SixColumns(first);
    CInclineSensor_MagneticAdjust().MatrixFilter(matrix);
    const std::vector<double> expected = Kept(Smoothed(first));
    ASSERT_EQ(matrix.getRowSize(), static_cast<int>(expected.size()));
    ASSERT_EQ(matrix.getColSize(), 6);
    for (int r = 0; r < matrix.getRowSize(); ++r)
        EXPECT_NEAR(matrix.GetData(r, 5), expected[static_cast<std::size_t>(r)] * 6 + 5, 1e-10)
            << "whole rows are kept";
}

TEST(MatrixFilter, TakesAnEmptyMatrix)
{
    CSZMatrix empty;
    CInclineSensor_MagneticAdjust().MatrixFilter(empty);
    EXPECT_EQ(empty.getRowSize(), 0);
}

} // namespace
