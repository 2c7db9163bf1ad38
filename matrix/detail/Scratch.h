// SPDX-License-Identifier: MIT
//
// Working memory of a kernel: inside the object for the usual sizes, from the heap beyond. The
// width keeps code compiled for different processors apart (vector/Lanes.h).
#pragma once

#include <cstddef>
#include <cstdlib>

namespace tiltpole::matrix {

template <class T, std::size_t Inside, int Width = 2>
class Scratch
{
public:
    explicit Scratch(std::size_t count)
    {
        if (count <= Inside) return;
        const std::size_t bytes = (count * sizeof(T) + kAlignment - 1) / kAlignment * kAlignment;
        m_pBlock = static_cast<T*>(std::aligned_alloc(kAlignment, bytes));
        m_onHeap = true;
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch()
    {
        if (m_onHeap) std::free(m_pBlock);
    }

    /// Null when memory ran out.
    T* Data() { return m_pBlock; }

private:
    static constexpr std::size_t kAlignment = 64;

    alignas(kAlignment) T m_inside[Inside];
    T* m_pBlock = m_inside;
    bool m_onHeap = false;
};

} // namespace tiltpole::matrix
