// SPDX-License-Identifier: MIT
//
// Calibration of both magnetometers from two turns, one about the z and one about the y axis.
//
//   corrected  x' = x − x0
//              y' = a·x + b·y − y0
//              z' = c·x + d·y + e·z − z0       x, y, z raw counts of one magnetometer
//   translation  B is expected to read (−(Ax + dX), −(Ay + dY), Az + dZ) beside corrected A
//
//   CInclineSensor_MagneticAdjust adjust;
//   for (...) adjust.Horizontal_Add(sample);   // the turn about z
//   for (...) adjust.Vertical_Add(sample);     // the turn about y
//   if (adjust.Adjust()) position.SetMagneticCorrectPar_A(adjust.GetCorrectPar_A()); ...
#pragma once

#include "calibration/KFilter.h"
#include "framework/core/Array.h"
#include "framework/core/Export.h"
#include "matrix/SZMatrix.h"
#include "positioning/MagneticParameters.h"
#include "positioning/PoseSensorData.h"

/// Every failure is told to the operator by a message box titled "Warning" and to the caller by 0.
/// Conics and lines are vectors:
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

    /// Appends a copy of a sample of the turn about z (about y). Null is ignored.
    void Horizontal_Add(const PoseSensorData* sample);
    void Vertical_Add(const PoseSensorData* sample);

    /// Copies sample `index` to `sample`. 0, with `sample` left alone, where there is none.
    int Horizontal_Get(int index, PoseSensorData& sample) const;
    int Vertical_Get(int index, PoseSensorData& sample) const;

    void Horizontal_Clear();
    void Vertical_Clear();

    /// Corrections of both magnetometers and the translation between them, from all samples.
    ///
    /// A magnetometer that cannot be corrected is told in two boxes, first the fit that failed,
    /// then the magnetometer, and the horizontal samples are appended to
    /// "Debug_MagneticAdjust_ErrorData_A.csv" (_B) in framework::ApplicationDataFolder(). Reaching
    /// the pass limit of the refinement is told too and still counts as success, and so do results
    /// that are not finite. The samples stay.
    /// @return 1, or 0; what was reached until then stays in the results
    int Adjust();

    Incline_MagneticCorrectParameter GetCorrectPar_A() const { return m_CorrectA; }
    Incline_MagneticCorrectParameter GetCorrectPar_B() const { return m_CorrectB; }
    Incline_MagneticTranslationParameter GetCoorTrans() const { return m_Translation; }

    /// Replaces every row after the first by a running Kalman estimate of the readings. Matrices
    /// that do not have six columns (x, y, z of A, then of B) stay as they are.
    void DataFilter(CSZMatrix& readings);

    /// DataFilter, then keeps the rows whose first column goes on by 3 counts or more in the
    /// direction of the turn: towards the first of its extremes, on to the other, and back.
    void MatrixFilter(CSZMatrix& readings);

protected:
    // Matrices H and V: n x 3, raw x, y, z of one magnetometer in the turn about z and about y.

    /// Correction of one magnetometer, refined in at most 15 passes until the corrected horizontal
    /// plane leans by less than 0.001 in x and y.
    /// @param P  out; where a fit fails, what was reached until then
    /// @return 0 when a fit failed, which the operator is told; else 1
    int MagCorrPara(CSZMatrix H, CSZMatrix V, Incline_MagneticCorrectParameter& P);

    /// Correction in closed form from a horizontal conic, a vertical conic and a line; b stays.
    /// @return 0, with P unchanged, when a conic is no ellipse, which the operator is told
    int MagCorrPara(CSZMatrix p, CSZMatrix q, CSZMatrix l, Incline_MagneticCorrectParameter& P);

    /// Translation from the raw horizontal readings of A and B and the corrections held. 0, told to
    /// the operator, when the numbers of rows differ.
    int MagneticCoordinateOffset(CSZMatrix HA, CSZMatrix HB,
                                 Incline_MagneticTranslationParameter& T);

    /// (AᵀA)⁻¹·Aᵀ·b; zeros, told to the operator, when A and b differ in rows.
    CSZMatrix OverDeterminedEquationSolution(CSZMatrix& A, CSZMatrix& b);

    /// Corrects the rows x, y, z of M in place.
    void MagneticModify(const Incline_MagneticCorrectParameter& P, CSZMatrix& M);

    /// Conic through the points (u, v), at least five, by least squares. 0 without a conic, and
    /// also for one that is no ellipse: p holds it all the same.
    int EllipseFit(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& p);

    /// Line of v on u. 0, with l unchanged, for fewer than two points or where u or v is constant.
    int LineFit(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& l);

    /// Centre of a conic; a null pointer is not written. 0 for a vector that is not 5 x 1 and for a
    /// parabola, with nothing written.
    int CircleCenter(CSZMatrix p, double* uc, double* vc);

    /// x = N·Aᵀ·b with N = (Aᵀ·W·A)⁻¹, or (AᵀA)⁻¹ where W is null; the right side carries no
    /// weights. A null N is not written. 0 when the shapes do not fit.
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
