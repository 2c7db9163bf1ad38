// SPDX-License-Identifier: MIT
//
// What one sample gives: both headings and the step from the antenna to the tip, by two ways.
//
//   heading            HA = azimuth of A's leveled field − bias A, HB likewise     Heading.h
//   tilt direction     HA − k3                                                     Tilt.h
//   step               (L·cos t·cos az, L·cos t·sin az, −L·sin t)
//   az                 HA + k1, for the turned projection HA + k3 + k1             Tilt.h
//   plumb pole         |u| and |v| below 1e-6 rad: (0, 0, −L)
//
// MeasureByFormulas evaluates these formulas one by one. MeasureAtOnce gets by with two sine-cosine
// pairs, two arc tangents and one arc cosine: the rest follows from roots and angle addition. Where
// it cannot promise the digits of the formulas it says so. Derivations and measured differences:
// docs/formulas.md, "Tip".
#pragma once

#include "positioning/detail/Heading.h"
#include "positioning/detail/Tilt.h"
#include "positioning/detail/Tip.h"
#include "survey/Angle.h"
#include "survey/Point.h"
#include "survey/Reading.h"
#include "survey/SensorAxes.h"

#include <cmath>

namespace tiltpole::positioning {

using survey::Point3;

/// What is subtracted from the headings.
struct Bias
{
    double a, b;  // [degrees]
    Rotation ofA; // NaN where the bias of A is too large for MeasureAtOnce
};

/// One sample with its readings corrected.
struct Observation
{
    double pitch, roll; // [degrees]
    Reading a, b;       // [counts]
    Bias bias;
    double length; // of the pole [m]
};

/// How much of a result has the digits of the formulas.
enum class Trust { Nothing, Step, Everything };

struct Measured
{
    double headingA;        // [degrees]
    double headingB;        // [degrees]
    double headingLessTilt; // headingA less the tilt direction [degrees]
    Point3 step;            // from the antenna to the tip [m]
    bool leans;             // false for a plumb pole, which has no projection
    Trust trust;
};

/// Down a pole of this elevation and azimuth [rad], `length` long.
inline Point3 StepOf(double length, double elevation, double azimuth)
{
    const double level = length * std::cos(elevation);
    return {level * std::cos(azimuth), level * std::sin(azimuth), -(length * std::sin(elevation))};
}

/// Heading as a host gets it. HeadingOf normalizes by one step and this by another: two in all
/// (Heading.IsNormalizedByTwoStepsAtMost).
inline double NormalizedHeading(const Pose& pose, const Reading& m, Magnetometer which,
                                SensorAxes axes, double bias)
{
    return survey::AdjustedAzimuth(HeadingOf(pose, m, which, axes, bias));
}

/// By the formulas one by one; trusted altogether.
Measured MeasureByFormulas(int sensorType, const Observation& sample);

/// Whether a field of this strength can be squared without loss.
inline bool IsUsualStrength(double strength)
{
    constexpr double kLeast = 1e-150;
    constexpr double kMost = 1e150;
    return strength > kLeast && strength < kMost;
}

/// All at once. `pose` is that of the sample.
///
/// Nothing is trusted, nor formed, where WayDown is not trusted, the field of A is too weak or too
/// strong, or its bias too large. The step alone is trusted where a heading lies within 1e-9 degrees
/// of 0 or 360: there the last digit decides between the two ends, and one step may not be enough.
template <int SensorType>
inline Measured MeasureAtOnce(const Pose& pose, const Observation& sample)
{
    constexpr SensorAxes kAxes = survey::AxesOf(SensorType);
    const LevelledField fieldA = LevelledOf(pose, sample.a, Magnetometer::A, kAxes);
    const LevelledField fieldB = LevelledOf(pose, sample.b, Magnetometer::B, kAxes);
    const double v = kAxes == SensorAxes::ForwardLeftUp ? sample.roll : sample.pitch;
    const WayDown way = WayDownOf(pose, v, SensorType);

    const double strength =
        std::sqrt(fieldA.forward * fieldA.forward + fieldA.rightward * fieldA.rightward);
    const Rotation heading = Rotation{fieldA.forward, -fieldA.rightward} + -sample.bias.ofA;
    const double scale = sample.length / strength;
    const Rotation azimuth = heading + way.level;
    if (!(way.trusted && IsUsualStrength(strength) && !std::isnan(sample.bias.ofA.cos)))
        [[unlikely]]
        return {};

    const Point3 step{scale * azimuth.cos, scale * azimuth.sin, -(sample.length * way.down)};

    // The arc functions come after all arithmetic: none waits for the result of another.
    const double azimuthA = QuickAzimuthOf(fieldA);
    const double azimuthB = QuickAzimuthOf(fieldB);
    const double tiltDirection = survey::Rad2Deg(std::acos(way.cosK3));
    const double headingA = LessBias(azimuthA, Magnetometer::A, sample.bias.a);
    const double headingB = LessBias(azimuthB, Magnetometer::B, sample.bias.b);
    const double lessTilt = survey::AdjustedAzimuth(headingA - tiltDirection);
    Measured measured{headingA, headingB, lessTilt, step, true, Trust::Everything};
    const bool within = survey::IsWithinTurn(headingA) && survey::IsWithinTurn(headingB)
                        && survey::IsWithinTurn(lessTilt);
    if (!within) [[unlikely]]
        measured.trust = Trust::Step;
    return measured;
}

} // namespace tiltpole::positioning
