// SPDX-License-Identifier: MIT
//
// Two lanes against the scalar operations. Wider lanes are tested through the kernels.
#include "vector/Lanes.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

namespace {

using tiltpole::vector::Index;
using Pair = tiltpole::vector::Lanes<2>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The bits of both lanes.
void ExpectLanes(Pair lanes, double first, double second)
{
    double stored[2];
    lanes.Store(stored);
    const double expected[] = {first, second};
    EXPECT_EQ(std::memcmp(stored, expected, sizeof stored), 0)
        << stored[0] << ' ' << stored[1] << " instead of " << first << ' ' << second;
}

Pair Of(double first, double second)
{
    const double values[] = {first, second};
    return Pair::Load(values);
}

TEST(Lanes, ComputeLikeScalars)
{
    const Pair a = Of(1.0, -3.0);
    const Pair b = Of(0.1, 7.0);
    ExpectLanes(a + b, 1.0 + 0.1, -3.0 + 7.0);
    ExpectLanes(a - b, 1.0 - 0.1, -3.0 - 7.0);
    ExpectLanes(a * b, 1.0 * 0.1, -3.0 * 7.0);
    ExpectLanes(a / b, 1.0 / 0.1, -3.0 / 7.0);
    ExpectLanes(Root(Of(2.0, 4.0)), std::sqrt(2.0), 2.0);
}

TEST(Lanes, SpreadAScalarWithItsSign)
{
    ExpectLanes(Pair(0.0), 0.0, 0.0);
    ExpectLanes(Pair(-0.0), -0.0, -0.0);
    ExpectLanes(2.0 * Of(1.0, 2.0), 2.0, 4.0);
}

TEST(Lanes, TakeTheSecondOperandWhereOneIsNaN)
{
    ExpectLanes(Smaller(Of(kNaN, 1.0), Of(2.0, 3.0)), 2.0, 1.0);
    ExpectLanes(Smaller(Of(5.0, 3.0), Of(2.0, 3.0)), 2.0, 3.0);
}

TEST(Lanes, KeepOnlyWhatAMaskSelects)
{
    ExpectLanes(Where(Of(1.0, 2.0) > Of(0.0, 2.0), Of(-7.0, 8.0)), -7.0, 0.0);
    ExpectLanes(Where(Of(1.0, kNaN) > Of(0.0, 2.0), Of(-0.0, 8.0)), -0.0, 0.0);
}

TEST(Lanes, FlipSigns)
{
    ExpectLanes(SignOf(Of(-3.0, 3.0)), -0.0, 0.0);
    ExpectLanes(Flipped(Of(5.0, -0.0), Of(-0.0, -0.0)), -5.0, 0.0);
    ExpectLanes(Flipped(Of(5.0, -6.0), Of(0.0, 0.0)), 5.0, -6.0);
}

TEST(Lanes, AreGivenAndReadOneByOne)
{
    const Pair pair = Pair::Of(1.5, -2.5);
    EXPECT_EQ(pair[0], 1.5);
    EXPECT_EQ(pair[1], -2.5);
}

TEST(Lanes, LoadAndStoreNoMoreThanAsked)
{
    const double from[] = {1.0, 2.0};
    ExpectLanes(Pair::LoadPart(from, 1), 1.0, 0.0);
    ExpectLanes(Pair::LoadPart(from, 2), 1.0, 2.0);
    double to[] = {7.0, 8.0};
    Of(1.0, 2.0).StorePart(to, 1);
    EXPECT_EQ(to[0], 1.0);
    EXPECT_EQ(to[1], 8.0);
    Of(3.0, 4.0).StorePart(to, 2);
    EXPECT_EQ(to[1], 4.0);
}

TEST(Lanes, TakeTheSecondOperandWhereNeitherIsLarger)
{
    ExpectLanes(Larger(Of(1.0, 2.0), Of(2.0, 1.0)), 2.0, 2.0);
    ExpectLanes(Larger(Of(0.0, -0.0), Of(-0.0, 0.0)), -0.0, 0.0);
    ExpectLanes(Larger(Of(kNaN, kNaN), Of(1.0, -1.0)), 1.0, -1.0);
}

TEST(Lanes, ClearTheSign)
{
    ExpectLanes(Magnitude(Of(-0.0, -2.5)), 0.0, 2.5);
    ExpectLanes(Magnitude(Of(-kNaN, 3.0)), kNaN, 3.0);
}

TEST(Lanes, FindAndReplaceOneLane)
{
    const Pair a = Of(1.0, 5.0);
    EXPECT_TRUE(HoldsEqual(a, 5.0));
    EXPECT_FALSE(HoldsEqual(a, 2.0));
    EXPECT_FALSE(HoldsEqual(Of(kNaN, 1.0), kNaN));
    EXPECT_EQ(LargestOf(a), 5.0);
    EXPECT_EQ(LargestOf(Of(5.0, 1.0)), 5.0);
    ExpectLanes(Put(a, Pair::At(0), Of(7.0, 8.0)), 7.0, 5.0);
    ExpectLanes(Put(a, Pair::At(1), Of(7.0, 8.0)), 1.0, 8.0);
}

TEST(Lanes, CompareLaneByLane)
{
    std::int64_t truth[2];
    ((Of(1.0, 3.0) > 2.0) & (Of(1.0, 3.0) >= 3.0)).Store(truth);
    EXPECT_EQ(truth[0], 0);
    EXPECT_EQ(truth[1], -1);
    (Of(2.0, kNaN) <= 2.0).Store(truth);
    EXPECT_EQ(truth[0], -1);
    EXPECT_EQ(truth[1], 0);
}

} // namespace
