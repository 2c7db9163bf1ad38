// SPDX-License-Identifier: MIT
//
// A jump of the antenna's plan residuals, where they go on evenly before and after it: a tip that
// slips. A slip while the pole moves looks like a turn of the heading or another length but for its
// suddenness.
//
// Rows have `epoch`, which points to an Epoch, and `residual`, predicted minus observed [m].
#pragma once

#include <Eigen/Core>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tiltpole::field {

struct Jump
{
    double size = 0.0;   // [m]
    double sigmas = 0.0; // of its own uncertainty, by the residuals about it
    double time = 0.0;   // of the epoch after it [s]
};

/// Residual = a + b·(t − t₀) + c·[t ≥ t₀] within a second of t₀, for north and west; a slip takes a
/// while. Not found (0) with fewer than three epochs on either side.
template <class Rows>
Jump JumpAt(const Rows& rows, std::size_t at)
{
    constexpr double kReach = 1.0;    // [s]
    constexpr double kSlipping = 0.3; // duration of a slip [s]
    constexpr int kFewest = 3;        // epochs on either side
    constexpr double kFinest = 0.001; // sigma of an epoch, at least [m]
    const double time = rows[at].epoch->time;
    Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
    Eigen::Matrix<double, 3, 2> right = Eigen::Matrix<double, 3, 2>::Zero();
    double square = 0.0;
    int before = 0;
    int after = 0;
    for (const auto& row : rows) {
        const double t = row.epoch->time - time;
        if (!(std::fabs(t) <= kReach)) continue;
        const bool late = t >= 0.0;
        if (!late && t > -kSlipping) continue;
        (late ? after : before) += 1;
        const Eigen::Vector3d column(1.0, t, late ? 1.0 : 0.0);
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j)
                normal(i, j) += column[i] * column[j];
            for (int k = 0; k < 2; ++k)
                right(i, k) -= column[i] * row.residual[k];
        }
        square += row.residual[0] * row.residual[0] + row.residual[1] * row.residual[1];
    }
    if (before < kFewest || after < kFewest) return {};
    const Eigen::Matrix3d cofactor = normal.inverse();
    const Eigen::Matrix<double, 3, 2> fitted = cofactor * right;
    const double left = std::max(0.0, square - fitted.cwiseProduct(right).sum());
    const double freedom = 2.0 * (before + after - 3);
    const double sigma = std::hypot(kFinest, std::sqrt(left / freedom));
    const double size = fitted.row(2).norm();
    return {size, size / (sigma * std::sqrt(cofactor(2, 2))), time};
}

/// The largest jump, of those that exceed `least` sigmas.
template <class Rows>
Jump LargestJump(const Rows& rows, double least)
{
    Jump largest;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const Jump jump = JumpAt(rows, i);
        if (jump.sigmas > least && jump.size > largest.size) largest = jump;
    }
    return largest;
}

} // namespace tiltpole::field
