// SPDX-License-Identifier: MIT
/// @file
/// Calibration of both magnetometers from two turns, one about the z and one about the y axis.
///
///     corrected  x' = x − x0
///                y' = a·x + b·y − y0
///                z' = c·x + d·y + e·z − z0       x, y, z raw counts of one magnetometer
///     translation  where A reads (x, y, z) corrected, B reads (−(x + dX), −(y + dY), z + dZ)
///     axes         those of the sensor: z along the pole; the turns are about z and about y
///     units        x0, y0, z0, dX, dY, dZ [counts]; a ... e without unit
///     domain       finite readings, at least five samples a turn, each of them close to an ellipse
///
///     CInclineSensor_MagneticAdjust adjust;
///     for (const PoseSensorData& sample : aboutZ) adjust.Horizontal_Add(&sample);
///     for (const PoseSensorData& sample : aboutY) adjust.Vertical_Add(&sample);
///     if (adjust.Adjust()) {
///         position.SetMagneticCorrectPar_A(adjust.GetCorrectPar_A());
///         position.SetMagneticCorrectPar_B(adjust.GetCorrectPar_B());
///     }
#pragma once

#include "calibration/KFilter.h"
#include "framework/core/Array.h"
#include "framework/core/Export.h"
#include "matrix/SZMatrix.h"
#include "positioning/MagneticParameters.h"
#include "positioning/PoseSensorData.h"

/// Every failure shows a message box titled "Warning" and returns 0. Short memory is such a
/// failure; nothing throws. Conics and lines are vectors:
///
///   conic p, 5 x 1   p0·u² + p1·u·v + (1 − p0)·v² + p2·u + p3·v + p4 = 0
///   line l, 3 x 1    slope k, intercept q of v = k·u + q, root mean square residual
class TILTPOLE_API CInclineSensor_MagneticAdjust
{
public:
    /// No samples, identity corrections, no translation.
    CInclineSensor_MagneticAdjust() = default;
    CInclineSensor_MagneticAdjust(const CInclineSensor_MagneticAdjust&) = delete;
    CInclineSensor_MagneticAdjust& operator=(const CInclineSensor_MagneticAdjust&) = delete;

    /// Appends a copy of a sample of the turn about z (about y). Null is ignored; where memory is
    /// short the sample is left out.
    void Horizontal_Add(const PoseSensorData* sample);
    void Vertical_Add(const PoseSensorData* sample);

    /// Copies sample `index` to `sample` and returns 1; returns 0 and leaves `sample` alone where
    /// the index is out of range.
    int Horizontal_Get(int index, PoseSensorData& sample) const;
    int Vertical_Get(int index, PoseSensorData& sample) const;

    void Horizontal_Clear();
    void Vertical_Clear();

    /// Computes the corrections of both magnetometers and the translation between them from all
    /// samples. They are read before the first message box; the host may change them from inside
    /// one.
    ///
    /// A magnetometer that cannot be corrected shows two boxes, first for the fit that failed, then
    /// for the magnetometer; after them the horizontal samples are appended to
    /// "Debug_MagneticAdjust_ErrorData_A.csv" (_B) in framework::ApplicationDataFolder(). Reaching
    /// the pass limit of the refinement shows a box and is still a success; so are results that
    /// are not finite. The samples are kept.
    /// @return 1, or 0 with the results as far as they were computed
    int Adjust();

    Incline_MagneticCorrectParameter GetCorrectPar_A() const { return m_CorrectA; }
    Incline_MagneticCorrectParameter GetCorrectPar_B() const { return m_CorrectB; }
    Incline_MagneticTranslationParameter GetCoorTrans() const { return m_Translation; }

    /// Replaces every row after the first by a running Kalman estimate of the readings [counts].
    /// Matrices that do not have six columns (x, y, z of A, then of B) are left unchanged.
    void DataFilter(CSZMatrix& readings);

    /// DataFilter, then keeps the rows whose first column advances by 3 counts or more in the
    /// direction of the turn: towards the first of its extremes, on to the other, and back. Where
    /// memory is short all rows are kept.
    void MatrixFilter(CSZMatrix& readings);

protected:
    // Matrices H and V: n x 3, raw x, y, z of one magnetometer in the turn about z and about y.

    /// Correction of one magnetometer, refined in at most 15 passes until the corrected horizontal
    /// plane leans by less than 0.001 in x and y.
    /// @param P  out; where a fit fails, the values reached so far
    /// @return 1, or 0 after a message box when a fit failed; 0 without one when memory is short
    int MagCorrPara(CSZMatrix H, CSZMatrix V, Incline_MagneticCorrectParameter& P);

    /// Correction in closed form from a horizontal conic, a vertical conic and a line; b is left as
    /// it was. Derivation: docs/formulas.md, "Closed form".
    /// @return 1, or 0 after a message box and with P unchanged when a conic is not an ellipse
    int MagCorrPara(CSZMatrix p, CSZMatrix q, CSZMatrix l, Incline_MagneticCorrectParameter& P);

    /// Translation from the raw horizontal readings of A and B and the current corrections. 0,
    /// after a message box, when the numbers of rows differ. NaN of no rows, which copies have for
    /// which memory was short.
    int MagneticCoordinateOffset(CSZMatrix HA, CSZMatrix HB,
                                 Incline_MagneticTranslationParameter& T);

    /// (AᵀA)⁻¹·Aᵀ·b; zeros, after a message box, when A and b differ in rows.
    CSZMatrix OverDeterminedEquationSolution(CSZMatrix& A, CSZMatrix& b);

    /// Corrects the rows x, y, z of M in place.
    void MagneticModify(const Incline_MagneticCorrectParameter& P, CSZMatrix& M);

    /// Conic through the points (u, v), at least five, by least squares. Returns 0 where there is
    /// none, and also for a conic that is not an ellipse; p contains it nevertheless.
    int EllipseFit(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& p);

    /// Line of v on u. 0, with l unchanged, for fewer than two points or where u or v is constant.
    int LineFit(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& l);

    /// Center of a conic; a null pointer is skipped. 0, with nothing written, for a vector that is
    /// not 5 x 1 and for a parabola.
    int CircleCenter(CSZMatrix p, double* uc, double* vc);

    /// x = N·Aᵀ·b with N = (Aᵀ·W·A)⁻¹, or (AᵀA)⁻¹ where W is null; the right side has no weights. A
    /// null N is skipped. 0 when the shapes do not fit.
    int lsq(const CSZMatrix& A, const CSZMatrix& b, const CSZMatrix* W, CSZMatrix& x, CSZMatrix* N);

private:
    using SampleSet = CArray<PoseSensorData, const PoseSensorData&>;

    SampleSet m_Horizontal;
    SampleSet m_Vertical;
    Incline_MagneticCorrectParameter m_CorrectA;
    Incline_MagneticCorrectParameter m_CorrectB;
    Incline_MagneticTranslationParameter m_Translation;
    CKFilter m_Filter;
};
