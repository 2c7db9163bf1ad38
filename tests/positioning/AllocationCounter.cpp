// SPDX-License-Identifier: MIT
//
// Apart from the tests, so that no call of these is compiled into its caller.
#include "tests/positioning/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {

long count = 0;

void* Allocate(std::size_t size)
{
    ++count;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}
void* operator new[](std::size_t size)
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

long Allocations()
{
    return count;
}
