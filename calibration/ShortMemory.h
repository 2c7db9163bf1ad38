// SPDX-License-Identifier: MIT
//
// Short memory as a failed call: no operation of the calibration lets std::bad_alloc out.
#pragma once

#include "matrix/SZMatrix.h"

#include <new>

namespace tiltpole::calibration {

/// The result of `operation`, or 0 (false, null) where it runs out of memory.
template <class Operation>
auto OrFailure(Operation&& operation) -> decltype(operation())
{
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return decltype(operation())();
    }
}

/// A matrix that could not be allocated is 0 x 0 and would pass for one without readings.
/// @throws std::bad_alloc where `matrix` does not have the `rows` rows that it was meant to have
inline void CheckAllocated(const CSZMatrix& matrix, int rows)
{
    if (matrix.getRowSize() < rows) throw std::bad_alloc();
}

} // namespace tiltpole::calibration
