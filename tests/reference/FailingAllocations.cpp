// SPDX-License-Identifier: MIT
//
// A file of its own, so that no call of these functions is compiled into its caller.
#include "tests/reference/FailingAllocations.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <limits>
#include <new>

// clang++ links its sanitizers into the program, where a second malloc cannot stand before theirs:
// nothing is replaced then, CanFailAllocations says so, and the tests skip themselves.
#if defined(__clang__)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)                            \
    || __has_feature(thread_sanitizer)
#define TILTPOLE_KEEPS_ALLOCATOR
#endif
#endif

namespace {

struct State
{
    long count = 0;
    long held = 0; // blocks
    long firstToFail = std::numeric_limits<long>::max();
    long lastToFail = 0;
    bool hasFailed = false;
    bool isResolving = false;
};

constinit thread_local State state;

} // namespace

#if !defined(TILTPOLE_KEEPS_ALLOCATOR)

namespace {

// Whether the allocation that begins now is to fail.
bool Fails()
{
    ++state.count;
    const bool fails = state.firstToFail <= state.count && state.count <= state.lastToFail;
    state.hasFailed = state.hasFailed || fails;
    return fails;
}

// `memory` is a block that has been given, or null.
template <class Pointer>
Pointer Given(Pointer memory)
{
    if (memory != nullptr) ++state.held;
    return memory;
}

// The allocator's own function behind the one that this file puts in front of it.
template <class Result, class... Arguments>
Result CallNext(Result (*&known)(Arguments...), const char* name, Result failure,
                Arguments... arguments)
{
    if (known == nullptr) {
        if (state.isResolving) return failure; // dlsym allocates; it copes with a refusal
        state.isResolving = true;
        known = reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name));
        state.isResolving = false;
        if (known == nullptr) std::abort();
    }
    return known(arguments...);
}

void* NoMemory()
{
    errno = ENOMEM;
    return nullptr;
}

void* New(std::size_t size) noexcept
{
    return std::malloc(size > 0 ? size : 1);
}

void* NewOrThrow(std::size_t size)
{
    if (void* memory = New(size)) return memory;
    throw std::bad_alloc();
}

void* NewOrThrow(std::size_t size, std::align_val_t alignment)
{
    void* memory = nullptr;
    if (::posix_memalign(&memory, static_cast<std::size_t>(alignment), size > 0 ? size : 1) != 0)
        throw std::bad_alloc();
    return memory;
}

void Delete(void* memory) noexcept
{
    std::free(memory);
}

} // namespace

extern "C" void* malloc(std::size_t size) noexcept
{
    static void* (*next)(std::size_t) = nullptr;
    return Fails() ? NoMemory() : Given(CallNext<void*>(next, "malloc", nullptr, size));
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    static void* (*next)(std::size_t, std::size_t) = nullptr;
    return Fails() ? NoMemory() : Given(CallNext<void*>(next, "calloc", nullptr, count, size));
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept
{
    static void* (*next)(void*, std::size_t) = nullptr;
    if (Fails()) return NoMemory();
    void* moved = CallNext<void*>(next, "realloc", nullptr, memory, size);
    if (memory == nullptr) return Given(moved);
    if (size == 0) --state.held; // freed
    return moved;
}

extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    static void* (*next)(std::size_t, std::size_t) = nullptr;
    return Fails() ? NoMemory()
                   : Given(CallNext<void*>(next, "aligned_alloc", nullptr, alignment, size));
}

extern "C" int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept
{
    static int (*next)(void**, std::size_t, std::size_t) = nullptr;
    if (Fails()) return ENOMEM;
    const int error = CallNext(next, "posix_memalign", ENOMEM, memory, alignment, size);
    if (error == 0) Given(*memory);
    return error;
}

extern "C" void free(void* memory) noexcept
{
    static void (*next)(void*) = nullptr;
    if (memory == nullptr) return;
    if (next == nullptr) {
        if (state.isResolving) return; // what dlsym gives back before free is known stays taken
        state.isResolving = true;
        next = reinterpret_cast<void (*)(void*)>(::dlsym(RTLD_NEXT, "free"));
        state.isResolving = false;
        if (next == nullptr) std::abort();
    }
    --state.held;
    next(memory);
}

void* operator new(std::size_t size)
{
    return NewOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return NewOrThrow(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return NewOrThrow(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return NewOrThrow(size, alignment);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return New(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return New(size);
}
void operator delete(void* memory) noexcept
{
    Delete(memory);
}
void operator delete[](void* memory) noexcept
{
    Delete(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    Delete(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    Delete(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept
{
    Delete(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept
{
    Delete(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept
{
    Delete(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept
{
    Delete(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    Delete(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    Delete(memory);
}

#endif

namespace reference {

long Allocations()
{
    return state.count;
}

long HeldBlocks()
{
    return state.held;
}

bool CanFailAllocations()
{
    const long before = Allocations();
    void* volatile used = ::operator new(1); // volatile: not left out by the compiler
    ::operator delete(used);
    used = std::malloc(1);
    std::free(used);
    return Allocations() == before + 2;
}

AllocationRound::Armed::Armed(AllocationRound& round) : m_round(round)
{
    constexpr long kNoEnd = std::numeric_limits<long>::max();
    state.hasFailed = false;
    state.firstToFail = state.count + round.m_k;
    state.lastToFail = round.m_which == Failing::One ? state.firstToFail : kNoEnd;
}

AllocationRound::Armed::~Armed()
{
    state.firstToFail = std::numeric_limits<long>::max();
    m_round.m_hasFailed = m_round.m_hasFailed || state.hasFailed;
}

} // namespace reference
