// SPDX-License-Identifier: MIT
/// @file
/// The mean of several tips of one still pole, and how well it is known.
///
/// What errs alike in every epoch does not shrink with their number n: tilt, heading, pole length,
/// delay, model and the position of the base. Of the antenna only the white share f of the standard
/// deviation does:
///
///     S    = diag(sqrt(1 - f² + f²/n)),   f = 0.62 north, 0.39 east, 0.34 up
///     Cmean = S Cantenna S + (Ctip - Cantenna)
///
/// Cantenna and Ctip are the means of the epochs' covariances. The shares are those of a recorded
/// receiver over 30 s (docs/simulation.md); S keeps the correlations, so Cmean is a covariance
/// whatever the shares are.
#pragma once

#include "field/Bridge.h"
#include "framework/core/Export.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace field {

/// An epoch that the mean does without.
struct LeftOutTip
{
    std::size_t index = 0; ///< in the tips that were given
    std::string why;       ///< one clause, such as "31 mm off the median in plan"
};

/// A mean of tips with its covariance, and the tips that it does without.
struct TipAverage
{
    std::size_t used = 0; ///< 0: there is no mean, everything else is its default
    Geodetic position;
    Covariance3 sigma;
    Geodetic antenna;         ///< mean of the used epochs
    double tilt = 0.0;        ///< of the mean lean [degrees]
    double azimuthTrue = 0.0; ///< of the mean lean [degrees], 0 to 360
    std::vector<LeftOutTip> leftOut;
};

/// The mean of the tips, each with the same weight. Left out are tips that are not finite, those of
/// a lower quality than the best (4 before 5 before 2 before 1 before 6), those of another
/// reference station than most, and, from three on, those that lie off the median by more than
/// max(3 f s, 4 x 1.4826 MAD, 2 mm) north, east or up, s the antenna's standard deviation.
TILTPOLE_API TipAverage AveragedTip(std::span<const Tip> tips);

} // namespace field
