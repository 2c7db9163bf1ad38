// SPDX-License-Identifier: MIT
/// @class tiltpole::matrix::ElementStore
/// Where a matrix keeps its elements: up to 36 inside the object, more on the heap.
///
/// One element beyond the last always belongs to the store, so an index that runs one past the end
/// stays inside it; it reads 0 after every Reset and Reserve. The matrix keeps the sizes, the store
/// only the block; a call that needs the number of elements takes it as an argument.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace tiltpole::matrix {

/// The most elements a matrix may have, so that every linear index fits a signed 32-bit integer.
/// More are refused as if memory had run out.
inline constexpr long long kMostElements = INT32_MAX;

class ElementStore
{
public:
    static constexpr std::size_t kInside = 36; // elements, a 6 x 6 matrix

    ElementStore() noexcept { m_Inside[0] = 0.0; }
    ElementStore(const ElementStore&) = delete;
    ElementStore& operator=(const ElementStore&) = delete;
    ~ElementStore() { Release(); }

    /// The first element; the spare element of an empty store.
    double* Data() const noexcept { return m_pBlock; }

    /// Makes room for `count` elements without giving them values.
    /// @return false, with the store empty, short of memory
    bool Reserve(std::size_t count) noexcept
    {
        Release();
        if (count > kInside && !AllocateBlock(count, false)) return false;
        m_pBlock[count] = 0.0;
        return true;
    }

    /// Makes room for `count` elements, all 0.
    /// @return as Reserve
    bool Reset(std::size_t count) noexcept
    {
        Release();
        if (count > kInside) return AllocateBlock(count, true);
        std::memset(m_pBlock, 0, (count + 1) * sizeof(double));
        return true;
    }

    /// Takes over the `count` elements of `other`, which is left empty.
    void Take(ElementStore& other, std::size_t count) noexcept
    {
        Release();
        if (other.m_pBlock != other.m_Inside) {
            m_pBlock = other.m_pBlock;
            other.m_pBlock = other.m_Inside;
        } else {
            std::memcpy(m_Inside, other.m_Inside, count * sizeof(double));
            m_Inside[count] = 0.0;
        }
        other.m_Inside[0] = 0.0;
    }

    /// Frees the memory; the store is then empty and its spare element 0.
    void Release() noexcept
    {
        if (m_pBlock != m_Inside) {
            std::free(m_pBlock);
            m_pBlock = m_Inside;
        }
        m_Inside[0] = 0.0;
    }

private:
    bool AllocateBlock(std::size_t count, bool zeroed) noexcept
    {
        const std::size_t withSpare = count + 1;
        if (withSpare > PTRDIFF_MAX / sizeof(double)) return false;
        void* block = zeroed ? std::calloc(withSpare, sizeof(double))
                             : std::malloc(withSpare * sizeof(double));
        if (block == nullptr) return false;
        m_pBlock = static_cast<double*>(block);
        return true;
    }

    double* m_pBlock = m_Inside;
    mutable double m_Inside[kInside + 1];
};

} // namespace tiltpole::matrix
