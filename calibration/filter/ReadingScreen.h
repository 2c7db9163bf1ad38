// SPDX-License-Identifier: MIT
//
// Screening of a matrix of readings: one row per sample, x, y, z of magnetometer A, then of B.
#pragma once

#include "calibration/KFilter.h"
#include "matrix/SZMatrix.h"

namespace tiltpole::calibration {

/// Replaces every row after the first by the estimate of a constant-value Kalman filter that
/// starts at the first row. Matrices without six columns are left unchanged.
void SmoothRows(CKFilter& filter, CSZMatrix& readings);

/// Keeps row 0 and, compared with the last row kept, the rows whose first column advances by at
/// least 3 counts: up to the maximum of the column, down from it to the minimum and up again where
/// the maximum comes first, mirrored where the minimum does.
/// @throws std::bad_alloc, with `readings` unchanged
void KeepStepsOfTurn(CSZMatrix& readings);

} // namespace tiltpole::calibration
