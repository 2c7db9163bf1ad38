// SPDX-License-Identifier: MIT
/// @class CArray
/// CArray: the window framework's growable array.
///
///     CArray<double> lengths;
///     lengths.Add(1.80);
///     lengths.Add(2.00);
///     for (INT_PTR i = 0; i < lengths.GetSize(); ++i)
///         Use(lengths[i]);
///
/// TYPE is what is stored, ARG_TYPE how an element is passed to Add and its like: a reference by
/// default, TYPE itself for pointers and numbers (CArray<PoseSensorData*, PoseSensorData*>). An
/// array of pointers does not own what they point to.
///
/// Elements are contiguous and their positions start at 0; using a position that is not in the
/// array is undefined, as with a plain array. New elements are value-initialized (numbers and
/// pointers: 0). Like every CObject, an array cannot be copied by assignment; use Copy.
///
/// What adds elements throws std::bad_alloc where memory does not suffice, and passes on what a
/// constructor or assignment of TYPE throws. The array then has the elements that it had, unless
/// moving one of them threw; after InsertAt there may be value-initialized ones among them.
#pragma once

#include "framework/core/Object.h"
#include "framework/core/Types.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <type_traits>
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

    /// Removes the elements from `newSize` on, or appends new ones up to that size. A negative size
    /// does nothing. A `growBy` above 0 is the smallest number of elements by which the store
    /// grows; it also doubles its capacity at least, so that Add takes constant time on
    /// average.
    void SetSize(INT_PTR newSize, INT_PTR growBy = -1)
    {
        if (growBy >= 0) m_growBy = growBy;
        if (newSize < 0) return;
        if (newSize < m_size) return Cut(newSize);
        Reserve(newSize);
        std::uninitialized_value_construct(m_data + m_size, m_data + newSize);
        m_size = newSize;
    }

    /// Releases the capacity that is not in use.
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

    /// Address of the first element; null while the array has no store.
    const TYPE* GetData() const { return m_data; }
    TYPE* GetData() { return m_data; }

    /// Assigns to the element at `index`, growing the array to reach it. A negative index does
    /// nothing.
    void SetAtGrow(INT_PTR index, ARG_TYPE newElement)
    {
        if (index < 0) return;
        if (index < m_size) {
            m_data[index] = newElement;
            return;
        }
        TYPE copy(newElement); // it may be an element of the store that is about to move
        SetSize(index + 1);
        m_data[index] = std::move(copy);
    }

    /// Appends an element and returns its position.
    INT_PTR Add(ARG_TYPE newElement)
    {
        const INT_PTR position = m_size;
        if (position == m_capacity) [[unlikely]] {
            AddToFull(newElement);
        } else {
            std::construct_at(m_data + position, newElement);
            m_size = position + 1;
        }
        return position;
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
        if constexpr (std::is_nothrow_copy_constructible_v<TYPE>) {
            Reserve(source.m_size);
            Cut(0);
            Append(source);
        } else {
            CArray copies;
            copies.Append(source);
            std::swap(m_data, copies.m_data);
            std::swap(m_size, copies.m_size);
            std::swap(m_capacity, copies.m_capacity);
        }
    }

    /// Inserts `count` copies in front of the element at `index`; an array that ends before `index`
    /// grows to reach it. A negative index or count does nothing.
    void InsertAt(INT_PTR index, ARG_TYPE newElement, INT_PTR count = 1)
    {
        if (index < 0 || count <= 0) return;
        const TYPE copy(newElement);
        const INT_PTR oldSize = m_size;
        SetSize((std::max)(index, oldSize) + count);
        if (index < oldSize)
            std::move_backward(m_data + index, m_data + oldSize, m_data + oldSize + count);
        std::fill_n(m_data + index, count, copy);
    }

    /// Inserts copies of all elements of `newArray`, which may be this array.
    void InsertAt(INT_PTR start, const CArray* newArray)
    {
        if (newArray == nullptr || start < 0 || newArray->IsEmpty()) return;
        CArray copies;
        copies.Copy(*newArray);
        InsertAt(start, copies[0], copies.GetSize());
        std::move(copies.m_data, copies.m_data + copies.m_size, m_data + start);
    }

    /// Removes `count` elements from `index` on, or as many as there are.
    void RemoveAt(INT_PTR index, INT_PTR count = 1)
    {
        if (index < 0 || index >= m_size || count <= 0) return;
        const INT_PTR removed = (std::min)(count, m_size - index);
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

    void AddToFull(ARG_TYPE newElement)
    {
        TYPE copy(newElement); // it may be an element of the store that is about to move
        Reserve(m_size + 1);
        std::construct_at(m_data + m_size, std::move(copy));
        ++m_size;
    }

    void Reserve(INT_PTR capacity)
    {
        if (capacity <= m_capacity) return;
        const INT_PTR step = (std::max)({INT_PTR{4}, m_growBy, m_capacity});
        // The first time it takes just what is needed: most arrays are sized once.
        MoveTo((std::max)(capacity, m_capacity == 0 ? m_growBy : m_capacity + step));
    }

    void MoveTo(INT_PTR capacity)
    {
        TYPE* data = capacity == 0
                         ? nullptr
                         : std::allocator<TYPE>().allocate(static_cast<std::size_t>(capacity));
        try {
            std::uninitialized_move_n(m_data, m_size, data);
        } catch (...) {
            Release(data, capacity);
            throw;
        }
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
