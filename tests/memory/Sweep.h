// SPDX-License-Identifier: MIT
//
// One row of the allocation sweep: an operation whose k-th allocation fails, for every k, and then all
// from the k-th on. After each failure the operation has happened whole or not at all (or has left
// what its header says), no block of memory is lost, and the same call then gives what it gives
// where memory sufficed.
//
//   struct State { CString text = kLong; CString result; };
//   Operation<State>("CString::Mid", Shortage::Throws, [](State& s) { s.result = s.text.Mid(3); },
//                    [](const State& s) { return Text(s.result); });
#pragma once

#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <new>
#include <ostream>
#include <string>

namespace sweep {

/// What running out of memory is to the caller.
enum class Shortage {
    Throws,  // std::bad_alloc
    Reports, // a result that says so; nothing is thrown
    Never,   // the operation allocates nothing
};

struct Row
{
    std::string
        covers; // as tests/abi lists them, without parameters and blanks; separated by blanks
    std::function<void()> check;
    std::function<void()> checkOurs = {}; // the same while only our own allocations fail
};

inline void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.covers;
}

/// What an operation may leave where it failed, beside its object as it was.
template <class State>
struct AfterFailure
{
    std::function<bool(const State&)> isFailure; // whether this is what the header says
    std::function<void(State&)> restore;         // what the host does before it tries again
};

/// A number with all its bits.
inline std::string Text(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%a ", value);
    return text;
}

namespace detail {

template <class State>
struct Operation
{
    Shortage shortage;
    std::function<void(State&)> run;
    std::function<std::string(const State&)> describe;
    AfterFailure<State> after;
    reference::Whose whose;

    std::string before, once, twice; // descriptions of an untouched run

    void RunUntouched()
    {
        State state;
        before = describe(state);
        run(state);
        once = describe(state);
        run(state);
        twice = describe(state);
    }

    void CheckFailure(State& state, const std::string& left) const
    {
        const bool asItWas = left == before;
        if (left == once) {
            run(state);
            EXPECT_EQ(describe(state), twice) << "after a call that went without the memory";
            return;
        }
        const bool asDocumented = after.isFailure && after.isFailure(state);
        EXPECT_TRUE(asItWas || asDocumented) << "left: " << left;
        if (after.restore) after.restore(state);
        run(state);
        EXPECT_EQ(describe(state), once) << "the same call after a failure";
    }

    void Attempt(reference::AllocationRound& round) const
    {
        State state;
        bool threw = false;
        try {
            round.Run([&] { run(state); });
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        const std::string left = describe(state);
        if (round.HasFailed()) {
            EXPECT_TRUE(!threw || shortage == Shortage::Throws) << "std::bad_alloc came out";
            CheckFailure(state, left);
        } else {
            EXPECT_FALSE(threw);
            EXPECT_EQ(left, once);
        }
    }

    long Sweep(const reference::Pace& pace) const
    {
        return reference::ForEveryFailingAllocation(
            [this](reference::AllocationRound& round) { Attempt(round); }, pace, whose);
    }

    void Check(const reference::Pace& pace)
    {
        RunUntouched();
        EXPECT_NE(once, before) << "nothing to see";
        Sweep({20, 41 * pace.step}); // what is allocated once for good
        const long held = reference::HeldBlocks();
        const long failures = Sweep(pace);
        EXPECT_EQ(reference::HeldBlocks(), held) << "blocks of memory are lost";
        if (shortage == Shortage::Never)
            EXPECT_EQ(failures, 0) << "it allocates";
        else
            EXPECT_GT(failures, 0) << "it allocates nothing";
    }
};

} // namespace detail

/// @param State  what the operation works on, as before the first call; its results are such that
///               describe() tells them from those of a call that did nothing
/// @param pace   for operations of many thousand allocations
template <class State>
Row Operation(std::string covers, Shortage shortage, std::function<void(State&)> run,
              std::function<std::string(const State&)> describe, AfterFailure<State> after = {},
              reference::Pace pace = {})
{
    const auto check = [=](reference::Whose whose) {
        detail::Operation<State>{shortage, run, describe, after, whose, {}, {}, {}}.Check(pace);
    };
    return {std::move(covers), [check] { check(reference::Whose::Everybodys); },
            [check] { check(reference::Whose::Ours); }};
}

/// Operations that allocate nothing and whose results other tests look at.
inline Row WithoutMemory(std::string covers, std::function<void()> run)
{
    return {std::move(covers), [run = std::move(run)] {
                run(); // what is allocated once for good
                const long before = reference::Allocations();
                run();
                EXPECT_EQ(reference::Allocations(), before) << "it allocates";
            }};
}

/// The same with an object to work on.
template <class State>
Row WithoutMemory(std::string covers, std::function<void(State&)> run)
{
    return {std::move(covers), [run = std::move(run)] {
                State state;
                run(state); // what is allocated once for good
                const long before = reference::Allocations();
                run(state);
                EXPECT_EQ(reference::Allocations(), before) << "it allocates";
            }};
}

} // namespace sweep
