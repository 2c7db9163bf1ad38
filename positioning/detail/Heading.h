// Heading from one magnetometer reading, the lean of the pole taken out.
#pragma once

#include "positioning/MagneticParameters.h"
#include "positioning/detail/Angles.h"
#include "positioning/detail/Tilt.h"

#include <cmath>

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

/// The horizontal part of the field as the pole sees it [counts], the lean taken out.
struct LevelledField
{
    double forward, rightward;
};

// Sensor type 1: the levelling rotation Ry(p)·Rx(r) of the reading with y and z reversed,
//
//   Xh = cos p·mx + sin p·sin r·my + sin p·cos r·mz    forward
//   Yh =                  cos r·my −       sin r·mz    rightward
//
// Derivation: docs/formulas.md, "Levelling".
inline LevelledField LevelADI(const Pose& pose, const Reading& reading)
{
    const Reading m{reading.x, -reading.y, -reading.z};
    return {pose.cosPitch * m.x + pose.sinSin * m.y + pose.sinCos * m.z,
            pose.cosRoll * m.y - pose.sinRoll * m.z};
}

// Every other sensor type: pitch turns about x, roll about y, the reading is taken as it is,
//
//   B1 = sin r·sin p·mx + cos p·my − cos r·sin p·mz    forward
//   A1 =       cos r·mx            +       sin r·mz    rightward
inline LevelledField LevelSCA(const Pose& pose, const Reading& m)
{
    return {pose.sinSin * m.x + pose.cosPitch * m.y - pose.sinCos * m.z,
            pose.cosRoll * m.x + pose.sinRoll * m.z};
}

inline LevelledField Level(const Pose& pose, const Reading& m, int sensorType)
{
    return sensorType == kFirstConvention ? LevelADI(pose, m) : LevelSCA(pose, m);
}

/// Magnetometer B is mounted the other way round: it sees the pose reversed.
inline LevelledField LevelOfB(const Pose& pose, const Reading& b, int sensorType)
{
    return Level(pose.Reversed(), TurnedToPole(b), sensorType);
}

/// atan2(−rightward, forward) [degrees] in [-180, 180]; 0 or ±180 for a vanishing field.
inline double HeadingOf(const LevelledField& field)
{
    return Rad2Deg(std::atan2(-field.rightward, field.forward));
}

/// The same within 6e-14 degrees, two units of the last digit of 180, but sooner; not a number for
/// a vanishing field.
inline double QuickHeadingOf(const LevelledField& field)
{
    return Rad2Deg(ArcTangent(-field.rightward, field.forward));
}

/// Whether the field can be squared without loss.
inline bool IsUsualStrength(double strength)
{
    constexpr double kLeast = 1e-150;
    constexpr double kMost = 1e150;
    return strength > kLeast && strength < kMost;
}

/// Azimuth of the vector (dx, dy), counted from +x towards +y [degrees]. |dx| < 1e-6 counts as a
/// vector along y; a vector without direction, or with a dx that is no number, gives 0.
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
