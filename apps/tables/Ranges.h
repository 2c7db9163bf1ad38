// SPDX-License-Identifier: MIT
//
// What values from files and options can be at all. The limits are wide: they catch a wrong unit,
// an exchanged column and a damaged digit, not an unusual survey. docs/programs.md lists them.
#pragma once

#include "apps/tables/ColumnNames.h"
#include "apps/tables/Csv.h"
#include <cstddef>
#include <string>
#include <string_view>

namespace tables {

struct Range
{
    double low, high; // both are in
    std::string_view unit;
};

/// Plane coordinates: no projection of this planet leads further, zone numbers in front included.
inline constexpr Range kCoordinate{-1e8, 1e8, "m"};
inline constexpr Range kHeight{-1e5, 1e5, "m"};
inline constexpr Range kAngle{-360.0, 360.0, "degrees"};
/// Readings of magnetometers; offsets in parameter files have the same limits.
inline constexpr Range kReading{-1e6, 1e6, "counts"};
/// Scales, and shares of one axis in another, of the correction of a magnetometer; as the library
/// checks them in parameter files.
inline constexpr Range kCorrectionScale{0.1, 10.0, ""};
inline constexpr Range kCorrectionShare{-5.0, 5.0, ""};
/// Gyros, accelerometers and the sensor's other values, in any unit.
inline constexpr Range kSensorValue{-1e6, 1e6, ""};
/// From the antenna to the tip of a pole.
inline constexpr Range kPoleLength{0.01, 100.0, "m"};
/// Standard deviations of lengths.
inline constexpr Range kDeviation{1e-6, 100.0, "m"};
inline constexpr Range kDeviationOrZero{0.0, 100.0, "m"};
/// Standard deviations of small angles.
inline constexpr Range kAngleDeviation{1e-4, 45.0, "degrees"};
/// Times of rows, of any origin.
inline constexpr Range kSeconds{-1e12, 1e12, "s"};
/// Of the antenna behind the sensors.
inline constexpr Range kDelay{-10.0, 10.0, "s"};
/// Largest tilt that is accepted.
inline constexpr Range kCutoff{0.1, 90.0, "degrees"};

/// What can be simulated; what a range leaves open, such as a gap that ends before it begins, the
/// plans of simulation/ refuse.
namespace simulated {
inline constexpr Range kTurn{-36000.0, 36000.0, "degrees"}; // a hundred times round
inline constexpr Range kTurnedBy{0.0, 36000.0, "degrees"};
inline constexpr Range kSlant{-90.0, 90.0, "degrees"}; // of an axis, a sensor, a field
inline constexpr Range kLean{0.0, 90.0, "degrees"};
inline constexpr Range kWidth{0.0, 360.0, "degrees"};
inline constexpr Range kAngleNoise{0.0, 90.0, "degrees"};
inline constexpr Range kGyroNoise{0.0, 1e4, "degrees/s"};
inline constexpr Range kGyroBias{-1e4, 1e4, "degrees/s"};
inline constexpr Range kAccelerationNoise{0.0, 100.0, "g"};
inline constexpr Range kAccelerationBias{-100.0, 100.0, "g"};
inline constexpr Range kScaleError{-1.0, 1.0, ""};
inline constexpr Range kField{0.0, 1e5, "counts"}; // strength, noise and resolution
inline constexpr Range kOffset{-1e5, 1e5, "counts"};
inline constexpr Range kSoftIron{-10.0, 10.0, ""}; // the field itself is 1
inline constexpr Range kReach{-100.0, 100.0, ""};  // of a magnet at B; 1: as at A
inline constexpr Range kShare{0.0, 1.0, ""};
inline constexpr Range kRate{1e-3, 1e4, "Hz"};
inline constexpr Range kTime{0.0, 1e6, "s"};
inline constexpr Range kFilterTime{0.0, 100.0, "s"};
inline constexpr Range kOffTime{-1e6, 1e6, "s"}; // before or after
inline constexpr Range kFrequency{0.0, 100.0, "Hz"};
inline constexpr Range kShift{-1e4, 1e4, "m"};
inline constexpr Range kPoleShift{-10.0, 10.0, "m"};
inline constexpr Range kDistance{0.0, 1e4, "m"};
} // namespace simulated

/// The range of a sensor's values with this unit.
Range RangeOf(ColumnUnit unit);

/// "is 400, not between -360 and 360 degrees"; empty for a value in the range.
std::string OutsideOf(const Range& range, double value);

/// A field of the current row as a number in the range.
/// @throws InputError naming line, column and what is wrong
double NumberIn(const CsvReader& rows, std::size_t column, const Range& range);

} // namespace tables
