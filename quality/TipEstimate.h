// SPDX-License-Identifier: MIT
//
// An estimate of the tip from many antenna positions that can be believed: least squares with the
// antenna height as the known radius, carried to convergence, with what it says about its own
// accuracy. It stands beside the result of CTiltPosition_Geometry and changes nothing of it.
//
//     const quality::TipEstimate estimate = quality::EstimateTip(antennas, 2.0);
//     if (estimate.verdict == quality::TipVerdict::Store) Store(estimate.tip);
//
//   x, y, h   plane coordinates and height [m]; angles [degrees], azimuths from +x towards +y
//
// The regions hold at 95 % where one tip fits: in 95 of 100 sets of positions with independent
// errors the ellipse covers the plan position of the true tip, and the interval its height. They
// are scaled by the residuals, so only the ratio of the given antenna errors counts, not their
// size. Errors that all positions share (a base station that is off, a wrong antenna height seen in
// a narrow cone) are beyond any such statement. Derivation: docs/formulas.md, "Honest tip
// estimate".
#pragma once

#include "framework/core/Export.h"
#include "geometry/TiltPoint.h"

#include <cstddef>
#include <vector>

namespace quality {

/// Standard deviations of one antenna position.
struct AntennaErrors
{
    double plan = 0.008;   ///< of x and y each [m], above 0
    double height = 0.015; ///< [m], above 0
};

enum class TipVerdict {
    NoSolution,   ///< fewer than four finite positions, no convergence, or positions that leave
                  ///< the tip open (all in one vertical plane with it): nothing else is set
    Outlier,      ///< one residual is larger than chance allows: see suspectIndex
    WrongRadius,  ///< the positions ask for another antenna height: see radiusExcess
    Ambiguous,    ///< a second tip fits as well: see otherTip
    TooUncertain, ///< ellipse or height interval reach beyond kTipTolerance
    Store,        ///< none of these
};

/// Half axis of the ellipse, and half of the height interval, up to which a tip is worth storing.
inline constexpr double kTipTolerance = 0.05; // [m]

/// What the antenna errors are at least taken to be, times the given ones: positions that agree
/// better than that repeat each other.
inline constexpr double kLeastErrorFactor = 0.01;

/// Spread of the pole's directions below which the positions form a narrow cone.
inline constexpr double kNarrowSpread = 8.0; // [degrees]

struct TipEstimate
{
    TipVerdict verdict = TipVerdict::NoSolution;
    xyhCoord tip;
    double covariance[3][3] = {}; ///< of x, y, h [m²]
    double ellipseMajor = 0.0;    ///< half axes of the 95 % ellipse [m]
    double ellipseMinor = 0.0;
    double ellipseAzimuth = 0.0;     ///< of the major axis [degrees], in [0, 180)
    double heightHalfInterval = 0.0; ///< 95 % [m]
    double residualRms = 0.0;        ///< of |P − T| − antenna height [m], divided by n
    double errorFactor = 0.0;        ///< by which the given antenna errors are to be multiplied,
                                     ///< at least kLeastErrorFactor
    std::size_t used = 0;            ///< finite positions
    std::size_t largestResidualIndex = 0; ///< into the given positions
    double largestResidual = 0.0;         ///< |P − T| − antenna height of that position [m]
    /// The position whose residual is least likely, given its weight and its share in the tip.
    std::size_t suspectIndex = 0;   ///< into the given positions
    double suspectResidual = 0.0;   ///< [m]
    double suspectRatio = 0.0;      ///< to what chance allows; above 1 it is an outlier
    double radiusExcess = 0.0;      ///< fitted radius − antenna height, were it free [m]
    double radiusExcessLimit = 0.0; ///< what chance allows [m]
    /// Positions that lie almost in one plane fit two tips, one on each side of it. Whether the
    /// second one, below the antennas too, fits as well as chance allows.
    bool ambiguous = false;
    xyhCoord otherTip; ///< the second one; set only then
    /// Root mean square angle of the directions tip to antenna, seen along the plane coordinate in
    /// which they are closest together [degrees].
    double directionSpread = 0.0;
    bool narrowCone = false; ///< directionSpread below kNarrowSpread
    int iterations = 0;
};

/// @param antennas       antenna positions [m]; those that are not finite are left out
/// @param antennaHeight  antenna to tip [m], above 0
TILTPOLE_API TipEstimate EstimateTip(const std::vector<xyhCoord>& antennas, double antennaHeight,
                                     const AntennaErrors& errors = {});

} // namespace quality
