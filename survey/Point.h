// SPDX-License-Identifier: MIT
//
// A point or vector of three coordinates, and how the records of the public headers become one.
//
//   plane frame  x north, y east, z up [m]: xyhCoordinate and xyhCoord call z their h
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

/// √(x² + y² + z²).
inline double Length(const Point3& p)
{
    return std::sqrt(Dot(p, p));
}

/// A record with members x, y, h (xyhCoordinate, xyhCoord) as a point, and back:
/// `const auto tip = RecordOf<xyhCoordinate>(point);`
template <class Record>
constexpr Point3 PointOf(const Record& record)
{
    return {record.x, record.y, record.h};
}

template <class Record>
constexpr Record RecordOf(const Point3& point)
{
    return {point.x, point.y, point.z};
}

} // namespace tiltpole::survey
