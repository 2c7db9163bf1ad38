// SPDX-License-Identifier: MIT
#include "framework/core/Array.h"

#include "tests/framework/core/TextOf.h"
#include "tests/reference/FailingAllocations.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <memory>
#include <new>
#include <rapidcheck/gtest.h>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

using Numbers = CArray<int, int>;

std::vector<int> ValuesOf(const Numbers& numbers)
{
    return {numbers.GetData(), numbers.GetData() + numbers.GetSize()};
}

void Fill(Numbers& numbers, std::initializer_list<int> values)
{
    numbers.RemoveAll();
    for (const int value : values)
        numbers.Add(value);
}

// Counts its objects that are alive.
struct Counted
{
    explicit Counted(int* count) : alive(count) { ++*alive; }
    Counted(const Counted& other) : alive(other.alive) { ++*alive; }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --*alive; }

    int* alive;
};

} // namespace

TEST(Array, StartsEmpty)
{
    const Numbers numbers;
    EXPECT_EQ(numbers.GetSize(), 0);
    EXPECT_EQ(numbers.GetCount(), 0);
    EXPECT_EQ(numbers.GetUpperBound(), -1);
    EXPECT_TRUE(numbers.IsEmpty());
    EXPECT_EQ(numbers.GetData(), nullptr);
    static_assert(!std::is_copy_constructible_v<Numbers> && !std::is_copy_assignable_v<Numbers>);
}

TEST(Array, ReturnsThePositionOfWhatItAdds)
{
    Numbers numbers;
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(numbers.Add(i * i), i);
    EXPECT_EQ(numbers.GetSize(), 100);
    EXPECT_EQ(numbers.GetUpperBound(), 99);
    EXPECT_EQ(numbers[99], 99 * 99);
    EXPECT_FALSE(numbers.IsEmpty());
}

TEST(Array, LetsEveryElementBeReadAndSet)
{
    Numbers numbers;
    Fill(numbers, {1, 2, 3});
    numbers.SetAt(0, 10);
    numbers[1] = 20;
    numbers.ElementAt(2) = 30;
    numbers.GetAt(2) += 1;
    const Numbers& same = numbers;
    EXPECT_EQ(same.GetAt(0), 10);
    EXPECT_EQ(same[1], 20);
    EXPECT_EQ(same.ElementAt(2), 31);
    EXPECT_EQ(same.GetData()[2], 31);
}

TEST(Array, SetSizeAddsZerosAndTruncates)
{
    Numbers numbers;
    Fill(numbers, {1, 2, 3});
    numbers.SetSize(5);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{1, 2, 3, 0, 0}));
    numbers.SetSize(2);
    numbers.SetSize(3);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{1, 2, 0}));
    numbers.SetSize(-1);
    EXPECT_EQ(numbers.GetSize(), 3);
    numbers.SetSize(0, 16);
    EXPECT_EQ(numbers.GetSize(), 0);
}

TEST(Array, SetAtGrowFillsTheGap)
{
    Numbers numbers;
    numbers.SetAtGrow(2, 7);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{0, 0, 7}));
    numbers.SetAtGrow(0, 5);
    numbers.SetAtGrow(-1, 9);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{5, 0, 7}));
}

TEST(Array, InsertsOneOrManyAndFillsTheGap)
{
    Numbers numbers;
    Fill(numbers, {1, 2, 3});
    numbers.InsertAt(1, 9);
    numbers.InsertAt(0, 8, 2);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{8, 8, 1, 9, 2, 3}));
    numbers.InsertAt(7, 5);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{8, 8, 1, 9, 2, 3, 0, 5}));
    numbers.InsertAt(0, 1, 0);
    numbers.InsertAt(0, 1, -1);
    numbers.InsertAt(-1, 1);
    EXPECT_EQ(numbers.GetSize(), 8);
}

TEST(Array, InsertsAnotherArrayOrItself)
{
    Numbers numbers;
    Fill(numbers, {1, 2});
    Numbers others;
    Fill(others, {7, 8, 9});
    numbers.InsertAt(1, &others);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{1, 7, 8, 9, 2}));
    others.InsertAt(1, &others);
    EXPECT_EQ(ValuesOf(others), (std::vector<int>{7, 7, 8, 9, 8, 9}));
    const Numbers none;
    others.InsertAt(0, &none);
    others.InsertAt(0, static_cast<const Numbers*>(nullptr));
    EXPECT_EQ(others.GetSize(), 6);
}

TEST(Array, RemovesWhatIsThere)
{
    Numbers numbers;
    Fill(numbers, {0, 1, 2, 3, 4});
    numbers.RemoveAt(1);
    numbers.RemoveAt(2, 9);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{0, 2}));
    numbers.RemoveAt(2);
    numbers.RemoveAt(-1);
    numbers.RemoveAt(0, 0);
    numbers.RemoveAt(0, -1);
    EXPECT_EQ(numbers.GetSize(), 2);
    numbers.RemoveAll();
    EXPECT_TRUE(numbers.IsEmpty());
}

TEST(Array, AppendsAndCopiesAnotherArrayOrItself)
{
    Numbers numbers;
    Fill(numbers, {1, 2, 3});
    EXPECT_EQ(numbers.Append(numbers), 3);
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{1, 2, 3, 1, 2, 3}));
    numbers.Copy(numbers);
    EXPECT_EQ(numbers.GetSize(), 6);
    Numbers other;
    other.Add(5);
    other.Copy(numbers);
    EXPECT_EQ(ValuesOf(other), ValuesOf(numbers));
    other[0] = 99;
    EXPECT_EQ(numbers[0], 1);
}

TEST(Array, MayBeGivenItsOwnElements)
{
    CArray<CString> texts; // arguments by reference
    texts.Add(L"a text that does not fit a small buffer");
    for (int i = 0; i < 100; ++i)
        texts.Add(texts[0]);
    texts.InsertAt(0, texts[50]);
    texts.SetAtGrow(1000, texts[50]);
    EXPECT_EQ(texts[100], L"a text that does not fit a small buffer");
    EXPECT_EQ(texts[0], texts[1000]);
    EXPECT_TRUE(texts[999].IsEmpty());
}

TEST(Array, DestroysEveryElementOnce)
{
    int alive = 0;
    {
        CArray<Counted> objects;
        for (int i = 0; i < 10; ++i)
            objects.Add(Counted(&alive));
        EXPECT_EQ(alive, 10);
        objects.RemoveAt(3, 4);
        EXPECT_EQ(alive, 6);
        objects.Append(objects);
        EXPECT_EQ(alive, 12);
        objects.FreeExtra();
        EXPECT_EQ(alive, 12);
        objects.RemoveAll();
        EXPECT_EQ(alive, 0);
        objects.Add(Counted(&alive));
    }
    EXPECT_EQ(alive, 0);
}

TEST(Array, MovesItsStoreRarelyWhileItGrows)
{
    Numbers numbers;
    int moves = 0;
    const int* data = numbers.GetData();
    for (int i = 0; i < 1'000'000; ++i) {
        numbers.Add(i);
        moves += numbers.GetData() != data ? 1 : 0;
        data = numbers.GetData();
        // log2(10^6) = 20 times twice as much, a few more while it is small.
        ASSERT_LT(moves, 25);
    }
}

TEST(Array, GrowsByNoLessThanRequested)
{
    Numbers numbers;
    numbers.SetSize(0, 1000);
    numbers.Add(0);
    const int* data = numbers.GetData();
    for (int i = 1; i < 1000; ++i)
        numbers.Add(i);
    EXPECT_EQ(numbers.GetData(), data);
}

TEST(Array, FreeExtraKeepsTheElements)
{
    Numbers numbers;
    Fill(numbers, {1, 2, 3});
    numbers.FreeExtra();
    EXPECT_EQ(ValuesOf(numbers), (std::vector<int>{1, 2, 3}));
    numbers.SetSize(0);
    numbers.FreeExtra();
    EXPECT_EQ(numbers.GetData(), nullptr);
    numbers.Add(4);
    EXPECT_EQ(ValuesOf(numbers), std::vector<int>{4});
}

TEST(Array, StoresBoolsAndPointersContiguously)
{
    CArray<bool, bool> flags;
    flags.Add(true);
    flags.Add(false);
    bool* first = flags.GetData();
    EXPECT_TRUE(first[0]);
    EXPECT_FALSE(first[1]);
    CArray<int*, int*> pointers;
    pointers.SetSize(3);
    EXPECT_EQ(pointers[2], nullptr);
}

RC_GTEST_PROP(Array, BehavesLikeAVectorUnderAnyOperations,
              (const std::vector<std::uint32_t>& steps))
{
    Numbers numbers;
    std::vector<int> model;
    int next = 1;
    for (const std::uint32_t step : steps) {
        const auto size = static_cast<std::uint32_t>(model.size());
        const std::uint32_t at = (step / 8) % (size + 1);
        const std::uint32_t count = step / 64 % 5;
        switch (step % 8) {
        case 0:
        case 1:
            numbers.Add(next);
            model.push_back(next);
            break;
        case 2:
            numbers.InsertAt(at, next, count);
            model.insert(model.begin() + at, count, next);
            break;
        case 3: {
            numbers.RemoveAt(at, count);
            const auto last = std::min(size, at + count);
            model.erase(model.begin() + at, model.begin() + last);
            break;
        }
        case 4:
            numbers.SetSize(at + count);
            model.resize(at + count);
            break;
        case 5:
            numbers.FreeExtra();
            break;
        case 6: {
            numbers.InsertAt(at, &numbers);
            const std::vector<int> copy = model;
            model.insert(model.begin() + at, copy.begin(), copy.end());
            break;
        }
        default:
            numbers.SetAtGrow(at, next);
            if (at == size) model.push_back(next);
            model[at] = next;
        }
        ++next;
        if (model.size() > 1000) {
            numbers.RemoveAll();
            model.clear();
        }
        RC_ASSERT(ValuesOf(numbers) == model);
    }
}

namespace {

// An element whose moves can be made to throw; it counts the objects that live.
struct Moody
{
    static inline int alive = 0;
    static inline int movesLeft = 0;

    Moody() { ++alive; }
    Moody(const Moody&) { ++alive; }
    Moody(Moody&&)
    {
        if (movesLeft-- <= 0) throw std::runtime_error("no move");
        ++alive;
    }
    Moody& operator=(const Moody&) = default;
    ~Moody() { --alive; }
};

} // namespace

TEST(Array, ReleasesItsNewStoreWhenAMoveThrows)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    {
        CArray<Moody> array;
        array.SetSize(3);
        Moody::movesLeft = 2;
        const auto heldBefore = ::mallinfo2().uordblks;
        for (int i = 0; i < 100; ++i) {
            Moody::movesLeft = 2;
            EXPECT_THROW(array.SetSize(5000), std::runtime_error);
        }
        EXPECT_LT(::mallinfo2().uordblks, heldBefore + 5000) << "bytes held";
        EXPECT_EQ(array.GetSize(), 3);
        EXPECT_EQ(Moody::alive, 3);
    }
    EXPECT_EQ(Moody::alive, 0);
}

TEST(Array, KeepsItsElementsWhereMemoryRunsOut)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    const long failures = reference::ForEveryFailingAllocation([](auto& round) {
        CArray<int, int> array;
        array.Add(1);
        array.Add(2);
        try {
            round.Run([&] {
                for (int i = 3; i <= 20; ++i)
                    array.Add(i);
            });
            EXPECT_EQ(array.GetSize(), 20);
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(round.HasFailed());
        }
        for (int i = 0; i < array.GetSize(); ++i)
            EXPECT_EQ(array[i], i + 1);
    });
    EXPECT_GT(failures, 0);
}

TEST(Array, InsertsNoArrayBeforeItsStart)
{
    CArray<int, int> some;
    some.Add(1);
    CArray<int, int> more;
    more.Add(2);
    some.InsertAt(-1, &more);
    EXPECT_EQ(some.GetSize(), 1);
    EXPECT_EQ(some[0], 1);
}
