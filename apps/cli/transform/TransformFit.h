// SPDX-License-Identifier: MIT
//
// The fit of a plane similarity transform to point pairs, and its accuracy.
#pragma once

#include "geometry/MagneticConvert.h"
#include "survey/Angle.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

inline constexpr double kArcSecondsPerRadian = 180.0 * 3600.0 / tiltpole::survey::kPi;
inline constexpr double kPartsPerMillion = 1e6;

struct PairRow
{
    std::string name;
    std::uint64_t line = 0; // of the file
    FourParameterPoint pair;
};

/// The fit to all other pairs, and where it puts this one.
struct FitWithoutPair
{
    Magnetic_FourParameter parameters;
    double missX = 0.0; // target minus transformed source [m]
    double missY = 0.0;
};

struct PairResult
{
    double residualX = 0.0; // target minus transformed source [m]
    double residualY = 0.0;
    /// Share of an error of this pair that shows in its residual: 0 for a pair that the transform
    /// follows, 1 for one that the others control completely (redundancy number).
    double redundancy = 0.0;
    /// How often chance puts some pair of a fit as far off as this one, from 0 to 1: by Bonferroni
    /// n·(SSE without the pair / SSE)^(n − 3), which is the F test of a pair that is left out, for
    /// equal normal errors of both coordinates. 1 with fewer than four pairs.
    double chance = 1.0;
    /// None where the others do not control the pair: their source points (almost) coincide.
    std::optional<FitWithoutPair> without;

    double ResidualLength() const;
};

struct TransformFit
{
    Magnetic_FourParameter parameters;
    std::vector<PairRow> rows;
    std::vector<PairResult> results; // one for each row
    double squares = 0.0;            // sum of the squared residuals, both coordinates [m²]
    /// Σ uU·Σ vV − Σ uV·Σ vU over coordinates minus their means. Negative where a mirrored
    /// transform leaves smaller squares (S. Umeyama 1991, IEEE Trans. PAMI 13(4), 376-380).
    double determinant = 0.0;

    double Count() const { return static_cast<double>(rows.size()); }
    /// Difference of the scale from 1 [parts per million].
    double ScaleExcess() const { return (parameters.dScale - 1.0) * kPartsPerMillion; }
    /// RMS of the residuals per point, divided by n [m].
    double Rms() const;
    /// Standard error per coordinate, divided by the redundancy 2n − 4 [m]; 0 for two pairs.
    double UnitError() const;
    /// Whether there are fits without each pair, which takes three pairs.
    bool HasWithout() const { return rows.size() > 2; }
    /// The row that is least likely to belong to the others, if more than two are there.
    std::optional<std::size_t> Worst() const;
    double LargestResidual() const;
};

/// Redundancy below which a pair counts as not controlled by the others: an error of 1 m would
/// leave a residual of 1 mm.
inline constexpr double kLeastRedundancy = 0.001;

/// Requires at least two pairs, whose source points do not all coincide.
TransformFit FitTransform(std::vector<PairRow> rows);

/// The transform as an operation of PROJ (https://proj.org), whose angle [arc seconds] has the
/// opposite sign. A rotation center becomes part of the translation.
std::string HelmertString(const Magnetic_FourParameter& parameters);

} // namespace cli
