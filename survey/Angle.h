// SPDX-License-Identifier: MIT
//
// Angles: degrees and radians, azimuths, and arc functions that accept arguments which rounding has
// pushed out of their domain.
//
//   azimuth   counted from +x (north) towards +y (east), clockwise on a map [degrees]
//   Rotation  an angle given by its cosine and sine
#pragma once

#include <cmath>

namespace tiltpole::survey {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kHalfPi = 1.5707963267948966;
inline constexpr double kDegreesPerRadian = 180.0 / kPi;

/// degrees·π/180, multiplied before it is divided.
inline double Deg2Rad(double degrees)
{
    return degrees * kPi / 180.0;
}

/// radians·180/π, multiplied before it is divided.
inline double Rad2Deg(double radians)
{
    return radians * 180.0 / kPi;
}

/// `value` limited to [-1, 1]; NaN is returned unchanged.
inline double ClampToUnit(double value)
{
    if (value > 1.0) return 1.0;
    if (value < -1.0) return -1.0;
    return value;
}

/// Arc sine of the argument limited to [-1, 1] [rad]: fails for no finite argument.
inline double ArcSine(double value)
{
    return std::asin(ClampToUnit(value));
}

/// Arc cosine of the argument limited to [-1, 1] [rad].
inline double ArcCosine(double value)
{
    return std::acos(ClampToUnit(value));
}

/// An azimuth [degrees] brought towards [0, 360] by one turn at most: -400 becomes -40, 360 stays
/// (AdjustedAzimuth.TakesOneStepAtMost).
inline double AdjustedAzimuth(double azimuth)
{
    // Selects instead of branching: the processor cannot predict the headings of a turning pole.
    // Adding -0.0 changes nothing, not even the sign of a zero.
    const double down = azimuth > 360.0 ? -360.0 : -0.0;
    return azimuth + (azimuth < 0.0 ? 360.0 : down);
}

/// Whether `azimuth` [degrees] lies so far inside (0, 360) that neither another normalising step
/// nor a rounding error upstream can move it to the other end.
inline bool IsWithinTurn(double azimuth)
{
    constexpr double kNear = 1e-9;
    return std::fabs(azimuth - 180.0) < 180.0 - kNear;
}

/// The same angle in [−180, 180] [degrees].
inline double Wrapped(double degrees)
{
    return std::remainder(degrees, 360.0);
}

/// Azimuth of the vector (dx, dy) [degrees] in [0, 360]; a dy barely below 0 rounds to 360. A vector
/// with |dx| < 1e-6 counts as lying along y. The null vector and a vector with a NaN give 0.
inline double AzimuthOf(double dx, double dy)
{
    constexpr double kAlongY = 1e-6;
    if (std::fabs(dx) < kAlongY) {
        if (dy > 0.0) return 90.0;
        return dy < 0.0 ? 270.0 : 0.0;
    }
    const double angle = std::atan(dy / dx) * 180.0 / kPi;
    if (dx < 0.0) return 180.0 + angle;
    if (dx > 0.0 && dy > 0.0) return angle;
    if (dx > 0.0 && dy < 0.0) return 360.0 + angle;
    return 0.0;
}

/// √(1 − x²), the cosine of an angle whose sine is x, or the reverse. Formed from a product, which
/// stays accurate where x is near 1. NaN where |x| > 1.
inline double OtherLeg(double x)
{
    return std::sqrt((1.0 - x) * (1.0 + x));
}

/// An angle given by its cosine and sine: angles add without further trigonometry. Of a vector whose
/// length is not 1 it is the direction, and lengths multiply.
struct Rotation
{
    double cos = 1.0;
    double sin = 0.0;

    friend Rotation operator+(const Rotation& a, const Rotation& b)
    {
        return {a.cos * b.cos - a.sin * b.sin, a.sin * b.cos + a.cos * b.sin};
    }
    friend Rotation operator-(const Rotation& a) { return {a.cos, -a.sin}; }
};

} // namespace tiltpole::survey
