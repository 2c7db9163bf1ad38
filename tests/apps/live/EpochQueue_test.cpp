// SPDX-License-Identifier: MIT
#include "apps/live/EpochQueue.h"

#include "apps/live/Backoff.h"
#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

std::shared_ptr<const std::string> Epoch(const char* text)
{
    return std::make_shared<const std::string>(text);
}

// Sends everything that waits, `step` bytes at a time.
std::string Drain(live::EpochQueue& queue, std::size_t step)
{
    std::string sent;
    while (!queue.IsEmpty()) {
        const std::string_view part = queue.Front().substr(0, step);
        sent += part;
        queue.Sent(part.size());
    }
    return sent;
}

TEST(EpochQueue, DropsTheOlderOfTwoThatWait)
{
    live::EpochQueue queue;
    for (const char* const text : {"one\n", "two\n", "three\n", "four\n"})
        queue.Push(Epoch(text));
    EXPECT_EQ(queue.Dropped(), 2U);
    EXPECT_EQ(Drain(queue, 100), "three\nfour\n");
}

TEST(EpochQueue, NeverDropsWhatIsHalfSent)
{
    live::EpochQueue queue;
    queue.Push(Epoch("one\n"));
    queue.Sent(1);
    for (const char* const text : {"two\n", "three\n", "four\n"})
        queue.Push(Epoch(text));
    EXPECT_EQ(queue.Dropped(), 2U);
    EXPECT_EQ(Drain(queue, 3), "ne\nfour\n");
}

TEST(EpochQueue, IsEmptyBetweenEpochs)
{
    live::EpochQueue queue;
    queue.Push(Epoch(""));
    queue.Push(nullptr);
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ(queue.Front(), "");
    queue.Push(Epoch("one\n"));
    EXPECT_EQ(Drain(queue, 1), "one\n");
    queue.Push(Epoch("two\n"));
    EXPECT_EQ(Drain(queue, 4), "two\n");
    EXPECT_EQ(queue.Dropped(), 0U);
}

TEST(EpochQueue, StaysEmptyWhereNothingWasSent)
{
    live::EpochQueue queue;
    queue.Sent(0);
    EXPECT_TRUE(queue.IsEmpty());
    queue.Push(Epoch("one\n"));
    EXPECT_EQ(queue.Front(), "one\n");
}

TEST(Backoff, WaitsLongerUntilAnAttemptSucceeds)
{
    live::Backoff backoff;
    for (const int expected : {500, 1000, 2000, 5000, 5000, 5000})
        EXPECT_EQ(backoff.Next(), milliseconds(expected));
    backoff.Succeed();
    EXPECT_EQ(backoff.Next(), milliseconds(500));
}

TEST(ByteAllowance, LetsSoManyBytesPassInASecond)
{
    live::ByteAllowance allowance(4096.0);
    EXPECT_EQ(allowance.Take(5000, milliseconds(0)), 4096U);
    EXPECT_EQ(allowance.Take(5000, milliseconds(0)), 0U);
    EXPECT_EQ(allowance.Take(5000, milliseconds(500)), 2048U);
    EXPECT_EQ(allowance.Take(100, milliseconds(1000)), 100U);
    EXPECT_EQ(allowance.Take(5000, milliseconds(60000)), 4096U);
}

} // namespace
