// SPDX-License-Identifier: MIT
//
// Sums over the readings of a turn: one pass over the samples, whatever is then fitted to them.
#pragma once

#include "calibration/solver/MagneticFits.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tiltpole::calibration {

/// The readings of one magnetometer in one turn, column by column, and their means. The columns
/// are filled up with the mean to whole vectors: such entries add nothing to a sum about it.
struct TurnReadings
{
    std::vector<double> x, y, z; // [counts]
    double meanX = 0, meanY = 0, meanZ = 0;
    int count = 0;

    /// @param count  readings that Set will be called for, 0 ... count − 1
    explicit TurnReadings(int count);
    void Set(int i, double readX, double readY, double readZ)
    {
        const auto at = static_cast<std::size_t>(i);
        x[at] = readX;
        y[at] = readY;
        z[at] = readZ;
    }
    /// Forms the means and fills the columns up; to be called after the last Set.
    void Close();
};

/// Sums of powers and products of three coordinates (u, v, w) about a local origin, over a turn;
/// uvv is the sum of u·v·v. Those with w go up to the second order.
struct TurnMoments
{
    double n = 0;
    double u = 0, v = 0, w = 0;
    double uu = 0, uv = 0, vv = 0, uw = 0, vw = 0, ww = 0;
    double uuu = 0, uuv = 0, uvv = 0, vvv = 0;
    double uuuu = 0, uuuv = 0, uuvv = 0, uvvv = 0, vvvv = 0;

    /// Sums of squares and products about the means.
    double SpreadU() const { return uu - u * u / n; }
    double SpreadV() const { return vv - v * v / n; }
    double SpreadW() const { return ww - w * w / n; }
    double JointUV() const { return uv - u * v / n; }
    double JointUW() const { return uw - u * w / n; }
    double JointVW() const { return vw - v * w / n; }
};

/// Moments about the mean of (x, y, z), x as u.
TurnMoments MomentsXYZ(const TurnReadings& readings);

/// Moments about the mean of (x, z, y): v is z, w is y.
TurnMoments MomentsXZY(const TurnReadings& readings);

/// Moments of (x, z'), z' = c·x + d·y + e·z, about their means; those with w stay 0.
TurnMoments MomentsOfCorrectedZ(const TurnReadings& readings,
                                const Incline_MagneticCorrectParameter& P);

/// Moments of (u, v' = a·u + b·v) from those of (u, v); those with w stay 0.
TurnMoments Sheared(const TurnMoments& m, double a, double b);

/// The least-squares conic about the local origin. Shape and size do not depend on where the
/// origin lies. None where the points determine it so badly that rounding would show.
std::optional<Conic> FitConic(const TurnMoments& m);

} // namespace tiltpole::calibration
