// SPDX-License-Identifier: MIT
#include "tests/soak/Measured.h"

#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <vector>

namespace soak {
namespace {

using std::chrono::nanoseconds;

TEST(Histogram, FindsTheTimeThatAPartDoesNotExceed)
{
    Histogram times;
    for (int us = 1; us <= 1000; ++us)
        times.Add(std::chrono::microseconds(us));
    EXPECT_EQ(times.Count(), 1000);
    for (const double part : {0.001, 0.5, 0.99, 0.999}) {
        EXPECT_GE(times.Percentile(part), 1000.0 * part);
        EXPECT_LE(times.Percentile(part), 1016.0 * part);
    }
    EXPECT_EQ(times.Percentile(1.0), 1000.0);
    EXPECT_EQ(times.Most(), 1000.0);
}

TEST(Histogram, HidesNoSlowTimeAmongManyQuickOnes)
{
    Histogram times;
    for (int i = 0; i < 998; ++i)
        times.Add(nanoseconds(40));
    times.Add(std::chrono::milliseconds(3));
    times.Add(std::chrono::milliseconds(3));
    EXPECT_EQ(times.Percentile(0.998), 0.04);
    EXPECT_EQ(times.Percentile(0.999), 3000.0);
}

TEST(Histogram, TakesEveryTime)
{
    Histogram times;
    EXPECT_EQ(times.Percentile(0.5), 0.0);
    for (unsigned power = 0; power < 63; ++power) {
        Histogram one;
        one.Add(nanoseconds(std::int64_t{1} << power));
        EXPECT_EQ(one.Percentile(0.5), one.Most()) << power;
    }
    times.Add(nanoseconds(-1));
    EXPECT_EQ(times.Percentile(1.0), 0.0);
}

TEST(Held, CountsBlocksMemoryAndDescriptors)
{
    const Held before = HeldNow();
    const auto block = std::make_unique<std::vector<char>>(16U << 20U, 'x');
    const int open = ::open("/dev/null", O_RDONLY);
    const Held with = HeldNow();
    ::close(open);
    const long counted = reference::CanFailAllocations() ? 2 : 0;
    EXPECT_EQ(with.blocks - before.blocks, counted);
    EXPECT_GE(with.resident - before.resident, 15 << 10);
    EXPECT_EQ(with.descriptors - before.descriptors, 1);
    EXPECT_EQ(HeldNow().descriptors, before.descriptors);
}

} // namespace
} // namespace soak
