// SPDX-License-Identifier: MIT
//
// Which windows' objects were made with new: an object of CWnd looks in its constructor whether it
// begins the memory that operator new handed out last. Members of such an object do not.
#include "framework/gui/Wnd.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <new>
#include <vector>

namespace {

// Memory handed out by operator new whose CWnd has not been constructed yet.
struct Block
{
    const std::byte* begin;
    std::size_t size;

    bool Contains(const void* object) const
    {
        const auto* const at = static_cast<const std::byte*>(object);
        const std::less<> isBefore; // also defined for pointers into different objects
        return !isBefore(at, begin) && isBefore(at, begin + size);
    }
};

// One thread may construct several at a time: the arguments of a constructor are made after its
// memory.
std::vector<Block>& Pending()
{
    thread_local std::vector<Block> blocks;
    return blocks;
}

void Announce(const void* memory, std::size_t size)
{
    Pending().push_back({static_cast<const std::byte*>(memory), size});
}

// The constructor may have thrown before its CWnd was made.
void Forget(const void* memory)
{
    std::erase_if(Pending(), [&](const Block& block) { return block.begin == memory; });
}

} // namespace

CWnd::CWnd()
    : m_isMadeWithNew(std::erase_if(Pending(), [this](const Block& b) { return b.Contains(this); })
                      != 0)
{}

void* CWnd::operator new(std::size_t size)
{
    void* const memory = ::operator new(size);
    try {
        Announce(memory, size);
    } catch (const std::bad_alloc&) {
        ::operator delete(memory);
        throw;
    }
    return memory;
}

void* CWnd::operator new(std::size_t size, const std::nothrow_t&) noexcept
try {
    return CWnd::operator new(size);
} catch (const std::bad_alloc&) {
    return nullptr;
}

void* CWnd::operator new(std::size_t size, std::align_val_t alignment)
{
    void* const memory = ::operator new(size, alignment);
    try {
        Announce(memory, size);
    } catch (const std::bad_alloc&) {
        ::operator delete(memory, alignment);
        throw;
    }
    return memory;
}

void CWnd::operator delete(void* object)
{
    Forget(object);
    ::operator delete(object);
}

void CWnd::operator delete(void* object, std::align_val_t alignment)
{
    Forget(object);
    ::operator delete(object, alignment);
}

void CWnd::operator delete(void* object, const std::nothrow_t&) noexcept
{
    CWnd::operator delete(object);
}
