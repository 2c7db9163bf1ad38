// SPDX-License-Identifier: MIT
/// @struct quality::TipEstimate
/// An estimate of the tip from many antenna positions that can be trusted: least squares with the
/// antenna height as the known radius, carried to convergence, with what it says about its own
/// accuracy. It stands beside the result of CTiltPosition_Geometry and changes nothing of it.
///
///     const quality::TipEstimate estimate = quality::EstimateTip(antennas, 2.0);
///     if (estimate.verdict == quality::TipVerdict::Store) Store(estimate.tip);
///
///     x, y, h   plane coordinates and height [m]; angles [degrees], azimuths from +x towards +y
///
/// What the verdict Store promises: among the estimates with this verdict, in 95 of 100 the ellipse
/// covers the plan position of the true tip, and in 95 of 100 the interval its height, when antenna
/// errors are as large as stated in AntennaErrors or smaller. Residuals that are small by luck do
/// not shrink a region below the stated errors; residuals that are too large for them widen it.
/// Errors that all positions share leave no residuals: they are in the regions only as stated.
/// Derivation: docs/formulas.md, "Honest tip estimate"; measured coverage:
/// docs/tip-estimate.md.
#pragma once

#include "framework/core/Export.h"
#include "geometry/TiltPoint.h"

#include <cstddef>
#include <vector>

namespace quality {

/// Standard deviations of what goes into the estimate. The defaults suit a real-time kinematic fix
/// with a short baseline: an antenna position on its own is good for 8 and 15 mm, and over some
/// minutes 3 and 10.5 mm of its error stay the same, as in the recording of a fixed antenna
/// (docs/tip-estimate.md).
struct AntennaErrors
{
    double plan = 0.008;          ///< of x and y each, from position to position [m], above 0
    double height = 0.015;        ///< of h, from position to position [m], above 0
    double sharedPlan = 0.003;    ///< of x and y each, common to all positions [m], not below 0
    double sharedHeight = 0.0105; ///< of h, common to all positions [m], not below 0
    double antennaHeight = 0.002; ///< of the given antenna height [m], not below 0
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

/// Semi-major axis of the ellipse, and half of the height interval, up to which a tip is worth
/// storing.
inline constexpr double kTipTolerance = 0.05; // [m]

/// Least value of TipEstimate::errorFactor.
inline constexpr double kLeastErrorFactor = 0.01;

/// Spread of the pole's directions below which the positions form a narrow cone.
inline constexpr double kNarrowSpread = 8.0; // [degrees]

struct TipEstimate
{
    TipVerdict verdict = TipVerdict::NoSolution;
    xyhCoord tip;
    double covariance[3][3] = {}; ///< of x, y, h, what all positions share included [m²]
    double ellipseMajor = 0.0;    ///< semi-axes of the 95 % ellipse [m]; infinite where the
                                  ///< positions leave the tip open by more than a meter
    double ellipseMinor = 0.0;
    double ellipseAzimuth = 0.0;     ///< of the major axis [degrees], in [0, 180)
    double heightHalfInterval = 0.0; ///< 95 % [m]; infinite like the ellipse
    double residualRms = 0.0;        ///< of |P − T| − antenna height [m], divided by n
    double errorFactor = 0.0;        ///< what the residuals make of the independent antenna errors,
                                     ///< times the stated ones; at least kLeastErrorFactor
    std::size_t used = 0;            ///< finite positions
    std::size_t largestResidualIndex = 0; ///< into the given positions
    double largestResidual = 0.0;         ///< |P − T| − antenna height of that position [m]
    /// The position whose residual is least likely, given its weight and its share in the tip.
    std::size_t suspectIndex = 0;   ///< into the given positions
    double suspectResidual = 0.0;   ///< [m]
    double suspectRatio = 0.0;      ///< to what chance allows; above 1 it is an outlier
    double radiusExcess = 0.0;      ///< fitted radius − antenna height, were it free [m]
    double radiusExcessLimit = 0.0; ///< what chance allows [m]: a smaller error of the antenna
                                    ///< height goes unnoticed
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
