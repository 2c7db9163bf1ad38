// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/FieldOfPoint.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using cli::MarkDisturbed;
using cli::WaitingRow;

constexpr field::FieldShape kUndisturbed{500.0, 60.0};

// A plumb pole at rest in the field, 50 rows a second; its pitch is off by 10 degrees, so that the
// dip by pitch and roll is, too.
std::vector<WaitingRow> AtRest(std::size_t count)
{
    std::vector<WaitingRow> rows(count);
    for (std::size_t i = 0; i < count; ++i) {
        field::InertialSample& sample = rows[i].sample;
        sample.seconds = 0.02 * static_cast<double>(i);
        sample.acceleration = {0.0, 0.0, 1.0};
        sample.magnetic = {250.0, 0.0, -433.0};
        sample.tilt.pitch = 10.0;
    }
    return rows;
}

bool IsDisturbed(std::vector<WaitingRow> rows, bool gyros = true)
{
    const bool spans = !MarkDisturbed(rows, kUndisturbed, 1, gyros).disturbances.empty();
    const bool marked = std::any_of(rows.begin(), rows.end(),
                                    [](const WaitingRow& row) { return row.sample.disturbed; });
    EXPECT_EQ(spans, marked);
    return spans;
}

TEST(FieldOfPoint, TakesTheVerticalOfGyrosAndAccelerometers)
{
    EXPECT_FALSE(IsDisturbed(AtRest(400)));
    EXPECT_TRUE(IsDisturbed(AtRest(400), false)) << "that of pitch and roll";
}

TEST(FieldOfPoint, TakesTheVerticalOfPitchAndRollInPiecesOfLessThanTwoSeconds)
{
    EXPECT_TRUE(IsDisturbed(AtRest(95)));
    std::vector<WaitingRow> paused = AtRest(400);
    std::vector<WaitingRow> repeated = paused;
    for (std::size_t i = 0; i < paused.size(); ++i) {
        const std::size_t piece = i / 95;
        const auto pieces = static_cast<double>(piece);
        paused[i].sample.seconds += 0.35 * pieces;
        repeated[i].sample.seconds -= 0.02 * pieces;
    }
    EXPECT_TRUE(IsDisturbed(paused)) << "between pauses";
    EXPECT_TRUE(IsDisturbed(repeated)) << "between times that repeat";
    std::vector<WaitingRow> late = AtRest(400);
    for (std::size_t i = 200; i < late.size(); ++i)
        late[i].sample.seconds += 0.29;
    EXPECT_FALSE(IsDisturbed(late)) << "a row that is missing is no pause";
}

TEST(FieldOfPoint, KeepsTheFieldOfAThousandSamples)
{
    for (const std::size_t count : {1000U, 3000U, 5000U}) {
        std::vector<WaitingRow> rows = AtRest(count);
        const cli::FieldOfPoint found = MarkDisturbed(rows, kUndisturbed, 1, true);
        EXPECT_GE(found.shapes.size(), 800U);
        EXPECT_LE(found.shapes.size(), 1024U);
        for (const field::FieldShape& shape : found.shapes)
            EXPECT_NEAR(shape.strength, 500.0, 0.1);
    }
}

} // namespace
