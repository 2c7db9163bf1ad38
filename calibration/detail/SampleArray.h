// The array of sample pointers that the filters take and give.
#pragma once

#include "framework/core/Array.h"
#include "positioning/PoseSensorData.h"

#include <memory>
#include <new>

namespace detail {

using SampleArray = CArray<PoseSensorData*, PoseSensorData*>;

inline int CountOf(const SampleArray& samples)
{
    return static_cast<int>(samples.GetSize());
}

/// An empty array for a result, null when memory is short.
inline std::unique_ptr<SampleArray> NewSampleArray()
{
    return std::unique_ptr<SampleArray>(new (std::nothrow) SampleArray);
}

/// The array for the caller to delete, or null when it holds nothing.
inline SampleArray* ReleaseUnlessEmpty(std::unique_ptr<SampleArray> samples)
{
    return samples && CountOf(*samples) > 0 ? samples.release() : nullptr;
}

} // namespace detail
