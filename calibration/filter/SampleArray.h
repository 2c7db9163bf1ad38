// SPDX-License-Identifier: MIT
//
// The array of sample pointers that the filters take and give.
#pragma once

#include "framework/core/Array.h"
#include "positioning/PoseSensorData.h"

#include <cstddef>
#include <memory>
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

/// The array, which the caller deletes; null when it has no entries.
inline SampleArray* ReleaseUnlessEmpty(std::unique_ptr<SampleArray> samples)
{
    return CountOf(*samples) > 0 ? samples.release() : nullptr;
}

} // namespace tiltpole::calibration
