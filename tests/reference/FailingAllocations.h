// SPDX-License-Identifier: MIT
//
// Counts the memory that a test program allocates, and makes allocations fail on purpose.
//
// A test lists tests/reference/FailingAllocations.cpp among its sources. That file replaces
// operator new, malloc, calloc, realloc, aligned_alloc, posix_memalign and free for the whole program,
// shared libraries included; only the calling thread is counted and only what runs inside
// AllocationRound::Run fails.
//
//   const long failures = ForEveryFailingAllocation([&](AllocationRound& round) {
//       CInclineSensor_Position sensor;
//       const int result = round.Run([&] { return sensor.ConfigSave(path); });
//       if (!round.HasFailed()) EXPECT_EQ(result, 1);
//   });
//   EXPECT_GT(failures, 0);
#pragma once

#include <gtest/gtest.h>

namespace reference {

/// Allocations of this thread since it began.
long Allocations();

/// Blocks that this thread has been given less those that it has freed.
long HeldBlocks();

/// Whether allocations can be counted and made to fail here. They cannot where another tool has put
/// its own allocator in place (Valgrind, a sanitizer linked statically); a test then skips itself.
bool CanFailAllocations();

/// Which allocations of an operation fail: the k-th alone, or the k-th and all that follow.
enum class Failing { One, AllFrom };

/// Whose allocations are counted and fail: everybody's, or only those of this program and our
/// libraries, also where the language's library allocates for them. Those of a toolkit that does not
/// survive a failure of its own then do not fail.
enum class Whose { Everybodys, Ours };

/// One attempt at an operation, with the k-th allocation failing.
class AllocationRound
{
public:
    AllocationRound(long k, Failing which, Whose whose = Whose::Everybodys)
        : m_k(k), m_which(which), m_whose(whose)
    {}

    /// Runs `operation`, of which the k-th allocation fails (std::bad_alloc from operator new, null
    /// from malloc). Returns its result; an exception that leaves it leaves Run as well.
    template <class Operation>
    auto Run(Operation operation)
    {
        const Armed armed(*this);
        return operation();
    }

    /// Whether an allocation failed.
    bool HasFailed() const { return m_hasFailed; }
    /// Number of the first allocation that fails, from 1.
    long First() const { return m_k; }

private:
    class Armed
    {
    public:
        explicit Armed(AllocationRound& round);
        ~Armed();
        Armed(const Armed&) = delete;
        Armed& operator=(const Armed&) = delete;

    private:
        AllocationRound& m_round;
    };

    long m_k;
    Failing m_which;
    Whose m_whose;
    bool m_hasFailed = false;
};

/// The first `eachOne` allocations fail one by one, of those beyond every `step`-th.
struct Pace
{
    long eachOne = 1;
    long step = 1;
};

/// Calls `attempt(round)` with the first allocation failing, the second, and so on, until a round
/// ends in which none failed; then the same with all allocations failing from there on.
///
/// @param pace  for operations of many thousand allocations
/// @return how many rounds had a failing allocation
template <class Attempt>
long ForEveryFailingAllocation(Attempt attempt, const Pace& pace = {},
                               Whose whose = Whose::Everybodys)
{
    constexpr long kMostRounds = 100000;
    long failures = 0;
    for (const Failing which : {Failing::One, Failing::AllFrom}) {
        for (long k = 1;; k += k < pace.eachOne ? 1 : pace.step) {
            AllocationRound round(k, which, whose);
            {
                SCOPED_TRACE(testing::Message()
                             << "allocation " << k
                             << (which == Failing::One ? " fails" : " and all that follow fail"));
                attempt(round);
            }
            if (!round.HasFailed()) break;
            ++failures;
            if (k >= kMostRounds) {
                ADD_FAILURE() << "still allocating after " << kMostRounds << " rounds";
                break;
            }
        }
    }
    return failures;
}

} // namespace reference
