// SPDX-License-Identifier: MIT
//
// A point or vector with three coordinates, and its conversion to and from the public records.
//
//   survey frame  x north, y east, z up [m]; the records xyhCoordinate and xyhCoord call z `h`
//   sensor frame  see SensorAxes.h; unit vectors
#pragma once

#include <cmath>

namespace tiltpole::survey {

struct Point3
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend constexpr Point3 operator+(const Point3& a, const Point3& b)
    {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr Point3 operator-(const Point3& a, const Point3& b)
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend constexpr Point3 operator*(double s, const Point3& p)
    {
        return {s * p.x, s * p.y, s * p.z};
    }
    friend constexpr bool operator==(const Point3&, const Point3&) = default;
};

constexpr double Dot(const Point3& a, const Point3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

constexpr Point3 Cross(const Point3& a, const Point3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// √(x² + y² + z²), without protection against overflow.
inline double Length(const Point3& p)
{
    return std::sqrt(Dot(p, p));
}

/// The point of a record with members x, y, h (xyhCoordinate, xyhCoord).
template <class Record>
constexpr Point3 PointOf(const Record& record)
{
    return {record.x, record.y, record.h};
}

/// The reverse: `const auto tip = RecordOf<xyhCoordinate>(point);`
template <class Record>
constexpr Record RecordOf(const Point3& point)
{
    return {point.x, point.y, point.z};
}

} // namespace tiltpole::survey
