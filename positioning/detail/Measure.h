// SPDX-License-Identifier: MIT
//
// The results of one sample, computed in two ways: both headings and the step from antenna to tip.
//
//   heading            HA = azimuth of A's leveled field − bias A, HB likewise     Heading.h
//   tilt direction     HA − k3                                                     Tilt.h
//   step               (L·cos t·cos az, L·cos t·sin az, −L·sin t)
//   az                 HA + k1, for the turned projection HA + k3 + k1             Tilt.h
//   plumb pole         |u| and |v| below 1e-6 rad: (0, 0, −L)
//
// MeasureByFormulas evaluates these formulas one by one. MeasureAtOnce needs only two sine-cosine
// pairs and three arc tangents; roots and the addition theorems give the rest. Its result states
// how much of it is trusted to agree with the formulas. Derivations and measured differences:
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

/// The biases that are subtracted from the headings.
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

/// How much of a result agrees with the step-by-step formulas.
enum class Trust { Nothing, Step, Everything };

struct Measured
{
    double headingA;        // [degrees]
    double headingB;        // [degrees]
    double headingLessTilt; // headingA minus the tilt direction [degrees]
    Point3 step;            // from the antenna to the tip [m]
    bool leans;             // false for a plumb pole, which has no projection
    Trust trust;
};

/// The step down a pole of this elevation and azimuth [rad] and of this length.
inline Point3 StepOf(double length, double elevation, double azimuth)
{
    const double level = length * std::cos(elevation);
    return {level * std::cos(azimuth), level * std::sin(azimuth), -(length * std::sin(elevation))};
}

/// The heading that the host receives. HeadingOf normalizes by one step and this by another: two in
/// all (Heading.IsNormalizedByTwoStepsAtMost).
inline double NormalizedHeading(const Pose& pose, const Reading& m, Magnetometer which,
                                SensorAxes axes, double bias)
{
    return survey::AdjustedAzimuth(HeadingOf(pose, m, which, axes, bias));
}

/// Evaluates the formulas one by one; the whole result is trusted.
Measured MeasureByFormulas(int sensorType, const Observation& sample);

/// Whether a field of this strength can be squared without loss.
inline bool IsUsualStrength(double strength)
{
    constexpr double kLeast = 1e-150;
    constexpr double kMost = 1e150;
    return strength > kLeast && strength < kMost;
}

/// The same of the square of a strength.
inline bool IsUsualSquare(double square)
{
    constexpr double kLeast = 1e-300;
    constexpr double kMost = 1e300;
    return square > kLeast && square < kMost;
}

/// Computes everything in one pass. `pose` is that of the sample.
///
/// Returns early, with nothing trusted, if WayDown is not trusted, the field of A is too weak or
/// too strong, or its bias is too large. Only the step is trusted if the field of B is too weak or
/// too strong, or if a heading lies within 1e-9 degrees of 0 or 360: there the last digit decides
/// between the two ends, and one step may not be enough.
template <int SensorType>
[[gnu::always_inline]] inline Measured MeasureAtOnce(const Pose& pose, const Observation& sample)
{
    constexpr SensorAxes kAxes = survey::AxesOf(SensorType);
    const LevelledField fieldA = LevelledOf(pose, sample.a, Magnetometer::A, kAxes);
    const LevelledField fieldB = LevelledOf(pose, sample.b, Magnetometer::B, kAxes);
    const double v = kAxes == SensorAxes::ForwardLeftUp ? sample.roll : sample.pitch;
    const WayDown way = WayDownOf(pose, v, SensorType);

    const double strength =
        std::sqrt(fieldA.forward * fieldA.forward + fieldA.rightward * fieldA.rightward);
    const Rotation heading = Rotation{fieldA.forward, -fieldA.rightward} + -sample.bias.ofA;
    const double scale = sample.length / (strength * way.levelDivisor);
    const Rotation azimuth = heading + way.level;
    if (!(way.trusted && IsUsualStrength(strength) && !std::isnan(sample.bias.ofA.cos)))
        [[unlikely]]
        return {};

    const Point3 step{scale * azimuth.cos, scale * azimuth.sin, -(sample.length * way.down)};

    const Pair azimuths = QuickAzimuthsOf(fieldA, fieldB);
    const double tiltDirection = vector::ArcTangent<2>(way.tilt.sin, way.tilt.cos)[0];
    const double headingA = LessBias(azimuths[0], Magnetometer::A, sample.bias.a);
    const double headingB = LessBias(azimuths[1], Magnetometer::B, sample.bias.b);
    const double lessTilt = survey::AdjustedAzimuth(headingA - tiltDirection);
    Measured measured{headingA, headingB, lessTilt, step, true, Trust::Everything};
    const double squareB = fieldB.forward * fieldB.forward + fieldB.rightward * fieldB.rightward;
    const bool within = survey::IsWithinTurn(headingA) && survey::IsWithinTurn(headingB)
                        && survey::IsWithinTurn(lessTilt);
    if (!(within && IsUsualSquare(squareB))) [[unlikely]]
        measured.trust = Trust::Step;
    return measured;
}

} // namespace tiltpole::positioning
