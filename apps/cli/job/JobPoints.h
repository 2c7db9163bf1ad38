// SPDX-License-Identifier: MIT
//
// The points of a job by the names that surveyors know them by. A row that replaces another has a
// name of its own in the file (P12~2), and stands for the point under the first one's (P12).
#pragma once

#include "apps/tables/Errors.h"
#include "field/job/JobStore.h"
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

enum class PointState { Current, Replaced, Void };

struct NamedPoint
{
    field::JobPoint point;
    std::string name;       // of the first row that it goes back to
    std::int64_t first = 0; // its id
    PointState state = PointState::Current;
};

/// @throws InputError when the file is no job or cannot be read
field::JobStore OpenJob(const std::string& path, field::JobAccess access);

/// All points in the order in which they were stored.
/// @throws InputError when the file cannot be read
std::vector<NamedPoint> PointsOf(const field::JobStore& job);

/// The points that count, neither replaced nor void, in the order of their first rows.
std::vector<NamedPoint> CurrentPointsOf(const field::JobStore& job);

/// Whether `choice` names the point: names and ranges with commas between them, or "all". In a
/// range such as 12-40 or P12-P40 the letters before the numbers are the same.
/// @throws InputError for a range that ends before it begins
bool Chooses(std::string_view choice, std::string_view name);

/// The value, or the error as an InputError.
template <class Value>
Value ValueOf(field::JobResult<Value> result)
{
    if (!result) throw tables::InputError(result.error);
    return std::move(*result);
}

} // namespace cli
