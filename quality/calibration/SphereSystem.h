// SPDX-License-Identifier: MIT
//
// The equations of the joint fit, linearised: what the fit and its uncertainty share.
//
// Readings are shifted and scaled to the order of one, which keeps the normal equations well
// scaled. Derivation: docs/formulas.md, "Joint fit".
#pragma once

#include "quality/calibration/FieldModel.h"

#include <array>
#include <optional>
#include <vector>

namespace tiltpole::quality {

inline constexpr int kUnknowns = 15;  // nine weights by rows, three offsets, two rises, a length
inline constexpr int kOffset = 9;     // place of the first offset
inline constexpr int kElevation = 12; // place of the first rise: the field's part along up
inline constexpr int kLength = 14;    // place of the field's length in the vertical turn

/// Place of the rise of a turn: 0 horizontal, 1 vertical.
inline Eigen::Index ElevationOf(std::size_t turn)
{
    return kElevation + static_cast<Eigen::Index>(turn);
}

using Unknowns = Eigen::Matrix<double, kUnknowns, 1>;
using Normal = Eigen::Matrix<double, kUnknowns, kUnknowns>;

/// Both turns with scaled readings: (reading − center) / scale.
struct Scaled
{
    std::array<Turn, 2> turns; // horizontal, vertical
    Eigen::Vector3d center;
    double scale = 0.0;
};

/// @return nothing for fewer than ten readings in a turn, or for a number that is not finite
std::optional<Scaled> ScaledTurns(const Turn& horizontal, const Turn& vertical);

Eigen::Vector3d Corrected(const Unknowns& p, const Eigen::Vector3d& reading);

/// Length of the field in a turn: one in the horizontal turn, which sets the scale.
inline double LengthOf(const Unknowns& p, std::size_t turn)
{
    return turn == 0 ? 1.0 : p[kLength];
}

/// How far one reading is from the two conditions, in parts of the field.
struct Residual
{
    double sphere = 0.0;
    double elevation = 0.0;
};

struct Residuals
{
    std::array<std::vector<Residual>, 2> turns;
};

Residuals ResidualsOf(const Scaled& data, const Unknowns& p);

/// Robust standard deviations of both kinds of residual, in the turn where it is larger.
struct Spread
{
    double sphere = 0.0;
    double elevation = 0.0;
};

Spread SpreadOf(const Residuals& residuals);

/// How much each reading counts: what its residuals are divided by, and its own share.
struct Weighting
{
    double scale = 1.0;                       // one over the variance, both kinds alike
    std::array<std::vector<double>, 2> turns; // shares in (0, 1]
};

/// Geman and McClure: the share of a reading falls with the square of its distance in spreads.
Weighting WeightingOf(const Residuals& residuals);

/// Slopes of both residuals of one reading in the unknowns.
struct ResidualSlopes
{
    Unknowns sphere;
    Unknowns elevation;
};

ResidualSlopes SlopesOf(const Observation& o, std::size_t turn, const Unknowns& p);

/// Half of the second derivatives, and half of the gradient, of the weighted cost.
struct System
{
    Normal normal = Normal::Zero(); // lower triangle
    Unknowns gradient = Unknowns::Zero();

    /// Adds a residual whose slopes are `row`.
    void Add(const Unknowns& row, double residual, double weight);
};

/// Of the readings alone.
System SystemOf(const Scaled& data, const Unknowns& p, const Residuals& residuals,
                const Weighting& weighting);

/// Adds what is known beforehand: soft iron is symmetric, a magnetometer hardly turned against the
/// pole, and the field of both turns roughly of one length.
void AddPrior(const Unknowns& p, System& system);

/// What AddPrior adds to the cost.
double PriorCost(const Unknowns& p);

} // namespace tiltpole::quality
