// SPDX-License-Identifier: MIT
//
// The fit of a plane similarity transform to point pairs, with what it says about its accuracy.
#pragma once

#include "geometry/MagneticConvert.h"
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

struct PairRow
{
    std::string name;
    std::uint64_t line = 0; // of the file
    FourParameterPoint pair;
};

struct PairResult
{
    double residualX = 0.0; // target less transformed source [m]
    double residualY = 0.0;
    Magnetic_FourParameter without; // the fit to all other pairs
    double predictionX = 0.0;       // the residual of the pair against that fit [m]
    double predictionY = 0.0;
};

struct TransformFit
{
    Magnetic_FourParameter parameters;
    std::vector<PairRow> rows;
    std::vector<PairResult> results; // one for each row
    double squares = 0.0;            // sum of the squared residuals, both coordinates [m²]

    double Count() const { return static_cast<double>(rows.size()); }
    /// Per point: divided by n. [m]
    double Rms() const;
    /// Per coordinate: divided by the redundancy 2n − 4; 0 for two pairs. [m]
    double UnitError() const;
    /// With fewer than three pairs nothing can be left out.
    bool HasWithout() const { return rows.size() > 2; }
};

/// At least two pairs, whose source points do not all coincide.
TransformFit FitTransform(std::vector<PairRow> rows);

/// The transform as an operation of PROJ (https://proj.org), which counts its angle [arc seconds]
/// the other way round. A rotation centre goes into the translation.
std::string HelmertString(const Magnetic_FourParameter& parameters);

} // namespace cli
