// Heading from one magnetometer reading, the lean of the pole taken out.
#pragma once

#include "positioning/MagneticParameters.h"
#include "positioning/detail/Angles.h"
#include "positioning/detail/Tilt.h"

namespace detail {

struct Reading // of one magnetometer [counts]
{
    double x, y, z;
};

/// The reading with the correction of MagneticParameters.h applied.
inline Reading Corrected(const Incline_MagneticCorrectParameter& par, const Reading& raw)
{
    return {raw.x - par.x0, par.a * raw.x + par.b * raw.y - par.y0,
            par.c * raw.x + par.d * raw.y + par.e * raw.z - par.z0};
}

/// |Δx| + |Δy| + |Δz| [counts].
inline double SumOfDifferences(const Reading& a, const Reading& b)
{
    return std::fabs(a.x - b.x) + std::fabs(a.y - b.y) + std::fabs(a.z - b.z);
}

/// The reading turned about the z axis by the mounting angle of magnetometer B, which is 0. Kept
/// as a rotation: this is the place for another angle.
inline Reading TurnedToPole(const Reading& m)
{
    constexpr double kCos = 1.0;
    constexpr double kSin = 0.0;
    return {m.x * kCos + m.y * kSin, -m.x * kSin + m.y * kCos, m.z};
}

// Heading of the horizontal field, sensor type 1. The lean is taken out by the levelling rotation
// Ry(p)·Rx(r) of the reading with y and z reversed:
//
//   Xh = cos p·mx + sin p·sin r·my + sin p·cos r·mz
//   Yh =                  cos r·my −       sin r·mz
//   heading = atan2(−Yh, Xh)
//
// m [counts, any scale]; result [degrees] in [-180, 180], 0 for a vanishing field.
// Derivation: docs/formulas.md, "Levelling".
inline double HeadingFirst(const Pose& pose, const Reading& reading)
{
    const Reading m{reading.x, -reading.y, -reading.z};
    const double forward = pose.cosPitch * m.x + pose.sinPitch * pose.sinRoll * m.y
                           + pose.sinPitch * pose.cosRoll * m.z;
    const double rightward = pose.cosRoll * m.y - pose.sinRoll * m.z;
    return Rad2Deg(std::atan2(-rightward, forward));
}

// Heading of the horizontal field, every other sensor type: pitch turns about x, roll about y, and
// the reading is taken as it is.
//
//   A1 =       cos r·mx              +       sin r·mz
//   B1 = sin r·sin p·mx + cos p·my − cos r·sin p·mz
//   heading = atan2(−A1, B1)
//
// Units and result as above.
inline double HeadingSecond(const Pose& pose, const Reading& m)
{
    const double rightward = pose.cosRoll * m.x + pose.sinRoll * m.z;
    const double forward = pose.sinRoll * pose.sinPitch * m.x + pose.cosPitch * m.y
                           - pose.cosRoll * pose.sinPitch * m.z;
    return Rad2Deg(std::atan2(-rightward, forward));
}

/// Azimuth of the vector (dx, dy), counted from +x towards +y [degrees]. |dx| < 1e-6 counts as a
/// vector along y; a vector without direction, or not of numbers, gives 0.
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

} // namespace detail
