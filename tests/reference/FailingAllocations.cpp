// SPDX-License-Identifier: MIT
//
// A file of its own, so that no call of these functions is compiled into its caller.
#include "tests/reference/FailingAllocations.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <limits>
#include <link.h>
#include <new>
#include <string_view>
#include <unwind.h>

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
    // While a round runs:
    bool isArmed = false;
    bool isOfOursOnly = false;
    long candidates = 0; // to fail, so far
    long firstToFail = 0;
    long lastToFail = 0;
    bool hasFailed = false;
    bool isResolving = false;
};

constinit thread_local State state;

} // namespace

#if !defined(TILTPOLE_KEEPS_ALLOCATOR)

namespace {

// Where the code of this program and of our libraries lies, and that of the language's, which
// allocates for whoever calls it. All other code is somebody else's.
struct CodeMap
{
    struct Part
    {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        bool isOurs = false;
    };
    std::array<Part, 64> parts{};
    std::size_t count = 0;

    const Part* Find(std::uintptr_t address) const
    {
        for (std::size_t i = 0; i < count; ++i)
            if (parts[i].begin <= address && address < parts[i].end) return &parts[i];
        return nullptr;
    }
};

int AddCode(dl_phdr_info* info, std::size_t, void* map)
{
    auto& known = *static_cast<CodeMap*>(map);
    const std::string_view path(info->dlpi_name);
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const bool isOurs = path.empty() || name.starts_with("libtiltpole");
    const bool isOfTheLanguage = name.starts_with("libstdc++.") || name.starts_with("libc.")
                                 || name.starts_with("libgcc_s.");
    if (!isOurs && !isOfTheLanguage) return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type != PT_LOAD || (header.p_flags & PF_X) == 0) continue;
        if (known.count == known.parts.size()) std::abort();
        const std::uintptr_t begin = info->dlpi_addr + header.p_vaddr;
        known.parts[known.count++] = {begin, begin + header.p_memsz, isOurs};
    }
    return 0;
}

const CodeMap& Code()
{
    static const CodeMap map = [] {
        CodeMap made;
        dl_iterate_phdr(AddCode, &made);
        return made;
    }();
    return map;
}

// Frames of the stack, from the one that called the allocator outwards.
struct Walk
{
    std::uintptr_t caller = 0;
    bool hasBegun = false;
    bool endsInOurs = false;
};

_Unwind_Reason_Code Step(_Unwind_Context* frame, void* data)
{
    auto& walk = *static_cast<Walk*>(data);
    const std::uintptr_t address = _Unwind_GetIP(frame);
    walk.hasBegun = walk.hasBegun || address == walk.caller;
    if (!walk.hasBegun) return _URC_NO_REASON;
    const CodeMap::Part* const part = Code().Find(address);
    if (part && !part->isOurs) return _URC_NO_REASON; // on behalf of the next frame
    walk.endsInOurs = part != nullptr;
    return _URC_END_OF_STACK;
}

bool IsOurs(const void* caller)
{
    Walk walk;
    walk.caller = reinterpret_cast<std::uintptr_t>(caller);
    const CodeMap::Part* const part = Code().Find(walk.caller);
    if (!part || part->isOurs) return part != nullptr;
    _Unwind_Backtrace(Step, &walk);
    return walk.endsInOurs;
}

// Whether the allocation that begins now is to fail.
bool Fails(const void* caller)
{
    ++state.count;
    if (!state.isArmed || (state.isOfOursOnly && !IsOurs(caller))) return false;
    ++state.candidates;
    const bool fails =
        state.firstToFail <= state.candidates && state.candidates <= state.lastToFail;
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

void* Allocate(std::size_t size, const void* caller)
{
    static void* (*next)(std::size_t) = nullptr;
    return Fails(caller) ? NoMemory() : Given(CallNext<void*>(next, "malloc", nullptr, size));
}

int AllocateAligned(void** memory, std::size_t alignment, std::size_t size, const void* caller)
{
    static int (*next)(void**, std::size_t, std::size_t) = nullptr;
    if (Fails(caller)) return ENOMEM;
    const int error = CallNext(next, "posix_memalign", ENOMEM, memory, alignment, size);
    if (error == 0) Given(*memory);
    return error;
}

void* New(std::size_t size, const void* caller)
{
    return Allocate(size > 0 ? size : 1, caller);
}

void* NewOrThrow(std::size_t size, const void* caller)
{
    if (void* memory = New(size, caller)) return memory;
    throw std::bad_alloc();
}

void* NewOrThrow(std::size_t size, std::align_val_t alignment, const void* caller)
{
    void* memory = nullptr;
    if (AllocateAligned(&memory, static_cast<std::size_t>(alignment), size > 0 ? size : 1, caller)
        != 0)
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
    return Allocate(size, __builtin_return_address(0));
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    static void* (*next)(std::size_t, std::size_t) = nullptr;
    return Fails(__builtin_return_address(0))
               ? NoMemory()
               : Given(CallNext<void*>(next, "calloc", nullptr, count, size));
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept
{
    static void* (*next)(void*, std::size_t) = nullptr;
    if (Fails(__builtin_return_address(0))) return NoMemory();
    void* moved = CallNext<void*>(next, "realloc", nullptr, memory, size);
    if (memory == nullptr) return Given(moved);
    if (size == 0) --state.held; // freed
    return moved;
}

extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    static void* (*next)(std::size_t, std::size_t) = nullptr;
    return Fails(__builtin_return_address(0))
               ? NoMemory()
               : Given(CallNext<void*>(next, "aligned_alloc", nullptr, alignment, size));
}

extern "C" int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept
{
    return AllocateAligned(memory, alignment, size, __builtin_return_address(0));
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
    return NewOrThrow(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size)
{
    return NewOrThrow(size, __builtin_return_address(0));
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return NewOrThrow(size, alignment, __builtin_return_address(0));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return NewOrThrow(size, alignment, __builtin_return_address(0));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return New(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return New(size, __builtin_return_address(0));
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
#if !defined(TILTPOLE_KEEPS_ALLOCATOR)
    IsOurs(reinterpret_cast<const void*>(&std::abort)); // what the look at the stack needs for good
#endif
    constexpr long kNoEnd = std::numeric_limits<long>::max();
    state.hasFailed = false;
    state.candidates = 0;
    state.firstToFail = round.m_k;
    state.lastToFail = round.m_which == Failing::One ? state.firstToFail : kNoEnd;
    state.isOfOursOnly = round.m_whose == Whose::Ours;
    state.isArmed = true;
}

AllocationRound::Armed::~Armed()
{
    state.isArmed = false;
    m_round.m_hasFailed = m_round.m_hasFailed || state.hasFailed;
}

} // namespace reference
