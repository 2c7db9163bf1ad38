// SPDX-License-Identifier: MIT
//
// The fit of a plane similarity transform to point pairs, and its accuracy.
#pragma once

#include "geometry/MagneticConvert.h"
#include "survey/Angle.h"
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

inline constexpr double kArcSecondsPerRadian = 180.0 * 3600.0 / tiltpole::survey::kPi;

struct PairRow
{
    std::string name;
    std::uint64_t line = 0; // of the file
    FourParameterPoint pair;
};

struct PairResult
{
    double residualX = 0.0; // target minus transformed source [m]
    double residualY = 0.0;
    Magnetic_FourParameter without; // the fit to all other pairs
    double predictionX = 0.0;       // residual of the pair with that fit [m]
    double predictionY = 0.0;
};

struct TransformFit
{
    Magnetic_FourParameter parameters;
    std::vector<PairRow> rows;
    std::vector<PairResult> results; // one for each row
    double squares = 0.0;            // sum of the squared residuals, both coordinates [m²]

    double Count() const { return static_cast<double>(rows.size()); }
    /// RMS of the residuals per point, divided by n [m].
    double Rms() const;
    /// Standard error per coordinate, divided by the redundancy 2n − 4 [m]; 0 for two pairs.
    double UnitError() const;
    /// Whether there are fits without each pair, which takes three pairs.
    bool HasWithout() const { return rows.size() > 2; }
};

/// Requires at least two pairs, whose source points do not all coincide.
TransformFit FitTransform(std::vector<PairRow> rows);

/// The transform as an operation of PROJ (https://proj.org), whose angle [arc seconds] has the
/// opposite sign. A rotation center becomes part of the translation.
std::string HelmertString(const Magnetic_FourParameter& parameters);

} // namespace cli
