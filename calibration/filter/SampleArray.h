// SPDX-License-Identifier: MIT
//
// The array of sample pointers that the filters take and give.
#pragma once

#include "framework/core/Array.h"
#include "positioning/PoseSensorData.h"

#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace tiltpole::calibration {

using SampleArray = CArray<PoseSensorData*, PoseSensorData*>;

inline int CountOf(const SampleArray& samples)
{
    return static_cast<int>(samples.GetSize());
}

/// The entries of an array, for a walk over them.
inline std::span<PoseSensorData* const> EntriesOf(const SampleArray& samples)
{
    return {samples.GetData(), static_cast<std::size_t>(samples.GetSize())};
}

/// An array of null entries for a result; null when memory is short.
inline std::unique_ptr<SampleArray> NewSampleArray(std::size_t count = 0)
{
    std::unique_ptr<SampleArray> samples(new (std::nothrow) SampleArray);
    if (samples) samples->SetSize(static_cast<INT_PTR>(count));
    return samples;
}

/// The array for the caller to delete, or null when it holds nothing.
inline SampleArray* ReleaseUnlessEmpty(std::unique_ptr<SampleArray> samples)
{
    return samples && CountOf(*samples) > 0 ? samples.release() : nullptr;
}

} // namespace tiltpole::calibration
