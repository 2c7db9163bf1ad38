// SPDX-License-Identifier: MIT
#include "apps/live/Loop.h"

#include "tests/apps/live/Peers.h"
#include <gmock/gmock.h>
#include <sys/socket.h>

namespace {

using apps::test::RunUntil;
using namespace std::chrono_literals;

// Two ends of one connection; one has something to read from the beginning.
struct Ends
{
    Ends()
    {
        int both[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, both), 0);
        ours = live::Descriptor(both[0]);
        theirs = live::Descriptor(both[1]);
    }
    void Speak() const { EXPECT_EQ(write(theirs.Get(), "x", 1), 1); }
    live::Descriptor ours;
    live::Descriptor theirs;
};

// Runs until everything that was ready has called back.
void Settle(live::Loop& loop)
{
    int beats = 0;
    const auto beat = loop.Every(1ms, [&] { ++beats; });
    EXPECT_TRUE(RunUntil(loop, [&] { return beats > 3; }));
}

TEST(Loop, DoesNotCallATimerThatAnotherOneHasDestroyed)
{
    live::Loop loop;
    std::unique_ptr<live::Timer> timers[2];
    int calls = 0;
    for (int i = 0; i < 2; ++i) {
        timers[i] = loop.After(live::Instant::zero(), [&calls, &other = timers[1 - i]] {
            ++calls;
            other.reset();
        });
    }
    Settle(loop);
    EXPECT_EQ(calls, 1);
}

TEST(Loop, DoesNotCallForAWatchThatACallbackHasDestroyed)
{
    live::Loop loop;
    const Ends ends;
    ends.Speak();
    auto watch = loop.Observe(ends.ours.Get());
    int calls = 0;
    const auto end = [&] {
        ++calls;
        watch.reset();
    };
    watch->WhenReadable(end);
    watch->WhenWritable(end);
    watch->WhenWritable(end);
    Settle(loop);
    EXPECT_EQ(calls, 1);
}

TEST(Loop, DoesNotCallForAWatchThatEndsBeforeItRuns)
{
    live::Loop loop;
    const Ends ends;
    ends.Speak();
    auto watch = loop.Observe(ends.ours.Get());
    int calls = 0;
    watch->WhenReadable([&] { ++calls; });
    watch->WhenWritable([&] { ++calls; });
    watch.reset();
    Settle(loop);
    EXPECT_EQ(calls, 0);
}

TEST(Loop, CallsForReadingWhoeverAskedLast)
{
    live::Loop loop;
    const Ends ends;
    const auto watch = loop.Observe(ends.ours.Get());
    int first = 0;
    int second = 0;
    char byte = 0;
    watch->WhenReadable([&] { ++first; });
    watch->WhenReadable([&] {
        ++second;
        EXPECT_EQ(read(ends.ours.Get(), &byte, 1), 1);
    });
    ends.Speak();
    Settle(loop);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST(Loop, CallsNobodyForReadingWhereThatHasEnded)
{
    live::Loop loop;
    const Ends ends;
    const auto watch = loop.Observe(ends.ours.Get());
    int calls = 0;
    watch->WhenReadable([&] { ++calls; });
    watch->WhenReadable(nullptr);
    ends.Speak();
    Settle(loop);
    EXPECT_EQ(calls, 0);
}

TEST(Loop, DoesNotTellANameToWhoHasGone)
{
    live::Loop loop;
    int calls = 0;
    auto gone = loop.Resolve("127.0.0.1", [&](const live::Resolved&) { calls += 100; });
    const auto asked = loop.Resolve("127.0.0.1", [&](const live::Resolved& found) {
        EXPECT_EQ(found.addresses, std::vector<std::string>{"127.0.0.1"});
        ++calls;
    });
    gone.reset();
    EXPECT_TRUE(RunUntil(loop, [&] { return calls != 0; }));
    Settle(loop);
    EXPECT_EQ(calls, 1);
}

TEST(Loop, SaysWhyANameHasNoAddress)
{
    live::Loop loop;
    const std::string tooLong(64, 'a'); // between two dots at most 63
    std::optional<live::Resolved> answer;
    const auto asked = loop.Resolve(tooLong, [&](const live::Resolved& found) { answer = found; });
    ASSERT_TRUE(RunUntil(loop, [&] { return answer.has_value(); }));
    EXPECT_TRUE(answer->addresses.empty());
    EXPECT_NE(answer->problem, "");
}

} // namespace
