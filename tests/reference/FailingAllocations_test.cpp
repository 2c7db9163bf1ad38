// SPDX-License-Identifier: MIT
#include "tests/reference/FailingAllocations.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace {

using reference::AllocationRound;
using reference::Allocations;
using reference::CanFailAllocations;
using reference::Failing;
using reference::ForEveryFailingAllocation;
using reference::Whose;

class FailingAllocations : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    }
};

// An address that the compiler must take for used: it may leave out an allocation otherwise.
template <class Value>
Value* Used(Value* memory)
{
    Value* volatile kept = memory;
    return kept;
}

bool CanTake(void* memory)
{
    const bool taken = Used(memory) != nullptr;
    std::free(memory);
    return taken;
}

template <class Operation>
auto WithTheFirstFailing(Operation operation)
{
    return AllocationRound(1, Failing::One).Run(operation);
}

TEST_F(FailingAllocations, CountTheBlocksThatAreHeld)
{
    const long held = reference::HeldBlocks();
    int* number = Used(new int(1));
    int* numbers = Used(new int[3]);
    std::string* text = Used(new (std::nothrow) std::string);
    EXPECT_EQ(reference::HeldBlocks(), held + 3);
    delete number;
    delete[] numbers;
    delete text;
    EXPECT_EQ(reference::HeldBlocks(), held);
}

TEST_F(FailingAllocations, AreCounted)
{
    const long before = Allocations();
    delete Used(new int(7));
    EXPECT_TRUE(CanTake(std::malloc(8)));
    EXPECT_EQ(Allocations() - before, 2);
}

TEST_F(FailingAllocations, ReachEveryWayToAllocate)
{
    struct alignas(128) Wide
    {
        double values[16] = {};
    };
    EXPECT_THROW(WithTheFirstFailing([] { delete Used(new int(1)); }), std::bad_alloc);
    EXPECT_THROW(WithTheFirstFailing([] { delete[] Used(new int[9]); }), std::bad_alloc);
    EXPECT_THROW(WithTheFirstFailing([] { delete Used(new Wide); }), std::bad_alloc);
    EXPECT_EQ(WithTheFirstFailing([] { return Used(new (std::nothrow) int(1)); }), nullptr);
    EXPECT_FALSE(WithTheFirstFailing([] { return CanTake(std::malloc(8)); }));
    EXPECT_FALSE(WithTheFirstFailing([] { return CanTake(std::calloc(2, 8)); }));
    EXPECT_FALSE(WithTheFirstFailing([] { return CanTake(std::realloc(nullptr, 8)); }));
    EXPECT_FALSE(WithTheFirstFailing([] { return CanTake(std::aligned_alloc(64, 64)); }));
}

TEST_F(FailingAllocations, FailOneOrAllFromTheOneThatWasChosen)
{
    const auto takeThree = [] {
        std::string taken; // short enough to need no memory
        for (int i = 0; i < 3; ++i)
            taken += CanTake(std::malloc(8)) ? 'y' : 'n';
        return taken;
    };
    EXPECT_EQ(AllocationRound(2, Failing::One).Run(takeThree), "yny");
    EXPECT_EQ(AllocationRound(2, Failing::AllFrom).Run(takeThree), "ynn");
    AllocationRound beyond(4, Failing::AllFrom);
    EXPECT_EQ(beyond.Run(takeThree), "yyy");
    EXPECT_FALSE(beyond.HasFailed());
    EXPECT_EQ(takeThree(), "yyy") << "outside Run nothing fails";
}

// Those of a toolkit are not: tests/memory/ControlsProgram.cpp.
TEST_F(FailingAllocations, AreOurOwnWhereTheLanguagesLibraryMakesThemForUs)
{
    AllocationRound grown(1, Failing::One, Whose::Ours);
    EXPECT_THROW(grown.Run([] { return std::wstring(1, L'x').append(100, L'x').size(); }),
                 std::bad_alloc);
    AllocationRound copied(1, Failing::One, Whose::Ours);
    EXPECT_FALSE(copied.Run([] { return CanTake(::strdup("a text")); }));
}

TEST_F(FailingAllocations, AreTriedUntilNoneFails)
{
    long rounds = 0;
    const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
        ++rounds;
        const bool both = round.Run([] {
            const bool first = CanTake(std::malloc(8));
            return CanTake(std::malloc(8)) && first;
        });
        EXPECT_EQ(both, !round.HasFailed());
    });
    EXPECT_EQ(failures, 4) << "each of two allocations, alone and with all that follow";
    EXPECT_EQ(rounds, 6);
}

} // namespace
