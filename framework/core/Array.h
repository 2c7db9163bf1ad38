// SPDX-License-Identifier: MIT
//
// CArray: the window framework's growable array.
//
// Elements lie one behind the other. Positions are counted from 0; asking for an element that is
// not there is a mistake of the caller, as with a plain array. New elements are value-initialised
// (numbers and pointers: 0). Like every CObject an array is not copied by assignment: see Copy.
#pragma once

#include "framework/core/Object.h"
#include "framework/core/Types.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <utility>

template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject
{
public:
    CArray() = default;
    ~CArray() override { RemoveAll(); }

    INT_PTR GetSize() const { return m_size; }
    INT_PTR GetCount() const { return m_size; }
    BOOL IsEmpty() const { return m_size == 0; }
    /// Position of the last element, -1 in an empty array.
    INT_PTR GetUpperBound() const { return m_size - 1; }

    /// Cuts the array to `newSize` elements or fills it up with new ones. A negative size does
    /// nothing. `growBy` above 0 is the least number of elements by which the store grows; the
    /// store also grows by half of what it holds, so that adding takes constant time on average.
    void SetSize(INT_PTR newSize, INT_PTR growBy = -1)
    {
        if (growBy >= 0) m_growBy = growBy;
        if (newSize < 0) return;
        if (newSize < m_size) return Cut(newSize);
        Reserve(newSize);
        std::uninitialized_value_construct(m_data + m_size, m_data + newSize);
        m_size = newSize;
    }

    /// Gives the store beyond the elements back.
    void FreeExtra()
    {
        if (m_capacity > m_size) MoveTo(m_size);
    }

    void RemoveAll()
    {
        Cut(0);
        Release(m_data, m_capacity);
        m_data = nullptr;
        m_capacity = 0;
    }

    const TYPE& GetAt(INT_PTR index) const { return At(index); }
    TYPE& GetAt(INT_PTR index) { return At(index); }
    void SetAt(INT_PTR index, ARG_TYPE newElement) { At(index) = newElement; }
    const TYPE& ElementAt(INT_PTR index) const { return At(index); }
    TYPE& ElementAt(INT_PTR index) { return At(index); }
    const TYPE& operator[](INT_PTR index) const { return At(index); }
    TYPE& operator[](INT_PTR index) { return At(index); }

    /// The first element; null where nothing was ever stored.
    const TYPE* GetData() const { return m_data; }
    TYPE* GetData() { return m_data; }

    /// Stores an element, filling the array up to its position. A negative position does nothing.
    void SetAtGrow(INT_PTR index, ARG_TYPE newElement)
    {
        if (index < 0) return;
        if (index < m_size) {
            m_data[index] = newElement;
            return;
        }
        TYPE copy(newElement); // may lie in the store that is about to move
        SetSize(index + 1);
        m_data[index] = std::move(copy);
    }

    /// Appends an element and returns its position.
    INT_PTR Add(ARG_TYPE newElement)
    {
        if (m_size == m_capacity) {
            TYPE copy(newElement); // may lie in the store that is about to move
            Reserve(m_size + 1);
            std::construct_at(m_data + m_size, std::move(copy));
        } else {
            std::construct_at(m_data + m_size, newElement);
        }
        return m_size++;
    }

    /// Appends the elements of `source`, which may be this array. Returns the position of the
    /// first of them.
    INT_PTR Append(const CArray& source)
    {
        const INT_PTR first = m_size;
        const INT_PTR count = source.m_size;
        Reserve(first + count);
        std::uninitialized_copy_n(source.m_data, count, m_data + first);
        m_size = first + count;
        return first;
    }

    /// Replaces the elements by copies of those of `source`.
    void Copy(const CArray& source)
    {
        if (&source == this) return;
        Cut(0);
        Append(source);
    }

    /// Inserts `count` copies, moving what stands at `index` and behind it; an array that ends
    /// before `index` is filled up to it. A negative position or count does nothing.
    void InsertAt(INT_PTR index, ARG_TYPE newElement, INT_PTR count = 1)
    {
        if (index < 0 || count <= 0) return;
        const TYPE copy(newElement);
        const INT_PTR oldSize = m_size;
        SetSize(std::max(index, oldSize) + count);
        if (index < oldSize)
            std::move_backward(m_data + index, m_data + oldSize, m_data + oldSize + count);
        std::fill_n(m_data + index, count, copy);
    }

    /// Inserts copies of all elements of another array.
    void InsertAt(INT_PTR start, const CArray* newArray)
    {
        if (newArray == nullptr || start < 0 || newArray->IsEmpty()) return;
        CArray copies;
        copies.Copy(*newArray);
        InsertAt(start, copies[0], copies.GetSize());
        std::move(copies.m_data, copies.m_data + copies.m_size, m_data + start);
    }

    /// Removes up to `count` elements from `index` on; positions without element are passed over.
    void RemoveAt(INT_PTR index, INT_PTR count = 1)
    {
        if (index < 0 || index >= m_size || count <= 0) return;
        const INT_PTR removed = std::min(count, m_size - index);
        std::move(m_data + index + removed, m_data + m_size, m_data + index);
        Cut(m_size - removed);
    }

private:
    TYPE& At(INT_PTR index) const
    {
        assert(index >= 0 && index < m_size);
        return m_data[index];
    }

    void Cut(INT_PTR newSize)
    {
        std::destroy(m_data + newSize, m_data + m_size);
        m_size = newSize;
    }

    void Reserve(INT_PTR capacity)
    {
        if (capacity <= m_capacity) return;
        const INT_PTR step = std::max({INT_PTR{4}, m_growBy, m_capacity / 2});
        // An empty array takes what is asked for: most arrays are sized once.
        MoveTo(std::max(capacity, m_capacity == 0 ? m_growBy : m_capacity + step));
    }

    void MoveTo(INT_PTR capacity)
    {
        TYPE* data = capacity == 0
                         ? nullptr
                         : std::allocator<TYPE>().allocate(static_cast<std::size_t>(capacity));
        std::uninitialized_move_n(m_data, m_size, data);
        std::destroy_n(m_data, m_size);
        Release(m_data, m_capacity);
        m_data = data;
        m_capacity = capacity;
    }

    static void Release(TYPE* data, INT_PTR capacity)
    {
        if (data != nullptr)
            std::allocator<TYPE>().deallocate(data, static_cast<std::size_t>(capacity));
    }

    TYPE* m_data = nullptr;
    INT_PTR m_size = 0;
    INT_PTR m_capacity = 0;
    INT_PTR m_growBy = 0;
};
