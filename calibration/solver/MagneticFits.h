// SPDX-License-Identifier: MIT
//
// The fits behind the magnetometer calibration, and the formulas that turn them into a correction.
//
// Conics and lines are the vectors of calibration/InclineSensor_MagneticAdjust.h.
// Fits throw std::bad_alloc where memory is short.
#pragma once

#include "matrix/SZMatrix.h"
#include "positioning/MagneticParameters.h"

#include <optional>

namespace tiltpole::calibration {

inline constexpr double kVanishing = 1e-30;  // below it a spread or a determinant counts as zero
inline constexpr int kPasses = 15;           // of the refinement, the first one included
inline constexpr double kLevelSlope = 0.001; // at which the refinement ends

/// A line v = slope·u + intercept and its root mean square residual.
struct Line
{
    double slope;
    double intercept;
    double residual;
};

/// The coefficients that determine shape and center of a conic.
struct Conic
{
    double p0, p1, p2, p3;

    /// Above 0 for an ellipse.
    double Discriminant() const { return 4 * p0 * (1 - p0) - p1 * p1; }
    double CenterU() const { return (p1 * p3 - 2 * (1 - p0) * p2) / Discriminant(); }
    double CenterV() const { return (p1 * p2 - 2 * p0 * p3) / Discriminant(); }
};

Conic ConicOf(const CSZMatrix& p);

/// See CInclineSensor_MagneticAdjust::lsq.
int SolveLeastSquares(const CSZMatrix& A, const CSZMatrix& b, const CSZMatrix* W, CSZMatrix& x,
                      CSZMatrix* N);

/// See CInclineSensor_MagneticAdjust::EllipseFit.
int FitEllipse(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& p);

/// See CInclineSensor_MagneticAdjust::LineFit.
std::optional<Line> FitLine(const CSZMatrix& u, const CSZMatrix& v);

/// First correction: what makes the horizontal conic (x, y) a circle, and the vertical conic (x, z)
/// one of the same scale, with the vertical plane's slope k (y on x) and the horizontal plane's
/// slope m (z on y). The offsets are left alone. Derivation: docs/formulas.md, "First correction".
void SetFirstCorrection(const Conic& horizontal, const Conic& vertical, double k, double m,
                        Incline_MagneticCorrectParameter& P);

/// Correction in closed form, as CInclineSensor_MagneticAdjust::MagCorrPara with three vectors.
/// Derivation: docs/formulas.md, "Closed form". False, with P unchanged, when a conic is not an
/// ellipse.
bool SetClosedForm(const Conic& horizontal, const Conic& vertical, double slope, double intercept,
                   Incline_MagneticCorrectParameter& P);

} // namespace tiltpole::calibration
