// SPDX-License-Identifier: MIT
//
// Rotations of one coordinate plane, as the Jacobi eigen-solver uses them.
#pragma once

namespace tiltpole::matrix {

/// The identity but for J(p,p) = J(q,q) = cosine, J(q,p) = sine, J(p,q) = -sine.
struct PlaneRotation
{
    double cosine = 1.0;
    double sine = 0.0;
};

/// The rotation by at most 45 degrees after which element (p, q) of J^T * A * J is 0 for a
/// symmetric A with the elements given:
///
///   theta = (a_pp - a_qq) / a_pq / 2
///   t     = sign(theta) / (|theta| + sqrt(1 + theta^2)),   sign(0) = 1
///   cosine = 1 / sqrt(1 + t^2),  sine = t * cosine
///
/// Golub & Van Loan, Matrix Computations, 8.5.2.
PlaneRotation ZeroingRotation(double pp, double qq, double pq);

/// m = J^T * m for the n x n array m. Gives the bits of the full product, whose sums start from
/// 0.0, where all elements are finite and none is -0; then none becomes -0, as the cosine is at
/// least sqrt(1/2).
void RotateRows(double* m, int n, int p, int q, PlaneRotation j);

/// m = m * J, likewise.
void RotateColumns(double* m, int n, int p, int q, PlaneRotation j);

} // namespace tiltpole::matrix
